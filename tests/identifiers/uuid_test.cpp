#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/support/text.h"

static const ZRUUID kValue = {0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}}, kNil = {},
                    kUnchanged = {7, 0, 0, {}};

TEST(Uuid, HeapRecords) {
  ZRUUID *nil = ZrCreateUUID(), *copy = nullptr;
  EXPECT_EQ(*nil, kNil);
  EXPECT_RESULT(ZrCopyUUID(&kValue, &copy), ZR_R_OK);
  EXPECT_EQ(*copy, kValue);
  ExpectRefused({ZrCopyUUID(&kValue, nullptr), ZrCopyUUID(nullptr, &copy), ZrUUIDFromString(nullptr, nil)});
  for (int round = 0; round < 100; ++round) {
    ZRUUID* random = ZrGenerateUUID();
    EXPECT_EQ(random->data3 >> 12, 4) << "version";
    EXPECT_EQ(random->data4[0] >> 6, 2) << "variant";
    EXPECT_FALSE(*random == *copy) << "the one before";
    std::swap(*random, *copy);
    ZrDestroyUUID(random);
  }
  for (ZRUUID* record : {nil, copy, static_cast<ZRUUID*>(nullptr)}) ZrDestroyUUID(record);
}

TEST(Uuid, OrdersAsItsText) {
  std::mt19937 random(7);
  uint8_t equal = 9;
  for (int round = 0; round < 2000; ++round) {
    ZRUUID right = kValue;  // but for two bytes, or one
    auto* bytes = reinterpret_cast<uint8_t*>(&right);
    for (int change = 0; change < 2; ++change) bytes[random() % 16] = static_cast<uint8_t>(random());
    const int order = testing::PrintToString(kValue).compare(testing::PrintToString(right));
    EXPECT_EQ(ZRUUIDLess(&kValue, &right), order < 0) << right;
    EXPECT_EQ(ZRUUIDGreater(&kValue, &right), order > 0) << right;
    EXPECT_RESULT(ZrCompareUUID(&kValue, &right, &equal), ZR_R_OK) << right;
    EXPECT_EQ(equal, order == 0) << right;
  }
  EXPECT_EQ(ZRUUIDLess(nullptr, &kValue), 0);
  EXPECT_EQ(ZRUUIDGreater(&kValue, nullptr), 0);
  EXPECT_EQ(ZRUUIDLess(&kValue, nullptr), 0);
  EXPECT_EQ(ZRUUIDGreater(nullptr, &kValue), 0);
  ExpectRefused({ZrCompareUUID(nullptr, &kValue, &equal), ZrCompareUUID(&kValue, &kValue, nullptr)});
}

// What a record holds after reading the text, with nothing behind it to read.
static ZRUUID Read(const std::string& text) {
  const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
  ZRUUID uuid = kUnchanged;
  const ZRRESULT result = ZrUUIDFromString(exact.data(), &uuid);
  EXPECT_RESULT(result, uuid == kUnchanged || uuid == kNil ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK)
      << "\n  from ZrUUIDFromString of " << testing::PrintToString(text);
  return uuid;
}

TEST(Uuid, WritesAndReadsText) {
  const std::string plain = "01234567-89AB-CDEF-0123-456789ABCDEF", cut = plain.substr(0, 35);
  ZRSTR written = nullptr;
  EXPECT_RESULT(ZrStringFromUUID(&kValue, &written), ZR_R_OK);
  EXPECT_EQ(ContentOf(Owned(written)), Widened("{" + plain + "}"));
  for (const char* front : {"", "{", "\"", "\"{"})
    EXPECT_EQ(Read(front + plain + "}\" and more"), kValue) << "after " << front;
  EXPECT_EQ(Read("01234567 89ab?cdef\3720123G456789abcdef"), kValue) << "separators may be anything";
  EXPECT_EQ(Read(cut), kUnchanged);
  EXPECT_EQ(Read("\"" + cut), kNil) << "the last digit's place lies behind the terminator";
  for (const char* front : {"{\"", "{{"}) EXPECT_EQ(Read(front + plain), kNil) << "only the other order";
  for (int unit = 1; unit < 256; ++unit) {
    const char digit[] = {static_cast<char>(unit), 0};
    ZRUUID expected = kValue;
    expected.data4[7] = static_cast<uint8_t>(0xE0 + std::strtoul(digit, nullptr, 16));
    EXPECT_EQ(Read(cut + digit), std::isxdigit(unit) ? expected : kNil) << "digit " << unit;
  }
  ExpectRefused({ZrStringFromUUID(&kValue, nullptr), ZrUUIDFromString(plain.c_str(), nullptr)});
}
