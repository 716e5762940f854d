// Tests the conversions between UTF-16 and UTF-8 of the POSIX platform layer, with a table of valid and invalid texts.

#include "platform/posix/utf8_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

TEST(PosixUtf8Text, ReplacesInvalidUtf8) {
  const struct {
    std::string bytes;
    std::u16string text;
  } kRows[] = {
      {"a\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"a\x0080\x07FF\x0800\xFFFF"},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", {0xD800, 0xDC00, 0xDBFF, 0xDFFF}},
      {"\x80.\xC1\xBF", u"\xFFFD.\xFFFD\xFFFD"},                  // not a valid first byte
      {"\xF5\x80", u"\xFFFD\xFFFD"},                              // above every code point
      {"\xE0\x9F\xBF", u"\xFFFD\xFFFD\xFFFD"},                    // longer than necessary
      {"\xF0\x8F\xBF\xBF", u"\xFFFD\xFFFD\xFFFD\xFFFD"},          // the same with four bytes
      {"\xED\x9F\xBF\xED\xA0\x80", u"\xD7FF\xFFFD\xFFFD\xFFFD"},  // the first surrogate
      {"\xED\xBF\xBF\xEE\x80\x80", u"\xFFFD\xFFFD\xFFFD\xE000"},  // the last one
      {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"},          // above the last code point
      {"\xE2\x82.\xE2\x82", u"\xFFFD\xFFFD.\xFFFD\xFFFD"},        // truncated, in the middle and at the end
  };
  for (const auto& [bytes, text] : kRows) EXPECT_EQ(FromUtf8Lossy(bytes), text) << &bytes - &kRows[0].bytes;
}

TEST(PosixUtf8Text, ReplacesLoneSurrogates) {
  EXPECT_EQ(ToUtf8Lossy(u"\xFF01\xD83E"), "\xEF\xBC\x81\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf8Lossy(u"\xD83E\xE000"), "\xEF\xBF\xBD\xEE\x80\x80");
  EXPECT_EQ(ToUtf8(u"\xD83E"), std::nullopt);
}
