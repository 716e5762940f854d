#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/support/variant_text.h"

// An answer and a code: "=" and "!" are written, "-" is not.
struct Answer {
  char equal;
  ZRRESULT result = ZR_R_OK;
};
static std::ostream& operator<<(std::ostream& out, const Answer& answer) {
  return out << answer.equal << " with " << std::hex << answer.result;
}
static bool operator==(const Answer& left, const Answer& right) {
  return left.equal == right.equal && left.result == right.result;
}

static Answer Compared(const ZRVARIANT& left, const ZRVARIANT& right) {
  uint8_t equal = 9;
  const ZRRESULT result = ZrVariantCompare(&left, &right, &equal);
  return {equal == 1 ? '=' : equal == 0 ? '!' : '-', result};
}

static constexpr Answer kRefused = {'-', ZR_R_INVALID_ARGUMENTS}, kUnsupported = {'-', ZR_R_NOT_SUPPORTED};

TEST(VariantCompare, ValuesAndReferencesToThem) {
  const struct {
    const char *left, *right;
    Answer answer;
  } kRows[] = {
      {"I4 5", "I4 5", {'='}},
      {"I4 5", "I4 6", {'!'}},
      {"I4 5", "I8 5", {'!'}},
      {"I4 5", "I4+1000 5", {'!'}},
      {"UI1 5", "BYTE 5", {'!'}},
      {"BOOL 1", "BOOL 2", {'!'}},
      {"I2 256", "I2 1", {'!'}},
      {"UI4 65536", "UI4 0", {'!'}},
      {"CHAR32 16777216", "CHAR32 0", {'!'}},
      {"QWORD 4294967296", "QWORD 0", {'!'}},
      {"TIME -1", "TIME -1", {'='}},
      {"I4+9000 5", "I4+9000 5", {'='}},
      // Within an epsilon, absolute up to 1.0.
      {"R8 1", "R8 1.0000000000000002", {'='}},
      {"R8 1", "R8 1.0000000000000004", {'!'}},
      {"R8 0", "R8 2.220446049250313e-16", {'='}},
      {"R8 0", "R8 2.2204460492503135e-16", {'!'}},
      {"R8 0", "R8 1e-20", {'='}},
      {"R8 1e20", "R8 100000000000000001000", {'='}},
      {"R8 1e20", "R8 100000000000000050000", {'!'}},
      {"R8 -1e20", "R8 1e20", {'!'}},
      {"R8 0", "R8 -0.0", {'='}},
      {"R8 nan", "R8 nan", {'!'}},
      {"R8 nan", "R8 inf", {'!'}},
      {"R8 inf", "R8 inf", {'!'}},
      {"R8 inf", "R8 -inf", {'='}},
      {"R8 inf", "R8 3", {'='}},
      {"R4 1", "R4 1.0000001", {'='}},
      {"R4 1", "R4 1.0000003", {'!'}},
      {"R4 1e10", "R4 10000001024", {'='}},
      {"R4 1e10", "R4 10000002048", {'!'}},
      {"R4 inf", "R4 inf", {'!'}},
      {"R4 nan", "R4 1", {'!'}},
      {"BLOB 0102", "BLOB 0102", {'='}},
      {"BLOB 0102", "BLOB 0103", {'!'}},
      {"BLOB 0102", "BLOB 010203", {'!'}},
      {"BLOB null", "BLOB 01", kRefused},
      {"BLOB null", "BLOB null", kRefused},
      {"UUID {00000000-0000-0000-0000-000000000001}", "UUID {00000000-0000-0000-0000-000000000001}", {'='}},
      {"UUID {00000000-0000-0000-0000-000000000001}", "UUID {00000000-0000-0000-0000-000000000002}", {'!'}},
      {"UUID {00000000-0000-0001-0000-000000000000}", "UUID {00000000-0000-0000-0000-000000000000}", {'!'}},
      {"UUID null", "UUID {00000000-0000-0000-0000-000000000000}", kRefused},
      {"UUID null", "UUID null", kRefused},
      {"STR null", "STR ", {'='}},
      {"STR null", "STR null", {'='}},
      {"STR null", "STR a", {'!'}},
      {"STR a", "STR A", {'!'}},
      {"STR ab", "STR a", {'!'}},
      {"STR ab", "STR ab", {'='}},
      {"REF null", "REF 0.0.0.0.0.0", {'='}},
      {"REF null", "REF null", {'='}},
      {"REF null", "REF 0.0.0.0.0.1", {'!'}},
      {"REF 1.2.3.4.5.6", "REF 1.2.3.4.5.6", {'='}},
      {"REF 2147483648.2.3.4.5.6", "REF 0.2.3.4.5.6", {'!'}},
      {"SREF null", "SREF text 0.0.0.0.0.0", {'='}},
      {"SREF null", "SREF text x", {'!'}},
      {"SREF 1.2.3.4.5.6 text a", "SREF 1.2.3.4.5.6 text b", {'='}},
      {"SREF text a", "SREF text a", {'='}},
      {"SREF text a", "SREF text b", {'!'}},
      {"SREF text  1.2.3.4.5.6", "SREF 1.2.3.4.5.6", {'='}},
      {"SREF text 1.2.3.4.5.7", "SREF 1.2.3.4.5.6", {'!'}},
      {"SREF text -1.2.3.4.5.6", "SREF 4294967295.2.3.4.5.6", {'=', ZR_R_INVALID_ARGUMENTS}},
      {"SREF text name", "SREF 1.2.3.4.5.6", {'!', ZR_R_INVALID_ARGUMENTS}},
      {"UNKNOWN object", "UNKNOWN object", kUnsupported},
      {"DISPATCH null", "DISPATCH null", kUnsupported},
      {"UNKNOWN null", "DISPATCH null", {'!'}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.left) + " and " + row.right);
    OwnedVariant left = Value(row.left), right = Value(row.right);
    ZRVARIANT leftRef = ByRef(left), rightRef = ByRef(right);
    const ZRVARIANT leftChain = ByRef(ZR_VT_VARIANT, &leftRef), rightChain = ByRef(ZR_VT_VARIANT, &rightRef);
    EXPECT_EQ(Compared(left, right), row.answer);
    EXPECT_EQ(Compared(right, left), row.answer);
    EXPECT_EQ(Compared(leftRef, rightRef), row.answer);
    EXPECT_EQ(Compared(leftChain, rightChain), row.answer);
    EXPECT_EQ(Compared(leftRef, right), Answer{'!'}) << "a value and a reference differ by their words alone";
    if (left.Type != right.Type) continue;

    // By value, what surrounds a number counts; by reference the number alone, and nothing else at any time.
    const uint16_t tag = left.Type & ZR_VT_TYPEMASK;
    const bool isReal = tag == ZR_VT_R4 || tag == ZR_VT_R8,
               isNumber = (tag < ZR_VT_BLOB && !isReal) || tag == ZR_VT_CHAR32;
    for (uint16_t* marker : {&left.Reserved1, &left.Reserved2, &left.Reserved3}) {
      const uint16_t before = std::exchange(*marker, 0);
      EXPECT_EQ(Compared(left, right), (isNumber ? Answer{'!'} : row.answer));
      EXPECT_EQ(Compared(leftRef, rightRef), row.answer);
      *marker = before;
    }
    const ZRVARIANT null = ByRef(left.Type, nullptr);
    const Answer unwritten = row.answer == kUnsupported ? kUnsupported : Answer{'-'};
    EXPECT_EQ(Compared(leftRef, null), unwritten);
    EXPECT_EQ(Compared(null, rightRef), unwritten);
    EXPECT_EQ(Compared(null, null), unwritten);
  }
}

