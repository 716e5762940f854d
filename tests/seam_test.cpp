// What stands below the seam, where callers don't see it. A new system is finished when these pass, and all others.

#include <gtest/gtest.h>

#include <cctype>

#include "platform/locale_text.h"
#include "platform/module.h"
#include "tests/support/text.h"

TEST(Seam, TellsWhyAModuleCantBeLoaded) {
  const Units kPaths[] = {
      Widened(TEST_DIRECTORY "/no_module" MODULE_SUFFIX),
      Widened("/nowhere/" + std::string(2000, 'x')),       // the path must not crowd out the reason
      Widened("/nowhere/two\r\nlines\x7F") + W("\x2028"),  // nor break the line
      Units(1, WCHAR{0xDC00}),
  };
  for (const Units& path : kPaths) {
    SCOPED_TRACE(testing::PrintToString(path.substr(0, 80)));
    Units reason;
    EXPECT_EQ(PlatformLoadModule(path.c_str(), reason), nullptr);
    EXPECT_EQ(reason.find(W("nowhere/")), Units::npos) << "the caller tells the path";
    EXPECT_TRUE(reason.size() > 10 && reason.size() <= kModuleReasonUnits) << testing::PrintToString(reason);
    for (WCHAR unit : reason) {
      EXPECT_TRUE(unit >= 0x20 && unit != 0x7F && unit != 0x2028) << testing::PrintToString(reason);
    }
  }
}

TEST(Seam, FindsOnlyFunctionsOfTheModule) {
  Units reason;
  const ModuleHandle module = PlatformLoadModule(Widened(TEST_DIRECTORY "/good" MODULE_SUFFIX).c_str(), reason);
  ASSERT_NE(module, nullptr);
  EXPECT_NE(PlatformFindFunction(module, "ZrInitModule"), nullptr);
  EXPECT_EQ(PlatformFindFunction(module, "NobodyDefinesThis"), nullptr);
  PlatformReleaseModule(module);
}

TEST(Seam, WithoutALocaleOnlyAsciiLettersHaveCase) {
  for (int unit = 0; unit <= 0xFFFF; ++unit) {
    EXPECT_EQ(PlatformToLower(nullptr, static_cast<WCHAR>(unit)), unit < 0x80 ? std::tolower(unit) : unit)
        << "unit " << unit;
    EXPECT_EQ(PlatformToUpper(nullptr, static_cast<WCHAR>(unit)), unit < 0x80 ? std::toupper(unit) : unit)
        << "unit " << unit;
  }
}

TEST(Seam, TextIntoItselfIsNoUtf8) {
  WCHAR text[] = {'a', 'b', 0};
  EXPECT_EQ(PlatformTextToUtf8(text, reinterpret_cast<char*>(text), sizeof text), 0);
  EXPECT_EQ(PlatformTextToUtf8(text, reinterpret_cast<char*>(text), 0), 3) << "a query ignores the buffer";
  EXPECT_EQ(text[1], 'b');
}
