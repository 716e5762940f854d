// Tests letter case and conversion to UTF-8 in the platform layer. The same tests run on every system.

#include "platform/locale_text.h"

#include <gtest/gtest.h>

#include <cctype>

TEST(PlatformLocaleText, OnlyAsciiLettersHaveCaseWithoutALocale) {
  for (int unit = 0; unit <= 0xFFFF; ++unit) {
    EXPECT_EQ(PlatformToLower(nullptr, static_cast<WCHAR>(unit)), unit < 0x80 ? std::tolower(unit) : unit)
        << "unit " << unit;
    EXPECT_EQ(PlatformToUpper(nullptr, static_cast<WCHAR>(unit)), unit < 0x80 ? std::toupper(unit) : unit)
        << "unit " << unit;
  }
}

TEST(PlatformLocaleText, RejectsTheSourceAsUtf8Buffer) {
  WCHAR text[] = {'a', 'b', 0};
  EXPECT_EQ(PlatformTextToUtf8(text, reinterpret_cast<char*>(text), sizeof text), 0);
  EXPECT_EQ(PlatformTextToUtf8(text, reinterpret_cast<char*>(text), 0), 3)
      << "a query for the size must ignore the buffer";
  EXPECT_EQ(text[1], 'b');
}
