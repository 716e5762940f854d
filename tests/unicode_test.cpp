#include <gtest/gtest.h>

#include <utility>

#include "tests/support/text.h"

// What a model says of the same at random, told for some texts. (The byte behind each is its terminator.)
TEST(Unicode, FromUtf8ValidatesLoosely) {
  const std::pair<const char*, Units> kRows[] = {
      {"a\xC3\xA9\xE9\x9B\xAA\xF0\x9F\xAA\x90", W("a\x00E9\x96EA\xD83E\xDE90")},
      {"a\xC3\x28", {}},
      {"good\xC3", W("good\x00C0")},                // takes the byte behind
      {"\xE2", Units(1, 0)},                        // yields less than was promised
      {"\xF0\x80\x80\xAF", Units(W("\x2F\0"), 2)},  // so does this
  };
  for (const auto& [bytes, content] : kRows) {
    ZRSTR string = nullptr;
    EXPECT_EQ(ZrCreateZRSTRfromUTF8(bytes, -1, &string), content.ends_with(WCHAR{0}) ? ZR_R_FAILED : ZR_R_OK);
    EXPECT_EQ(ContentOf(Owned(string)), content) << testing::PrintToString(bytes);
  }
}

template <class T>
static void CheckThatWriterRefuses(ZRRESULT (*write)(ZRSTR, int32_t, T*, int32_t*)) {
  const Owned text(Units(W("text")));
  T buffer[8] = {};
  const auto answer = [write](ZRSTR source, int32_t length, T* to, int32_t capacity) {
    const int32_t before = capacity;
    const ZRRESULT result = write(source, length, to, &capacity);
    EXPECT_EQ(capacity, before);
    return result;
  };
  ExpectRefused({answer(text, 0, buffer, -1), answer(text, -2, buffer, -1), answer(text, INT32_MIN, buffer, -1),
                 answer(text, -1, buffer, -2), answer(text, -1, nullptr, 0), answer(text, -1, nullptr, 1),
                 answer(nullptr, -1, buffer, -1), write(text, -1, buffer, nullptr)});
}

TEST(Unicode, LayersRefuse) {
  CheckThatWriterRefuses(ZrCreateWCHARfromZRSTR);
  CheckThatWriterRefuses(ZrCreateUTF16fromZRSTR);
  CheckThatWriterRefuses(ZrCreateUTF32fomZRSTR);
  CheckThatWriterRefuses(ZrCreateUTF8fromZRSTR);
  const Owned shared(ZrCopyString(nullptr)), snow(Units(W("\x96EA")));
  ZRSTR string = snow;
  char32_t* points = nullptr;
  WCHAR units[4] = {1, 2, 3, 4};
  int32_t capacity = -1;
  ExpectRefused({ZrCreateZRSTRfromUTF8(nullptr, 0, &string), ZrCreateZRSTRfromUTF8("a", -2, &string),
                 ZrCreateZRSTRfromUTF32(nullptr, 0, &string), ZrCreateZRSTRfromUTF32(U"a", INT32_MIN, &string),
                 ZrUTF8toZRSTR("a", 0, &string), ZrUTF8toZRSTR(nullptr, 1, &string), ZrUTF8toZRSTR("a", 1, nullptr),
                 ZrCreateZRSTRfromUTF32(U"a", 1, nullptr), ZrCreateWCHARfromZRSTR(snow, INT32_MAX, units, &capacity),
                 ZrUTF16toUTF32(units + 1, units, 0, &points), ZrUTF16toUTF32(nullptr, units, 0, &points),
                 ZrUTF16toUTF32(units, units, 0, nullptr), ZrCopyZRSTR2WCHAR(snow, units, 0),
                 ZrCopyZRSTR2WCHAR(nullptr, units, 1), ZrCopyWCHAR2ZRSTR(units, nullptr, 1)});
  EXPECT_TRUE(string == snow.string && points == nullptr && capacity == -1);
  char bytes[8];
  for (const int32_t size :
       {ZrZRSTRtoUTF8(nullptr, bytes, 8), ZrZRSTRtoUTF8(snow, nullptr, 8), ZrZRSTRtoUTF8(snow, bytes, -1)}) {
    EXPECT_EQ(size, 0);
  }

  ZRSTR made[4] = {};
  for (const ZRRESULT result : {ZrCreateZRSTRfromUTF8("a", 0, &made[0]), ZrCreateZRSTRfromUTF8("", -1, &made[1]),
                                ZrUTF8toZRSTR("", -1, &made[2]), ZrCreateZRSTRfromUTF32(U"", -1, &made[3])}) {
    EXPECT_EQ(result, ZR_R_OK);
  }
  for (ZRSTR each : made) EXPECT_EQ(Owned(each).string, shared.string);

  EXPECT_EQ(ZrCopyZRSTR2WCHAR(snow, units, 2), ZR_R_OK);
  EXPECT_EQ(ZrCopyWCHAR2ZRSTR(W("ab"), units + 2, 1), ZR_R_OK);
  EXPECT_EQ(Units(units, 4), Units({WCHAR{0x96EA}, WCHAR{0}, WCHAR{'a'}, WCHAR{4}}));
}
