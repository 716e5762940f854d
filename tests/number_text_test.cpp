// The reader and the writer of numbers, against the C library over the same texts in bytes.

#include "text/number_text.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "tests/support/integer_texts.h"
#include "tests/support/text.h"

static void CheckReading(const std::string& original) {
  SCOPED_TRACE(original);
  const Units text = Widened(original);
  const std::string bytes = WithoutEmptyPrefix(original);
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
  ForEachIntegerText(CheckReading);
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