TEST(VariantCompare, TagsAlone) {
  uint64_t behind = 0;
  for (unsigned tag = 0; tag <= 60; ++tag) {
    SCOPED_TRACE(tag);
    ZRVARIANT value = ZR_VARIANT_INIT, other = ZR_VARIANT_INIT;
    value.Type = other.Type = static_cast<uint16_t>(tag);
    other.Value.ui8 = tag == ZR_VT_OPAQUE ? 0 : uint64_t{7} << 32;  // behind what is narrow
    const ZRVARIANT reference = ByRef(value.Type, &behind), null = ByRef(value.Type, nullptr);
    const bool isBad = NameOf(tag) == nullptr;
    if (isBad || tag == ZR_VT_VARIANT) {
      EXPECT_EQ(Compared(value, other), kRefused);
    }
    if (isBad || tag == ZR_VT_EMPTY) {
      EXPECT_EQ(Compared(reference, reference), kRefused);
      EXPECT_EQ(Compared(null, reference), kRefused);
    }
    if (tag == ZR_VT_EMPTY || tag == ZR_VT_OPAQUE) {
      EXPECT_EQ(Compared(value, other), Answer{'='});
    }
    if (tag == ZR_VT_OPAQUE) {
      EXPECT_EQ(Compared(reference, reference), kUnsupported);
      EXPECT_EQ(Compared(reference, null), kUnsupported);
    }
    if (tag >= ZR_VT_BOOL && tag <= ZR_VT_UI8) {
      EXPECT_EQ(Compared(value, other), Answer{'!'});
      const bool isWide = tag == ZR_VT_I8 || tag == ZR_VT_UI8;
      EXPECT_EQ(Compared(ByRef(value), ByRef(other)), Answer{isWide ? '!' : '='});
    }
  }
  ZRVARIANT opaque = Value("OPAQUE 1"), empty = ZR_VARIANT_INIT;
  EXPECT_EQ(Compared(opaque, Value("OPAQUE 2")), Answer{'!'});
  for (const uint16_t word : std::initializer_list<uint16_t>{ZR_VT_VARIANT, ZR_VT_I4 | ZR_VT_ARRAY}) {
    const ZRVARIANT somewhere = ByRef(word, &empty), nowhere = ByRef(word, nullptr);
    EXPECT_EQ(Compared(somewhere, nowhere), Answer{'-'});
    EXPECT_EQ(Compared(nowhere, somewhere), Answer{'-'});
  }
  uint8_t equal = 9;
  EXPECT_EQ(ZrVariantCompare(nullptr, &empty, &equal), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantCompare(&empty, nullptr, &equal), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantCompare(&empty, &empty, nullptr), ZR_R_INVALID_POINTER);
  EXPECT_EQ(equal, 9);
}

