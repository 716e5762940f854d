// Tests the letter case on POSIX systems when the user's locale is not installed.

#include "platform/locale_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

TEST(PosixLocaleText, UnknownLocaleUsesAsciiCase) {
  const char* const set = std::getenv("LC_ALL");
  const std::string before = set != nullptr ? set : "";
  setenv("LC_ALL", "no such locale", 1);
  const CharacterLocale locale = PlatformOpenCharacterLocale();
  EXPECT_NE(locale, nullptr);
  EXPECT_EQ(PlatformToUpper(locale, 'z'), 'Z');
  EXPECT_EQ(PlatformToUpper(locale, 0xE9), 0xE9);
  PlatformCloseCharacterLocale(locale);
  set != nullptr ? setenv("LC_ALL", before.c_str(), 1) : unsetenv("LC_ALL");
}
