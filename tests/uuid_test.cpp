#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/text.h"

static const ZRUUID kValue = {0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};

TEST(Uuid, HeapRecords) {
  ZRUUID* nil = ZrCreateUUID();
  EXPECT_EQ(*nil, ZRUUID{});
  ZRUUID* copy = nullptr;
  EXPECT_EQ(ZrCopyUUID(&kValue, &copy), ZR_R_OK);
  EXPECT_EQ(*copy, kValue);
  EXPECT_EQ(ZrCopyUUID(nullptr, &copy), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCopyUUID(&kValue, nullptr), ZR_R_INVALID_ARGUMENTS);
  ZrDestroyUUID(nil);
  ZrDestroyUUID(copy);
  ZrDestroyUUID(nullptr);

  std::set<std::string> seen;
  for (int round = 0; round < 100; ++round) {
    ZRUUID* random = ZrGenerateUUID();
    EXPECT_EQ(random->data3 >> 12, 4) << "version";
    EXPECT_EQ(random->data4[0] >> 6, 2) << "variant";
    EXPECT_TRUE(seen.insert(testing::PrintToString(*random)).second);
    ZrDestroyUUID(random);
  }
}

TEST(Uuid, OrdersAsItsText) {
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    // Values that differ in one byte anywhere, or in all.
    ZRUUID left = kValue, right = kValue;
    for (int byte = 0; byte < (round % 2 ? 1 : 16); ++byte) {
      reinterpret_cast<unsigned char*>(&right)[random() % 16] = static_cast<unsigned char>(random());
    }
    const std::string leftText = testing::PrintToString(left), rightText = testing::PrintToString(right);
    EXPECT_EQ(ZRUUIDLess(&left, &right), leftText < rightText) << leftText << rightText;
    EXPECT_EQ(ZRUUIDGreater(&left, &right), leftText > rightText) << leftText << rightText;
    uint8_t equal = 9;
    EXPECT_EQ(ZrCompareUUID(&left, &right, &equal), ZR_R_OK);
    EXPECT_EQ(equal, leftText == rightText);
  }
  EXPECT_FALSE(ZRUUIDLess(nullptr, &kValue) || ZRUUIDLess(&kValue, nullptr) || ZRUUIDGreater(nullptr, &kValue) ||
               ZRUUIDGreater(&kValue, nullptr));
  uint8_t equal = 9;
  EXPECT_EQ(ZrCompareUUID(nullptr, &kValue, &equal), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCompareUUID(&kValue, nullptr, &equal), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCompareUUID(&kValue, &kValue, nullptr), ZR_R_INVALID_ARGUMENTS);
}

TEST(Uuid, WritesText) {
  ZRSTR text = nullptr;
  EXPECT_EQ(ZrStringFromUUID(&kValue, &text), ZR_R_OK);
  EXPECT_EQ(ContentOf(Owned(text)), W("{01234567-89AB-CDEF-0123-456789ABCDEF}"));
  EXPECT_EQ(ZrStringFromUUID(&kValue, nullptr), ZR_R_INVALID_ARGUMENTS);
}

enum class Left { Value, Nil, Unchanged };

TEST(Uuid, ReadsText) {
  const std::string plain = "01234567-89AB-CDEF-0123-456789ABCDEF", cut = plain.substr(0, 35);
  const struct {
    std::string text;
    Left left;
  } kRows[] = {
      {plain, Left::Value},
      {"{" + plain + "}", Left::Value},
      {"\"" + plain + "\"", Left::Value},
      {"\"{" + plain, Left::Value},
      {plain + "and more", Left::Value},
      {"01234567 89ab?cdef\x80"
       "0123G456789abcdef",
       Left::Value},  // separators may be anything
      {cut, Left::Unchanged},
      {"", Left::Unchanged},
      {"\"" + cut, Left::Nil},
      {"\"{" + cut, Left::Nil},
      {"\"{" + plain.substr(0, 34), Left::Nil},  // the last digit's place lies behind the terminator
      {"{\"" + plain, Left::Nil},                // only the other order
      {"{{" + plain, Left::Nil},
      {"01234567-89AB-CDEF-0123-456789ABCDEG", Left::Nil},
      {"01234567-89AB-CDEF-0123-456789ABCD\xE9"
       "F",
       Left::Nil},
      {"0x234567-89AB-CDEF-0123-456789ABCDEF", Left::Nil},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.text);
    const std::vector<char> exact(row.text.c_str(),
                                  row.text.c_str() + row.text.size() + 1);  // nothing to read behind it
    const ZRUUID before = {7, 7, 7, {7}};
    ZRUUID uuid = before;
    EXPECT_EQ(ZrUUIDFromString(exact.data(), &uuid), row.left == Left::Value ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(uuid, row.left == Left::Value ? kValue : row.left == Left::Nil ? ZRUUID{} : before);
  }
  ZRUUID uuid;
  EXPECT_EQ(ZrUUIDFromString(nullptr, &uuid), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrUUIDFromString(plain.c_str(), nullptr), ZR_R_INVALID_ARGUMENTS);
}
