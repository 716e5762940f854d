// The reader of numbers against the C library over the same texts in bytes.

#include "text/number_text.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/integer_texts.h"
#include "tests/support/text.h"

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
  ForEachIntegerText([](const std::string& text) {
    for (const int base : {10, 16}) {
      CheckReading<int64_t>(text, base, std::strtoll);
      CheckReading<uint64_t>(text, base, std::strtoull);
    }
  });
  EXPECT_EQ(ReadInteger<int64_t>(Units(1, WCHAR{0x0661})).end, 0u) << "only the digits of the C locale";
}
