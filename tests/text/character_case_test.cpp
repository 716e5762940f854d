// Tests case mapping and case-insensitive comparison with random texts. The oracle maps unit by unit with the system's
// own functions in the user's locale, and with a Turkish mapping in which the lower case of I is not i.

#include "text/character_case.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/support/guarded_page.h"
#include "tests/support/system.h"
#include "tests/support/text.h"
#include "zrcore/unicode.h"

// Runs before the library reads the locale on first use. Every system has this locale with more than ASCII letters.
[[maybe_unused]] static const bool g_isChosen = (ChooseUnicodeLocale(), true);

static WCHAR Turkish(WCHAR unit) { return unit == 'I' ? WCHAR{0x131} : unit == 0x130 ? WCHAR{'i'} : SystemLower(unit); }

static Units Mapped(Units text, WCHAR (*map)(WCHAR)) {
  std::transform(text.begin(), text.end(), text.begin(), map);
  return text;
}

TEST(CharacterCase, FollowsTheLocaleUnitByUnit) {
  EXPECT_EQ(SystemLower(0xC9), 0xE9u) << "this test needs a locale with more than ASCII letters";
  auto& map = const_cast<CCaseMap&>(g_characterCase.Lower());  // replaced during the test
  static const CCaseMap usersMap = map;                        // too large for some stacks
  const GuardedPage page, otherPage;
  std::mt19937 random(5);
  uint32_t next = 0;
  const Units kUnits = W("aA\xC9\xE9zZ@[`{iIkK\x130\x131\x212A\x4E16\xD83E\xDE90");
  for (const auto lower : {SystemLower, Turkish}) {
    if (lower == Turkish) map.Read(lower, 'A', 'a' - 'A');
    EXPECT_EQ(map.IsAsciiPlain(), lower != Turkish);
    for (int round = 0; round < 20000; ++round) {
      // Odd rounds use all units in turn. Even rounds use few different units, so that a read of the text before the
      // start, which half of the rounds have, easily passes for the text.
      const Units prefix(random() % 2 * 40, WCHAR{'a'});
      const size_t choices = 1 + static_cast<size_t>(round) / 2 % kUnits.size();
      Units left(random() % 40, WCHAR{0});
      for (WCHAR& unit : left) unit = round % 2 ? WCHAR(++next % 0xFFFF + 1) : kUnits[random() % choices];
      Units right = random() % 2 == 0 ? Mapped(left, lower) : left;
      if (random() % 2 == 0 && !right.empty()) right[random() % right.size()] = static_cast<WCHAR>('a' + random() % 3);
      if (random() % 4 == 0) right.resize(random() % (right.size() + 1));
      if (random() % 2 == 0) std::swap(left, right);  // also a left text that is the shorter one
      // Half of the rounds have the same units after both terminators, so that a vector reads them.
      const Units after = random() % 2 == 0 ? Units(1, WCHAR{0}) + Units(20, WCHAR{'a'}) : Units();
      WCHAR* const text = page.Put(prefix + left + after) + prefix.size();
      const auto inputs = [&] {
        return testing::Message() << "round " << round << (lower == Turkish ? ", Turkish " : ", the system's ")
                                  << testing::PrintToString(left) << " and " << testing::PrintToString(right);
      };
      const int32_t order = ZrWCHARCompareNoCase(text, otherPage.Put(prefix + right + after) + prefix.size());
      ASSERT_EQ(SignOf(order), SignOf(Mapped(left, lower).compare(Mapped(right, lower)))) << inputs();
      ASSERT_RESULT(ZrWCHARToLower(text), ZR_R_OK) << inputs();
      ASSERT_EQ(Units(text), Mapped(left, lower)) << inputs();
      ASSERT_RESULT(ZrWCHARToUpper(page.Put(left + after)), ZR_R_OK) << inputs();
      ASSERT_EQ(Units(text), Mapped(left, SystemUpper)) << inputs();
    }
  }
  map = usersMap;
  EXPECT_LT(ZrWCHARCompareNoCase(nullptr, W("")), 0);
  EXPECT_GT(ZrWCHARCompareNoCase(W(""), nullptr), 0);
  EXPECT_EQ(ZrWCHARCompareNoCase(nullptr, nullptr), 0);
  ExpectRejected({ZrWCHARToLower(nullptr), ZrWCHARToUpper(nullptr)});
}