// Unpaired widths: what lies behind a narrow number is another's.
TEST(VariantCompare, ReferencesReadNoMoreThanTheirWidth) {
  for (const TagName& row : kTagNames) {
    const bool isNumber = (row.tag >= ZR_VT_BOOL && row.tag < ZR_VT_BLOB) || row.tag == ZR_VT_CHAR32;
    if (!isNumber) continue;
    SCOPED_TRACE(row.name);
    auto* one = new char[row.width]();
    auto* two = new char[row.width]();  // exactly as long: the address sanitizer looks
    EXPECT_EQ(Compared(ByRef(row.tag, one), ByRef(row.tag, two)), Answer{'='});
    two[row.width - 1] = 1;
    if (row.tag != ZR_VT_R4 && row.tag != ZR_VT_R8) {
      EXPECT_EQ(Compared(ByRef(row.tag, one), ByRef(row.tag, two)), Answer{'!'});
    }
    OwnedVariant copy;
    const ZRVARIANT reference = ByRef(row.tag, two);
    EXPECT_EQ(ZrVariantCopyInd(&copy, &reference), ZR_R_OK);
    EXPECT_EQ(std::memcmp(&copy.Value, two, row.width), 0);
    EXPECT_EQ(row.width == 8 ? 0 : copy.Value.ui8 >> 8 * row.width, 0u);
    delete[] one;
    delete[] two;
  }
}
