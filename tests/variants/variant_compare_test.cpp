// Tests the comparison of variants with a table of pairs and their results. Each pair is compared by value, by
// reference and as elements of arrays.

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "tests/support/array_samples.h"

// The result of a comparison, and the byte that it writes: 9 if it writes none.
struct Comparison {
  uint8_t equal;
  Result result;
  bool operator==(const Comparison&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Comparison& comparison) {
    return out << (comparison.equal == 1   ? "equal"
                   : comparison.equal == 0 ? "different"
                                           : "unwritten")
               << ", " << comparison.result;
  }
};
static constexpr uint8_t kNoByte = 9;
static constexpr Comparison kEqual{1, ZR_R_OK}, kDiffer{0, ZR_R_OK}, kUnwritten{kNoByte, ZR_R_OK},
    kNotComparable{kNoByte, ZR_R_INVALID_ARGUMENTS}, kUnsupported{kNoByte, ZR_R_NOT_SUPPORTED};

static Comparison Compared(const ZRVARIANT& left, const ZRVARIANT& right) {
  Comparison comparison = kUnwritten;
  comparison.result = ZrVariantCompare(&left, &right, &comparison.equal);
  return comparison;
}

// Each row has the pairs with one result, which is the same by value and by reference. Reals are equal within an
// epsilon, which is absolute up to 1.0.
static constexpr std::pair<Comparison, const char*> kRows[] = {
    // clang-format off
    {kEqual, "I4 5 & I4 5|I4+9000 5 & I4+9000 5|R8 1 & R8 1.0000000000000002|R8 0 & R8 2.220446049250313e-16|"
             "R8 1e20 & R8 100000000000000001000|R8 inf & R8 -inf|R8 inf & R8 3|R4 1 & R4 1.0000001|"
             "R4 1e10 & R4 10000001024|BLOB 0102 & BLOB 0102|STR null & STR |STR ab & STR ab|"
             "UUID {00000000-0000-0000-0000-000000000001} & UUID {00000000-0000-0000-0000-000000000001}|"
             "REF null & REF 0.0.0.0.0.0|REF 1.2.3.4.5.6 & REF 1.2.3.4.5.6|SREF null & SREF text 0.0.0.0.0.0|"
             "SREF 1.2.3.4.5.6 text a & SREF 1.2.3.4.5.6 text b|SREF text a & SREF text a"},
    {kDiffer, "I4 5 & I8 5|I4 5 & I4+1000 5|BOOL 1 & BOOL 2|UNKNOWN null & DISPATCH null|R8 nan & R8 nan|"
              "R8 1 & R8 1.0000000000000004|R8 0 & R8 2.2204460492503135e-16|R8 1e20 & R8 100000000000000050000|"
              "R8 -1e20 & R8 1e20|R8 inf & R8 inf|R4 1 & R4 1.0000003|R4 nan & R4 1|R4 1e10 & R4 10000002048|"
              "BLOB 0102 & BLOB 0103|BLOB 0102 & BLOB 010203|STR null & STR a|STR a & STR A|SREF text a & SREF text b|"
              "UUID {00000000-0000-0000-0000-000000000001} & UUID {00000000-0000-0000-0000-000000000002}|"
              "REF null & REF 0.0.0.0.0.1|REF 2147483648.2.3.4.5.6 & REF 0.2.3.4.5.6|SREF null & SREF text x"},
    {kNotComparable, "BLOB null & BLOB 01|BLOB null & BLOB null|14 5 & 14 5|54 5 & 54 5|"
               "UUID null & UUID {00000000-0000-0000-0000-000000000001}"},
    {kUnsupported, "UNKNOWN object & UNKNOWN object|DISPATCH null & DISPATCH null|UNKNOWN object & UNKNOWN null"},
    {{1, ZR_R_INVALID_ARGUMENTS}, "SREF text -1.2.3.4.5.6 & SREF 4294967295.2.3.4.5.6"},
    {{0, ZR_R_INVALID_ARGUMENTS}, "SREF text name & SREF 1.2.3.4.5.6"},
    // clang-format on
};

