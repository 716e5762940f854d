#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/text.h"

static const ZRUUID kValue = {0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}}, kNil = {},
                    kUnchanged = {7, 0, 0, {}};

TEST(Uuid, HeapRecords) {
  ZRUUID *nil = ZrCreateUUID(), *copy = nullptr;
  EXPECT_EQ(*nil, kNil);
  EXPECT_EQ(ZrCopyUUID(&kValue, &copy), ZR_R_OK);
  EXPECT_EQ(*copy, kValue);
  ExpectRefused({ZrCopyUUID(nullptr, &copy), ZrCopyUUID(&kValue, nullptr)});
  for (ZRUUID* record : {nil, copy, static_cast<ZRUUID*>(nullptr)}) ZrDestroyUUID(record);

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
  uint8_t equal = 9;
  for (int round = 0; round < 2000; ++round) {
    // Values that differ in one byte anywhere, or in all.
    ZRUUID right = kValue;
    for (int byte = 0; byte < (round % 2 ? 1 : 16); ++byte) {
      reinterpret_cast<unsigned char*>(&right)[random() % 16] = static_cast<unsigned char>(random());
    }
    const std::string leftText = testing::PrintToString(kValue), rightText = testing::PrintToString(right);
    SCOPED_TRACE(rightText);
    EXPECT_EQ(ZRUUIDLess(&kValue, &right), leftText < rightText);
    EXPECT_EQ(ZRUUIDGreater(&kValue, &right), leftText > rightText);
    EXPECT_EQ(ZrCompareUUID(&kValue, &right, &equal), ZR_R_OK);
    EXPECT_EQ(equal, leftText == rightText);
  }
  EXPECT_FALSE(ZRUUIDLess(nullptr, &kValue) || ZRUUIDLess(&kValue, nullptr) || ZRUUIDGreater(nullptr, &kValue) ||
               ZRUUIDGreater(&kValue, nullptr));
  ExpectRefused({ZrCompareUUID(nullptr, &kValue, &equal), ZrCompareUUID(&kValue, nullptr, &equal),
                 ZrCompareUUID(&kValue, &kValue, nullptr), ZrStringFromUUID(&kValue, nullptr)});
}

// What a record holds after reading the text, with nothing behind it to read.
static ZRUUID Read(const std::string& text) {
  const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
  ZRUUID uuid = kUnchanged;
  const ZRRESULT result = ZrUUIDFromString(exact.data(), &uuid);
  EXPECT_EQ(result, uuid == kUnchanged || uuid == kNil ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK) << text;
  return uuid;
}

TEST(Uuid, WritesAndReadsText) {
  const std::string plain = "01234567-89AB-CDEF-0123-456789ABCDEF", cut = plain.substr(0, 35),
                    cutMore = plain.substr(0, 34);
  ZRSTR written = nullptr;
  EXPECT_EQ(ZrStringFromUUID(&kValue, &written), ZR_R_OK);
  EXPECT_EQ(ContentOf(Owned(written)), Widened("{" + plain + "}"));
  for (const char* front : {"", "{", "\"", "\"{"}) EXPECT_EQ(Read(front + plain + "}\" and more"), kValue);
  EXPECT_EQ(Read("01234567 89ab?cdef\xFA"
                 "0123G456789abcdef"),
            kValue)
      << "separators may be anything";
  EXPECT_EQ(Read(cut), kUnchanged);
  EXPECT_EQ(Read("\"" + cut), kNil);
  EXPECT_EQ(Read("\"{" + cutMore), kNil) << "the last digit's place lies behind the terminator";
  for (const char* front : {"{\"", "{{"}) EXPECT_EQ(Read(front + plain), kNil) << "only the other order";
  EXPECT_EQ(Read("G1234567-89AB-CDEF-0123-456789ABCDEF"), kNil);
  for (int unit = 1; unit < 256; ++unit) {
    const char digit[] = {static_cast<char>(unit), 0};
    ZRUUID expected = kValue;
    expected.data4[7] = static_cast<uint8_t>(0xE0 + std::strtoul(digit, nullptr, 16));
    EXPECT_EQ(Read(cut + digit), std::isxdigit(unit) ? expected : kNil);
  }
  ZRUUID uuid;
  ExpectRefused({ZrUUIDFromString(nullptr, &uuid), ZrUUIDFromString(plain.c_str(), nullptr)});
}
