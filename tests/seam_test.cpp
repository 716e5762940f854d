// The services of the system below the seam. A new system is finished when these pass.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/locale_text.h"
#include "platform/module.h"
#include "platform/scheduling.h"
#include "tests/support/text.h"

TEST(Seam, LoadsModulesAndFindsFunctions) {
  Units reason;
  const Units path = Widened(TEST_DIRECTORY "/good.so");
  ModuleHandle module = PlatformLoadModule(path.c_str(), reason);
  ASSERT_NE(module, nullptr);
  EXPECT_TRUE(reason.empty());
  EXPECT_NE(PlatformFindFunction(module, "ZrInitModule"), nullptr);
  EXPECT_EQ(PlatformFindFunction(module, "ZrInitModul"), nullptr);
  PlatformReleaseModule(module);
  PlatformReleaseModule(nullptr);
}

TEST(Seam, TellsWhyAModuleCantBeLoaded) {
  const Units kPaths[] = {
      Widened(TEST_DIRECTORY "/no_module.so"),
      Widened("/nowhere/" + std::string(2000, 'x')),       // the path must not crowd out the reason
      Widened("/nowhere/two\r\nlines\x7F") + W("\x2028"),  // nor break the line
      Widened("nowhere/") + Units(400, WCHAR{0x96EA}),
      Units(1, WCHAR{0xDC00}),
  };
  for (const Units& path : kPaths) {
    Units reason;
    EXPECT_EQ(PlatformLoadModule(path.c_str(), reason), nullptr);
    EXPECT_EQ(reason.find(W("nowhere/")), Units::npos) << "the caller tells the path";
    EXPECT_TRUE(reason.size() > 10 && reason.size() <= kModuleReasonUnits) << reason.size();
    for (WCHAR unit : reason) EXPECT_TRUE(unit >= 0x20 && unit != 0x7F && unit != 0x2028);
  }
}

TEST(Seam, DebugOutputIsUtf8) {
  testing::internal::CaptureStderr();
  Units text = W("a\x00E9\x96EA");
  text += {WCHAR{0xD83E}, WCHAR{0xDE90}, WCHAR{0xD83E}, WCHAR{'.'}, WCHAR{0xDE90}};  // a pair, and two halves
  PlatformDebugOutput(text);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "a\xC3\xA9\xE9\x9B\xAA\xF0\x9F\xAA\x90\xEF\xBF\xBD.\xEF\xBF\xBD");
}

// A locale with more than ASCII, one that is not there, and none.
TEST(Seam, CaseIsThatOfTheLocaleUnitByUnit) {
  const struct {
    WCHAR upper, lower;
    bool isAscii = false;
  } kPairs[] = {{'A', 'a', true}, {'Z', 'z', true}, {0xC9, 0xE9}, {0x416, 0x436}, {0x3A9, 0x3C9}, {0xFF21, 0xFF41}};
  for (const char* name : {"C.utf8", "nobody_HAS.this", ""}) {
    SCOPED_TRACE(name);
    ASSERT_EQ(setenv("LC_ALL", name, 1), 0);
    const CharacterLocale locale = *name != 0 ? PlatformOpenCharacterLocale() : nullptr;
    EXPECT_EQ(locale == nullptr, *name == 0);
    for (const auto& [upper, lower, isAscii] : kPairs) {
      const bool hasCase = isAscii || name == std::string("C.utf8");
      EXPECT_EQ(PlatformToLower(locale, upper), hasCase ? lower : upper);
      EXPECT_EQ(PlatformToUpper(locale, lower), hasCase ? upper : lower);
      EXPECT_EQ(PlatformToLower(locale, lower), lower);
      EXPECT_EQ(PlatformToUpper(locale, upper), upper);
    }
    for (const WCHAR unit : Units(W("@[`{\x00DF\x96EA\xD800.\xDFFF\xFFFF")) + WCHAR{0}) {  // without another case
      EXPECT_EQ(PlatformToLower(locale, unit), unit);
      EXPECT_EQ(PlatformToUpper(locale, unit), unit);
    }
    PlatformCloseCharacterLocale(locale);
  }
}

TEST(Seam, TextIntoItselfIsNoUtf8) {
  WCHAR text[] = {'a', 'b', 0};
  EXPECT_EQ(PlatformTextToUtf8(text, reinterpret_cast<char*>(text), sizeof text), 0);
  EXPECT_EQ(PlatformTextToUtf8(text, nullptr, 0), 3);
  EXPECT_EQ(text[1], 'b');
}

// POSIX only: elsewhere the debugger's channel is no stream of the process.
TEST(Seam, DebugOutputSurvivesAReaderThatWentAway) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const int standardError = dup(STDERR_FILENO);
  dup2(ends[1], STDERR_FILENO);
  close(ends[0]);
  close(ends[1]);
  PlatformDebugOutput(W("nobody reads this"));
  dup2(standardError, STDERR_FILENO);
  close(standardError);
}

TEST(Seam, ClockTellsMoments) {
  CClockFields fields;
  fields.year = 7;
  EXPECT_FALSE(PlatformLocalTime(kFirstMoment - 1, fields) || PlatformLocalTime(kLastMoment + 1, fields));
  EXPECT_EQ(fields.year, 7) << "unchanged";
  int64_t moment = 42;
  EXPECT_FALSE(PlatformMomentOf({1960, 1, 1}, moment) || PlatformMomentOf({3002, 1, 1}, moment));
  EXPECT_EQ(moment, 42) << "unchanged";
  ASSERT_TRUE(PlatformLocalTime(1234567890, fields));
  EXPECT_TRUE(PlatformMomentOf(fields, moment));
  EXPECT_EQ(moment, 1234567890);
  EXPECT_GE(PlatformUniversalNow().year, 2024);
  EXPECT_GE(PlatformLocalNow().year, 2024);
}

TEST(Seam, ThreadsDifferAndGiveWay) {
  const uint32_t self = PlatformThreadId();
  EXPECT_EQ(PlatformThreadId(), self);
  uint32_t other = self;
  std::thread([&] { other = PlatformThreadId(); }).join();
  EXPECT_NE(other, self);
  EXPECT_TRUE(self != kNoThread && other != kNoThread);
  for (int round = 0; round < 100; ++round) {  // whether anybody ran is for the system to say
    if (!PlatformYield()) PlatformGiveUpTimeSlice();
  }
}
