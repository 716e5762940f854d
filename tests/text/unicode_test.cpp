// Tests which arguments the Unicode conversions reject. utf8_vectors_test.cpp compares what they convert with a model.

#include <gtest/gtest.h>

#include "tests/support/text.h"

template <class T>
static void CheckThatWriterRejects(ZRRESULT (*write)(ZRSTR, int32_t, T*, int32_t*)) {
  const Owned text(Units(W("text")));
  T buffer[8] = {};
  int32_t query = -1, capacity = 8, invalid = -2;
  ExpectRejected({write(text, 0, buffer, &query), write(text, -2, buffer, &query), write(text, -1, buffer, &invalid),
                  write(text, -1, nullptr, &capacity), write(nullptr, -1, buffer, &query),
                  write(text, -1, buffer, nullptr)});
  EXPECT_TRUE(query == -1 && capacity == 8 && invalid == -2) << "a rejected call must not change the size";
}

TEST(Unicode, ConversionsRejectInvalidArguments) {
  CheckThatWriterRejects(ZrCreateWCHARfromZRSTR);
  CheckThatWriterRejects(ZrCreateUTF16fromZRSTR);
  CheckThatWriterRejects(ZrCreateUTF32fomZRSTR);
  CheckThatWriterRejects(ZrCreateUTF8fromZRSTR);
  const Owned snow(Units(W("\x96EA")));
  ZRSTR string = snow;
  char32_t* points = nullptr;
  WCHAR units[4] = {1, 2, 3, 4};
  int32_t capacity = -1;
  ExpectRejected({ZrCreateZRSTRfromUTF8(nullptr, 0, &string), ZrCreateZRSTRfromUTF8("a", -2, &string),
                  ZrCreateZRSTRfromUTF32(nullptr, 0, &string), ZrCreateZRSTRfromUTF32(U"a", INT32_MIN, &string),
                  ZrUTF8toZRSTR("a", 0, &string), ZrCreateWCHARfromZRSTR(snow, INT32_MAX, units, &capacity),
                  ZrUTF16toUTF32(units + 1, units, 0, &points), ZrUTF16toUTF32(nullptr, units, 0, &points),
                  ZrCopyZRSTR2WCHAR(snow, units, 0), ZrCopyWCHAR2ZRSTR(units, nullptr, 1),
                  ZrCopyZRSTR2WCHAR(nullptr, units, 1), ZrCreateZRSTRfromUTF8("a", 1, nullptr),
                  ZrCreateZRSTRfromUTF32(U"a", 1, nullptr), ZrUTF16toUTF32(units, units, 0, nullptr)});
  EXPECT_TRUE(string == snow.string && points == nullptr && capacity == -1);
  char bytes[8];
  EXPECT_EQ(ZrZRSTRtoUTF8(nullptr, bytes, 8) | ZrZRSTRtoUTF8(snow, nullptr, 8) | ZrZRSTRtoUTF8(snow, bytes, -1), 0);

  EXPECT_EQ(ZrCreateZRSTRfromUTF8("a", 0, &string), ZR_R_OK);
  EXPECT_EQ(Owned(string).string, Owned(ZrCopyString(nullptr)).string) << "the shared empty string";
  EXPECT_TRUE(ZrCopyZRSTR2WCHAR(snow, units, 2) == ZR_R_OK && ZrCopyWCHAR2ZRSTR(W("ab"), units + 2, 1) == ZR_R_OK);
  EXPECT_EQ(Units(units, 4), Units({WCHAR{0x96EA}, WCHAR{0}, WCHAR{'a'}, WCHAR{4}}));
}
