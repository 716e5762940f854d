// Tests UUIDs: records on the heap, order, formatting and parsing. The order of records must be the order of their
// texts.

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/support/text.h"

static const ZRUUID kValue = {0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}}, kNil = {},
                    kUnchanged = {7, 0, 0, {}};

TEST(Uuid, CreatesCopiesAndGeneratesRecords) {
  ZRUUID *nil = ZrCreateUUID(), *copy = nullptr;
  EXPECT_EQ(*nil, kNil);
  EXPECT_RESULT(ZrCopyUUID(&kValue, &copy), ZR_R_OK);
  EXPECT_EQ(*copy, kValue);
  ExpectRejected({ZrCopyUUID(&kValue, nullptr), ZrCopyUUID(nullptr, &copy), ZrUUIDFromString(nullptr, nil)});
  for (int round = 0; round < 100; ++round) {
    ZRUUID* random = ZrGenerateUUID();
    EXPECT_EQ(random->data3 >> 12, 4) << "the version must be 4";
    EXPECT_EQ(random->data4[0] >> 6, 2) << "the variant must be 2";
    EXPECT_FALSE(*random == *copy) << "two generated UUIDs must differ";
    std::swap(*random, *copy);
    ZrDestroyUUID(random);
  }
  for (ZRUUID* record : {nil, copy, static_cast<ZRUUID*>(nullptr)}) ZrDestroyUUID(record);
}

TEST(Uuid, OrdersLikeItsText) {
  std::mt19937 random(7);
  uint8_t equal = 9;
  for (int round = 0; round < 2000; ++round) {
    ZRUUID right = kValue;  // then differs in up to two bytes
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
  ExpectRejected({ZrCompareUUID(nullptr, &kValue, &equal), ZrCompareUUID(&kValue, &kValue, nullptr)});
}

// Parses a text in a buffer of exactly its size. Returns the record afterwards.
static ZRUUID ParsedUuid(const std::string& text) {
  const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
  ZRUUID uuid = kUnchanged;
  const ZRRESULT result = ZrUUIDFromString(exact.data(), &uuid);
  EXPECT_RESULT(result, uuid == kUnchanged || uuid == kNil ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK)
      << "\n  from ZrUUIDFromString of " << testing::PrintToString(text);
  return uuid;
}

TEST(Uuid, FormatsAndParsesText) {
  const std::string plain = "01234567-89AB-CDEF-0123-456789ABCDEF", cut = plain.substr(0, 35);
  ZRSTR written = nullptr;
  EXPECT_RESULT(ZrStringFromUUID(&kValue, &written), ZR_R_OK);
  EXPECT_EQ(ContentOf(Owned(written)), Widened("{" + plain + "}"));
  for (const char* prefix : {"", "{", "\"", "\"{"})
    EXPECT_EQ(ParsedUuid(prefix + plain + "}\" and more"), kValue) << "after the prefix " << prefix;
  EXPECT_EQ(ParsedUuid("01234567 89ab?cdef\3720123G456789abcdef"), kValue) << "separators may be any characters";
  EXPECT_EQ(ParsedUuid(cut), kUnchanged);
  EXPECT_EQ(ParsedUuid("\"" + cut), kNil) << "the last digit would be after the terminator";
  for (const char* prefix : {"{\"", "{{"})
    EXPECT_EQ(ParsedUuid(prefix + plain), kNil) << "only a quote, then a brace, may precede";
  for (int unit = 1; unit < 256; ++unit) {
    const char digit[] = {static_cast<char>(unit), 0};
    ZRUUID expected = kValue;
    expected.data4[7] = static_cast<uint8_t>(0xE0 + std::strtoul(digit, nullptr, 16));
    EXPECT_EQ(ParsedUuid(cut + digit), std::isxdigit(unit) ? expected : kNil) << "digit " << unit;
  }
  ExpectRejected({ZrStringFromUUID(&kValue, nullptr), ZrUUIDFromString(plain.c_str(), nullptr)});
}
