#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/variant_text.h"

// What is written, and a code.
using Answer = std::pair<char, ZRRESULT>;
static constexpr Answer kEqual{'=', ZR_R_OK}, kDiffer{'!', ZR_R_OK}, kUnwritten{'-', ZR_R_OK},
    kRefused{'-', ZR_R_INVALID_ARGUMENTS}, kUnsupported{'-', ZR_R_NOT_SUPPORTED};

static Answer Compared(const ZRVARIANT& left, const ZRVARIANT& right) {
  uint8_t equal = 9;
  const ZRRESULT result = ZrVariantCompare(&left, &right, &equal);
  return {equal == 1 ? '=' : equal == 0 ? '!' : '-', result};
}

TEST(VariantCompare, ValuesAndReferencesToThem) {
  const struct {
    const char *left, *right;
    Answer answer;
  } kRows[] = {
      // clang-format off
      {"I4 5", "I4 5", kEqual}, {"I4 5", "I4 6", kDiffer}, {"I4 5", "I8 5", kDiffer}, {"I4 5", "I4+1000 5", kDiffer},
      {"UI1 5", "BYTE 5", kDiffer}, {"BOOL 1", "BOOL 2", kDiffer}, {"I4+9000 5", "I4+9000 5", kEqual},
      {"OPAQUE 1", "OPAQUE 2", kDiffer}, {"UNKNOWN null", "DISPATCH null", kDiffer},
      {"UNKNOWN object", "UNKNOWN object", kUnsupported}, {"DISPATCH null", "DISPATCH null", kUnsupported},
      // Within an epsilon, absolute up to 1.0.
      {"R8 1", "R8 1.0000000000000002", kEqual}, {"R8 1", "R8 1.0000000000000004", kDiffer},
      {"R8 0", "R8 2.220446049250313e-16", kEqual}, {"R8 0", "R8 2.2204460492503135e-16", kDiffer},
      {"R8 1e20", "R8 100000000000000001000", kEqual}, {"R8 1e20", "R8 100000000000000050000", kDiffer},
      {"R8 -1e20", "R8 1e20", kDiffer}, {"R8 nan", "R8 nan", kDiffer}, {"R8 nan", "R8 inf", kDiffer},
      {"R8 inf", "R8 inf", kDiffer}, {"R8 inf", "R8 -inf", kEqual}, {"R8 inf", "R8 3", kEqual},
      {"R4 1", "R4 1.0000001", kEqual}, {"R4 1", "R4 1.0000003", kDiffer}, {"R4 1e10", "R4 10000001024", kEqual},
      {"R4 1e10", "R4 10000002048", kDiffer}, {"R4 inf", "R4 inf", kDiffer}, {"R4 nan", "R4 1", kDiffer},
      {"BLOB 0102", "BLOB 0102", kEqual}, {"BLOB 0102", "BLOB 0103", kDiffer}, {"BLOB 0102", "BLOB 010203", kDiffer},
      {"BLOB null", "BLOB 01", kRefused}, {"BLOB null", "BLOB null", kRefused},
      {"UUID {00000000-0000-0000-0000-000000000001}", "UUID {00000000-0000-0000-0000-000000000001}", kEqual},
      {"UUID {00000000-0000-0000-0000-000000000001}", "UUID {00000000-0000-0000-0000-000000000002}", kDiffer},
      {"UUID null", "UUID {00000000-0000-0000-0000-000000000000}", kRefused}, {"UUID null", "UUID null", kRefused},
      {"STR null", "STR ", kEqual}, {"STR null", "STR a", kDiffer}, {"STR a", "STR A", kDiffer},
      {"STR ab", "STR a", kDiffer}, {"STR ab", "STR ab", kEqual},
      {"REF null", "REF 0.0.0.0.0.0", kEqual}, {"REF null", "REF 0.0.0.0.0.1", kDiffer},
      {"REF 1.2.3.4.5.6", "REF 1.2.3.4.5.6", kEqual}, {"REF 2147483648.2.3.4.5.6", "REF 0.2.3.4.5.6", kDiffer},
      {"SREF null", "SREF text 0.0.0.0.0.0", kEqual}, {"SREF null", "SREF text x", kDiffer},
      {"SREF 1.2.3.4.5.6 text a", "SREF 1.2.3.4.5.6 text b", kEqual}, {"SREF text a", "SREF text a", kEqual},
      {"SREF text a", "SREF text b", kDiffer}, {"SREF text b", "SREF text a", kDiffer},
      {"SREF text -1.2.3.4.5.6", "SREF 4294967295.2.3.4.5.6", {'=', ZR_R_INVALID_ARGUMENTS}},
      {"SREF text name", "SREF 1.2.3.4.5.6", {'!', ZR_R_INVALID_ARGUMENTS}},
      // clang-format on
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.left) + " and " + row.right);
    OwnedVariant left = Value(row.left), right = Value(row.right);
    ZRVARIANT leftRef = ByRef(left), rightRef = ByRef(right);
    const Answer behind = left.Type == ZR_VT_OPAQUE ? kUnsupported : row.answer;
    EXPECT_EQ(Compared(left, right), row.answer);
    EXPECT_EQ(Compared(right, left), row.answer);
    EXPECT_EQ(Compared(leftRef, rightRef), behind);
    EXPECT_EQ(Compared(ByRef(ZR_VT_VARIANT, &leftRef), ByRef(ZR_VT_VARIANT, &rightRef)), behind);
    EXPECT_EQ(Compared(leftRef, right), kDiffer) << "a value and a reference differ by their words alone";
    if (left.Type != right.Type) continue;

    // By value, what surrounds a number counts; by reference the number alone, and nothing else at any time.
    const uint16_t tag = left.Type & ZR_VT_TYPEMASK;
    const bool isInteger = IsNumber(tag) && tag != ZR_VT_R4 && tag != ZR_VT_R8;
    for (uint16_t* marker : {&left.Reserved1, &left.Reserved2, &left.Reserved3}) {
      const uint16_t before = std::exchange(*marker, 0);
      EXPECT_EQ(Compared(left, right), isInteger ? kDiffer : row.answer);
      EXPECT_EQ(Compared(leftRef, rightRef), behind);
      *marker = before;
    }
  }
}

