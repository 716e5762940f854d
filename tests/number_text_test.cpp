// The reader of numbers against the C library over the same texts in bytes.

#include "text/number_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <regex>
#include <sstream>
#include <vector>

#include "tests/support/text.h"

// C libraries differ about a "0x" without digits behind it. Only its 0 is to be read, so a blank is shown to them for
// its x.
static std::string WithoutEmptyPrefix(const std::string& text) {
  static const std::regex prefix("^([ \t\n\v\f\r]*[-+]?0)[xX](?![0-9a-fA-F])");
  return std::regex_replace(text, prefix, "$1 ");
}

template <class Integer, class Read>
static void CheckReading(const std::string& text, int base, Read read) {
  const std::string bytes = WithoutEmptyPrefix(text);
  char* end = nullptr;
  const auto expected = static_cast<Integer>(read(bytes.c_str(), &end, base));
  const auto got = ReadInteger<Integer>(Widened(text), static_cast<unsigned>(base));
  EXPECT_EQ(got.value, expected) << text;
  EXPECT_EQ(got.end, static_cast<std::size_t>(end - bytes.c_str())) << text;
}

TEST(NumberText, ReadsAsTheCLibrary) {
  std::vector<std::string> texts;
  std::istringstream limits(
      "|-|+-1| \t\n\v\f\r42|0x|0x1g|-0XfF|9223372036854775807|9223372036854775808|-9223372036854775808|"
      "-9223372036854775809|18446744073709551615|18446744073709551616|-18446744073709551615|-18446744073709551616|"
      "7fffffffffffffff|8000000000000000|ffffffffffffffff|10000000000000000|-8000000000000000|-ffffffffffffffff");
  for (std::string text; std::getline(limits, text, '|');) texts.push_back(text);
  std::mt19937 random(3);
  static constexpr char kUnits[] = "00123456789999afAFx+- \tg.";
  while (texts.size() < 20000) {
    std::string& text = texts.emplace_back(random() % 24, ' ');
    for (char& unit : text) unit = kUnits[random() % sizeof kUnits];  // zero units too
  }
  for (const std::string& text : texts) {
    for (const int base : {10, 16}) {
      CheckReading<int64_t>(text, base, std::strtoll);
      CheckReading<uint64_t>(text, base, std::strtoull);
    }
  }
  EXPECT_EQ(ReadInteger<int64_t>(Units(1, WCHAR{0x0661})).end, 0u) << "only the digits of the C locale";
}
