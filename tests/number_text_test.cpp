// The reader and the writer of numbers, against the C library over the same texts in bytes.

#include "text/number_text.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>

#include "tests/support/text.h"

static void CheckReading(const std::string& bytes) {
  SCOPED_TRACE(bytes);
  const Units text = Widened(bytes);
  for (unsigned base : {10u, 16u}) {
    char* end = nullptr;
    const auto expected = static_cast<int64_t>(std::strtoll(bytes.c_str(), &end, static_cast<int>(base)));
    const auto got = ReadInteger<int64_t>(text, base);
    EXPECT_EQ(got.value, expected);
    EXPECT_EQ(got.end, static_cast<std::size_t>(end - bytes.c_str()));
    const auto expectedUnsigned = static_cast<uint64_t>(std::strtoull(bytes.c_str(), &end, static_cast<int>(base)));
    const auto gotUnsigned = ReadInteger<uint64_t>(text, base);
    EXPECT_EQ(gotUnsigned.value, expectedUnsigned);
    EXPECT_EQ(gotUnsigned.end, static_cast<std::size_t>(end - bytes.c_str()));
  }
}

TEST(NumberText, ReadsAsTheCLibrary) {
  std::istringstream texts(
      "| |-|+-1|0|-0|+7x| \t\n\v\f\r42|0x|0x1g|-0XfF|x1|1 2|007|0x 1|9223372036854775807|"
      "9223372036854775808|-9223372036854775808|-9223372036854775809|18446744073709551615|"
      "18446744073709551616|-18446744073709551615|-18446744073709551616|99999999999999999999999|"
      "-99999999999999999999999|7fffffffffffffff|8000000000000000|ffffffffffffffff|10000000000000000|"
      "-8000000000000000|-ffffffffffffffff");
  for (std::string text; std::getline(texts, text, '|');) CheckReading(text);
  std::mt19937 random(3);
  static constexpr char kUnits[] = "00123456789999afAFx+- \tg.";
  for (int round = 0; round < 20000; ++round) {
    std::string text(random() % 24, ' ');
    for (char& unit : text) unit = kUnits[random() % (sizeof kUnits - 1)];
    CheckReading(text);
  }
  EXPECT_EQ(ReadInteger<int64_t>(Units(1, WCHAR{0x0661})).end, 0u) << "only the digits of the C locale";
}

TEST(NumberText, WritesAsTheCLibrary) {
  for (int64_t value :
       {int64_t{0}, int64_t{7}, int64_t{-7}, int64_t{10}, int64_t{-99}, int64_t{12345}, INT64_MAX, INT64_MIN}) {
    for (int width : {0, 1, 2, 3, 4, 7, 30}) {
      char zeros[64], blanks[64];
      std::snprintf(zeros, sizeof zeros, "%0*" PRId64, width, value);
      std::snprintf(blanks, sizeof blanks, "%*" PRId64, width, value);
      WCHAR text[64];
      const auto count = static_cast<std::size_t>(width);
      EXPECT_EQ(Units(text, WritePadded(text, value, count, Pad::Blanks)), Widened(blanks));
      if (width > 0) {
        EXPECT_EQ(Units(text, WritePadded(text, value, count, Pad::Zeros)), Widened(zeros));
      }
    }
  }
}