TEST(VariantCompare, EveryTag) {
  for (unsigned word = 0; word <= 60; ++word) {
    SCOPED_TRACE(word);
    const auto tag = static_cast<uint16_t>(word);
    const bool isBad = NameOf(tag) == nullptr, isReal = tag == ZR_VT_R4 || tag == ZR_VT_R8;
    std::vector<char> one(isBad ? 0 : NameOf(tag)->width), two = one;  // as long: the address sanitizer looks
    const ZRVARIANT leftRef = ByRef(tag, one.data()), rightRef = ByRef(tag, two.data()), null = ByRef(tag, nullptr);
    const bool isUnsupported = tag == ZR_VT_OPAQUE || tag == ZR_VT_UNKNOWN || tag == ZR_VT_DISPATCH;
    const Answer unwritten = isBad || tag == ZR_VT_EMPTY ? kRefused : isUnsupported ? kUnsupported : kUnwritten;
    EXPECT_EQ(Compared(leftRef, null), unwritten);
    EXPECT_EQ(Compared(null, rightRef), unwritten);
    EXPECT_EQ(Compared(null, null), unwritten);
    ZRVARIANT left = ZR_VARIANT_INIT, right = ZR_VARIANT_INIT;
    left.Type = right.Type = tag;
    if (isBad || tag == ZR_VT_VARIANT) {
      EXPECT_EQ(Compared(left, right), kRefused);
    }
    if (!IsNumber(tag) && tag != ZR_VT_EMPTY) continue;
    EXPECT_EQ(Compared(left, right), kEqual);
    right.Value.ui8 = uint64_t{1} << 63;  // behind what is narrow
    EXPECT_EQ(Compared(left, right), tag == ZR_VT_EMPTY || isReal ? kEqual : kDiffer);
    if (isUnsupported || tag == ZR_VT_EMPTY) continue;
    EXPECT_EQ(Compared(leftRef, rightRef), kEqual);
    two.back() = 1;
    EXPECT_EQ(Compared(leftRef, rightRef), isReal ? kEqual : kDiffer);
  }
  uint8_t equal = 9;
  const ZRVARIANT empty = ZR_VARIANT_INIT, array = ByRef(ZR_VT_I4 | ZR_VT_ARRAY, &equal),
                  noArray = ByRef(array.Type, nullptr);
  EXPECT_EQ(Compared(array, noArray), kUnwritten);
  EXPECT_EQ(Compared(noArray, array), kUnwritten);
  EXPECT_EQ(ZrVariantCompare(nullptr, &empty, &equal), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantCompare(&empty, nullptr, &equal), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantCompare(&empty, &empty, nullptr), ZR_R_INVALID_POINTER);
  EXPECT_EQ(equal, 9);
}
