// Letter case in the user's locale and in one that no machine is sure to have, where the lower case of I is no i.

#include "text/character_case.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/support/guarded_page.h"
#include "tests/support/system.h"
#include "tests/support/text.h"
#include "zrcore/unicode.h"

// Before the library reads it, on first use: the one locale with more than ASCII letters that every system has.
[[maybe_unused]] static const bool g_isChosen = (ChooseUnicodeLocale(), true);

static WCHAR Turkish(WCHAR unit) { return unit == 'I' ? WCHAR{0x131} : unit == 0x130 ? WCHAR{'i'} : SystemLower(unit); }

static Units Mapped(Units text, WCHAR (*map)(WCHAR)) {
  std::transform(text.begin(), text.end(), text.begin(), map);
  return text;
}

TEST(CharacterCase, IsThatOfTheLocaleUnitByUnit) {
  EXPECT_EQ(SystemLower(0xC9), 0xE9u) << "a locale with more than ASCII";
  auto& map = const_cast<CCaseMap&>(g_characterCase.Lower());  // replaced as long as the test runs
  static const CCaseMap usersMap = map;                        // too large for some stacks
  const GuardedPage page, otherPage;
  std::mt19937 random(5);
  uint32_t next = 0;
  const Units kUnits = W("aA\xC9\xE9zZ@[`{iIkK\x130\x131\x212A\x4E16\xD83E\xDE90");
  for (const auto lower : {SystemLower, Turkish}) {
    if (lower == Turkish) map.Read(lower, 'A', 'a' - 'A');
    EXPECT_EQ(map.IsAsciiPlain(), lower != Turkish);
    for (int round = 0; round < 20000; ++round) {
      // All units in turn; or few, so that what stands in front, in half of the rounds, is easily taken for the text.
      const Units front(random() % 2 * 40, WCHAR{'a'});
      const size_t kinds = 1 + static_cast<size_t>(round) / 2 % kUnits.size();
      Units left(random() % 40, WCHAR{0});
      for (WCHAR& unit : left) unit = round % 2 ? WCHAR(++next % 0xFFFF + 1) : kUnits[random() % kinds];
      Units right = random() % 2 == 0 ? Mapped(left, lower) : left;
      if (random() % 2 == 0 && !right.empty()) right[random() % right.size()] = static_cast<WCHAR>('a' + random() % 3);
      if (random() % 4 == 0) right.resize(random() % (right.size() + 1));
      WCHAR* const text = page.Put(front + left) + front.size();
      const auto inputs = [&] {
        return testing::Message() << "round " << round << (lower == Turkish ? ", Turkish " : ", the system's ")
                                  << testing::PrintToString(left) << " and " << testing::PrintToString(right);
      };
      const int32_t order = ZrWCHARCompareNoCase(text, otherPage.Put(front + right) + front.size());
      ASSERT_EQ(SignOf(order), SignOf(Mapped(left, lower).compare(Mapped(right, lower)))) << inputs();
      ASSERT_RESULT(ZrWCHARToLower(text), ZR_R_OK) << inputs();
      ASSERT_EQ(Units(text), Mapped(left, lower)) << inputs();
      ASSERT_RESULT(ZrWCHARToUpper(page.Put(left)), ZR_R_OK) << inputs();
      ASSERT_EQ(Units(text), Mapped(left, SystemUpper)) << inputs();
    }
  }
  map = usersMap;
  EXPECT_LT(ZrWCHARCompareNoCase(nullptr, W("")), 0);
  EXPECT_GT(ZrWCHARCompareNoCase(W(""), nullptr), 0);
  EXPECT_EQ(ZrWCHARCompareNoCase(nullptr, nullptr), 0);
  ExpectRefused({ZrWCHARToLower(nullptr), ZrWCHARToUpper(nullptr)});
}