static void CheckPair(const std::string& pair, const Comparison& expected) {
  SCOPED_TRACE(pair);
  OwnedVariant left = Value(pair.substr(0, pair.find(" & "))), right = Value(pair.substr(pair.find(" & ") + 3));
  ZRVARIANT leftRef = ByRef(left), rightRef = ByRef(right);
  EXPECT_EQ(Compared(left, right), expected);
  EXPECT_EQ(Compared(right, left), expected);
  EXPECT_EQ(Compared(leftRef, rightRef), expected);
  EXPECT_EQ(Compared(ByRef(ZR_VT_VARIANT, &leftRef), ByRef(ZR_VT_VARIANT, &rightRef)), expected);
  EXPECT_EQ(Compared(leftRef, right), kDiffer) << "a value and a reference must differ by their tag words";
  if (left.Type != right.Type) return;
  const ZRVARIANT null = ByRef(left.Type, nullptr);
  const uint16_t tag = left.Type & ZR_VT_TYPEMASK;
  const Comparison unwritten = expected == kUnsupported ? expected
                               : NameOf(tag) == nullptr ? kNotComparable
                                                        : kUnwritten;
  EXPECT_EQ(Compared(leftRef, null), unwritten);
  EXPECT_EQ(Compared(null, rightRef), unwritten);

  // By value, the marker words and the bits above a narrow number count; by reference, only the number. For other types
  // neither ever counts.
  const bool isInteger = IsNumber(tag) && !IsReal(tag);
  for (uint16_t* marker : {&left.Reserved1, &left.Reserved2, &left.Reserved3}) {
    const uint16_t before = std::exchange(*marker, 0);
    EXPECT_EQ(Compared(left, right), isInteger ? kDiffer : expected);
    EXPECT_EQ(Compared(leftRef, rightRef), expected);
    *marker = before;
  }
  const uint64_t lastBit = isInteger ? uint64_t{1} << 63 : 0;  // above a narrow number
  left.Value.ui8 ^= lastBit;
  EXPECT_EQ(Compared(left, right), isInteger ? kDiffer : expected);
  EXPECT_EQ(Compared(leftRef, rightRef), isInteger && NameOf(tag)->width == 8 ? kDiffer : expected);
  left.Value.ui8 ^= lastBit;

  // As elements, reals are compared by their bytes and objects by their addresses.
  if (NameOf(tag) == nullptr) return;
  const bool areSame = Describe(left) == Describe(right);
  const bool isByBytes = IsReal(tag) || expected == kUnsupported;
  uint8_t equal = 9;
  EXPECT_RESULT(ZrSafeArrayCompare(ArrayOf(tag, &left, 1).get(), ArrayOf(tag, &right, 1).get(), &equal), ZR_R_OK);
  EXPECT_EQ(equal, isByBytes ? areSame : expected == kEqual) << "as elements of arrays";
}

TEST(VariantCompare, ComparesValuesAndReferences) {
  for (const auto& [expected, pairs] : kRows) {
    for (const std::string& pair : Split(pairs)) CheckPair(pair, expected);
  }
  for (const TagName& row : kTagNames) {
    if (!IsNumber(row.tag) || row.tag == ZR_VT_OPAQUE) continue;
    CheckPair(Format("%s 5 & %s 5", row.name, row.name), kEqual);
    const unsigned long long last = 1ull << (8 * row.width - 8);  // in the last byte
    CheckPair(Format("%s 0 & %s %llu", row.name, row.name, last), kDiffer);
  }
  // The result by reference differs from the result by value.
  uint64_t word = 5;
  for (const auto& [text, byValue, byRef] :
       {std::tuple("EMPTY 5", kEqual, kNotComparable), std::tuple("OPAQUE 5", kEqual, kUnsupported),
        std::tuple("VARIANT 5", kNotComparable, kUnwritten)}) {
    const OwnedVariant variant = Value(text);
    EXPECT_EQ(Compared(variant, Value(text)), byValue) << text;
    EXPECT_EQ(Compared(ByRef(variant.Type, &word), ByRef(variant.Type, nullptr)), byRef) << text;
    EXPECT_EQ(Compared(ByRef(variant.Type, nullptr), ByRef(variant.Type, &word)), byRef) << text;
  }
}
