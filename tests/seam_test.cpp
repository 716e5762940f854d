// The services of the system below the seam. A new system is finished when these pass.

#include <gtest/gtest.h>

#include <thread>

#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/locale_text.h"
#include "platform/module.h"
#include "platform/scheduling.h"
#include "tests/support/system.h"
#include "tests/support/text.h"

TEST(Seam, LoadsModulesAndFindsFunctions) {
  Units reason;
  const Units path = Widened(TEST_DIRECTORY "/good" MODULE_SUFFIX);
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
      Widened(TEST_DIRECTORY "/no_module" MODULE_SUFFIX),
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

TEST(Seam, DebugOutputArrives) {
  const Units text = W("line\r\nand more");
  EXPECT_EQ(DebugOutputOf([&] { PlatformDebugOutput({text.data(), 9}); }), "line\r\nand");
}

// A locale with more than ASCII, one that is not there if the system has such, and none.
TEST(Seam, CaseIsThatOfTheLocaleUnitByUnit) {
  const Units kWithoutCase = W("@[`{\x00DF\x96EA\xD800.\xDFFF\xFFFF"),
              kUpper = W("AZ\x00C9\x0416\x03A9\xFF21") + kWithoutCase,
              kLower = W("az\x00E9\x0436\x03C9\xFF41") + kWithoutCase;
  for (const std::string name : {"missing", "unicode", "none"}) {
    SCOPED_TRACE(name);
    if (name == "missing" && !ChooseMissingLocale()) continue;
    if (name == "unicode") ChooseUnicodeLocale();
    const CharacterLocale locale = name != "none" ? PlatformOpenCharacterLocale() : nullptr;
    EXPECT_EQ(locale == nullptr, name == "none");
    for (std::size_t at = 0; at <= kUpper.size(); ++at) {  // with the terminator
      const WCHAR upper = kUpper[at], lower = kLower[at];
      const bool hasCase = upper < 0x80 || name == "unicode";
      EXPECT_EQ(PlatformToLower(locale, upper), hasCase ? lower : upper);
      EXPECT_EQ(PlatformToUpper(locale, lower), hasCase ? upper : lower);
      EXPECT_EQ(PlatformToLower(locale, lower), lower);
      EXPECT_EQ(PlatformToUpper(locale, upper), upper);
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
