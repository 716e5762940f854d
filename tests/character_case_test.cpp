// Locales that no machine is sure to have: one in which the lower case of I is no i, and the C locale.

#include "text/character_case.h"

#include <gtest/gtest.h>

#include "tests/support/text.h"

static int32_t SignOf(int32_t order) { return (order > 0) - (order < 0); }

TEST(CharacterCase, FoldsAsciiOnlyWhereTheLocaleDoes) {
  static CCaseMap c, turkish;  // too large for some stacks
  const auto plain = [](WCHAR unit) { return PlatformToLower(nullptr, unit); };
  c.Read(plain, 'A', 'a' - 'A');
  turkish.Read([&](WCHAR unit) { return unit == 'I'     ? WCHAR{0x131}
                                        : unit == 0x130 ? WCHAR{'i'}
                                                        : plain(unit); }, 'A',
               'a' - 'A');
  EXPECT_TRUE(c.IsAsciiPlain());
  EXPECT_FALSE(turkish.IsAsciiPlain());
  struct {
    const WCHAR *left, *right;
    int32_t inC, inTurkish;
  } const kCases[] = {
      {W("INDIGO"), W("indigo"), 0, 1},
      {W("IZM\x0130R"), W("\x0131zmir"), -1, 0},
      {W("some more than eight"), W("SOME MORE THAN EiGHT"), 0, 0},
      {W("\x00C9"), W("\x00E9"), -1, -1},
      {W("a"), W("A_"), -1, -1},
      {W("Z"), W("_"), 1, 1},  // lower case comes behind the signs between the two alphabets
  };
  for (const auto& each : kCases) {
    EXPECT_EQ(SignOf(CompareNoCase(c, each.left, each.right)), each.inC);
    EXPECT_EQ(SignOf(CompareNoCase(turkish, each.left, each.right)), each.inTurkish);
    EXPECT_EQ(SignOf(CompareNoCase(turkish, each.right, each.left)), -each.inTurkish);
  }
}
