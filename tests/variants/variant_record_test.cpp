// Tests copying, clearing and the emptiness of variants, for sample values of every type and for every unassigned tag.
// Counts of references show that each copy owns its value.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/variant_text.h"

// The references to the shared string and to the object.
static uint32_t ReferenceCount() { return ZrStringRefCount(g_shared) + g_object.references; }

static constexpr ZRVARIANT kZero{};
static bool IsZero(const ZRVARIANT& variant) { return std::memcmp(&variant, &kZero, sizeof kZero) == 0; }

static void CheckCopiesAndClear(const std::string& text) {
  SCOPED_TRACE(text);
  static const std::vector<std::string> kEmpty = Split(
      "BLOB null|BLOB |UUID null|UUID {00000000-0000-0000-0000-000000000000}|STR null|STR |REF null|REF 0.0.0.0.0.0|"
      "SREF null|SREF neither|SREF text |SREF 0.0.0.0.0.0|SREF 0.0.0.0.0.0 text name");
  OwnedVariant source = Value(text);
  const bool isNumber = IsNumber(source.Type);
  const std::string copied = text == "STR null" ? "STR " : text == "SREF neither" ? "SREF null" : Describe(source);
  source.Reserved1 = 5;  // copies of numbers keep it, and also the bits above a narrow number
  if (isNumber && NameOf(source.Type)->width < 8) source.Value.ui8 |= uint64_t{7} << 60;
  ZRVARIANT reference = ByRef(source), link = ByRef(ZR_VT_VARIANT, &reference);
  const ZRVARIANT toRecord = ByRef(ZR_VT_VARIANT, &source), toLink = ByRef(ZR_VT_VARIANT | 0x9000, &link);
  for (const ZRVARIANT* way : std::initializer_list<const ZRVARIANT*>{&source, &reference, &toRecord, &toLink}) {
    EXPECT_EQ(ZrVariantIsContentEmpty(way), std::count(kEmpty.begin(), kEmpty.end(), text)) << Describe(*way);
  }
  const uint32_t owners = ReferenceCount();
  const bool isCounted = text.find("common") != std::string::npos || text.find("object") != std::string::npos;
  const std::string whole = IsOwned(source.Type) ? copied : Describe(source);
  // A reference to a number reaches only the number. A reference to a ZR_VT_VARIANT reaches the whole record.
  const std::string referenced = isNumber ? copied : whole;
  const struct {
    const char* name;
    ZRRESULT (*copy)(ZRVARIANT*, const ZRVARIANT*);
    const ZRVARIANT* from;
    std::string expected;
  } kCopies[] = {{"ZrVariantCopy", ZrVariantCopy, &source, whole},
                 {"ZrVariantCopyInd", ZrVariantCopyInd, &source, whole},
                 {"ZrVariantCopyInd", ZrVariantCopyInd, &toRecord, whole},
                 {"ZrVariantCopyInd", ZrVariantCopyInd, &reference, referenced},
                 {"ZrVariantCopyInd", ZrVariantCopyInd, &toLink, referenced},
                 {"ZrVariantCopy", ZrVariantCopy, &reference, Describe(reference)}};
  for (const auto& [name, copy, from, expected] : kCopies) {
    SCOPED_TRACE(name + (" of " + testing::PrintToString(Describe(*from))));
    OwnedVariant destination = Before();
    EXPECT_RESULT(copy(&destination, from), ZR_R_OK);
    EXPECT_EQ(Describe(destination), expected);
    EXPECT_EQ(ZrStringRefCount(g_before), 1u);
    const bool isOwner = isCounted && (destination.Type & ZR_VT_BYREF) == 0;
    EXPECT_EQ(ReferenceCount(), owners + (isOwner ? 1 : 0));
    EXPECT_RESULT(ZrVariantClear(&destination), ZR_R_OK);
    EXPECT_TRUE(IsZero(destination)) << Describe(destination);
    EXPECT_EQ(ReferenceCount(), owners);
  }
  // If both arguments are one record, it is released first and the copy is empty.
  EXPECT_RESULT(ZrVariantCopyInd(&reference, &reference), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrVariantCopy(&source, &source), ZR_R_OK);
  EXPECT_EQ(Describe(reference) + Describe(source), "EMPTYEMPTY");
  EXPECT_EQ(ReferenceCount(), owners - (isCounted ? 1 : 0));
}

TEST(VariantRecord, CopiesAndClearsEveryValue) {
  CheckCopiesAndClear("UUID null");
  for (const TagName& row : kTagNames) {
    if (row.tag == ZR_VT_EMPTY) continue;
    for (const std::string& payload : TextsOf(row.tag)) CheckCopiesAndClear(row.name + (" " + payload));
  }
}

// The payload of a record with an unassigned tag must never be read.
TEST(VariantRecord, RejectsEveryUnassignedTag) {
  const OwnedVariant number = Value("I4 7");
  for (unsigned tag = 0; tag <= 70; ++tag) {
    if (NameOf(tag) != nullptr && tag != 0) continue;
    for (const unsigned bits : {0u, 0x9000u, 0x4000u, 0xD000u}) {
      const std::string text = Format("%u+%04x 2147221520", tag == 70 ? 0xFFF : tag, bits);
      SCOPED_TRACE(text);
      OwnedVariant source = Value(text), destination = Value(text), copy = Before();
      const bool isByRef = (bits & ZR_VT_BYREF) != 0, isEmpty = source.Type == ZR_VT_EMPTY;
      const std::string whole = Describe(source), alone = whole.substr(0, whole.find(' '));
      const ZRVARIANT reference = ByRef(ZR_VT_VARIANT, &source);
      EXPECT_EQ(ZrVariantIsContentEmpty(&source), 1);
      EXPECT_EQ(ZrVariantIsContentEmpty(&reference), 1);
      EXPECT_RESULT(ZrVariantCopy(&copy, &source), tag != 0 ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
      EXPECT_EQ(Describe(copy), alone);
      EXPECT_RESULT(ZrVariantCopyInd(&copy, &reference), tag != 0 || isByRef ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
      EXPECT_EQ(Describe(copy), isByRef ? alone.substr(0, alone.find('+')) : alone);
      EXPECT_RESULT(ZrVariantClear(&source), isEmpty ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS);
      EXPECT_TRUE(isEmpty ? Describe(source) == whole : IsZero(source))
          << Describe(source) << ": ZrVariantClear must leave an empty record unchanged and clear every other one";
      EXPECT_RESULT(ZrVariantCopy(&destination, &number), ZR_R_OK) << "the old tag must not matter";
      EXPECT_EQ(Describe(destination), "I4 7");
    }
  }
}

// Checks the value that a null address is copied as.
static void CheckNullAddress(const std::string& value, bool isEmpty) {
  SCOPED_TRACE("a null address, copied as " + value);
  const ZRVARIANT null = ByRef(Value(value).Type, nullptr);
  OwnedVariant destination = Before();
  EXPECT_RESULT(ZrVariantCopyInd(&destination, &null), ZR_R_OK);
  EXPECT_EQ(Describe(destination), value);
  EXPECT_EQ(ZrVariantIsContentEmpty(&null), isEmpty);
}

TEST(VariantRecord, CopyIndFollowsAddresses) {
  const char* emptyValues =
      "BLOB null|UUID {00000000-0000-0000-0000-000000000000}|STR |REF 0.0.0.0.0.0|SREF neither|VARIANT 0";
  for (const std::string& value : Split(emptyValues)) CheckNullAddress(value, true);
  CheckNullAddress("UNKNOWN null", false);
  CheckNullAddress("DISPATCH null", false);
  for (const TagName& row : kTagNames) {
    if (IsNumber(row.tag)) CheckNullAddress(row.name + std::string(" 0"), false);
  }

  // The address of an array is copied like any other. A reference to the destination itself is read after the
  // destination was released.
  OwnedVariant end = Value("STR text"), copy;
  const ZRVARIANT source = ByRef(ZR_VT_VARIANT, &end), array = ByRef(ZR_VT_STR | ZR_VT_ARRAY, &end);
  EXPECT_RESULT(ZrVariantCopy(&copy, &array), ZR_R_OK);
  EXPECT_EQ(Describe(copy), Describe(array));
  EXPECT_RESULT(ZrVariantCopyInd(&end, &source), ZR_R_OK);
  EXPECT_EQ(Describe(end), "EMPTY");
}

TEST(VariantRecord, InitIgnoresTheOldValueAndNullIsRejected) {
  OwnedVariant held = Value("STR text");
  ZRVARIANT variant = held;
  EXPECT_RESULT(ZrVariantInit(&variant), ZR_R_OK);
  EXPECT_EQ(Describe(variant), "EMPTY");
  uint8_t equal = 9;
  ExpectEach(ZR_R_INVALID_POINTER,
             {ZrVariantInit(nullptr), ZrVariantClear(nullptr), ZrVariantCopy(nullptr, &held),
              ZrVariantCopy(&held, nullptr), ZrVariantCopyInd(nullptr, &held), ZrVariantCopyInd(&held, nullptr),
              ZrVariantChangeType(&held, nullptr, 0, ZR_VT_STR), ZrVariantChangeType(nullptr, &held, 0, ZR_VT_STR),
              ZrVariantCompare(nullptr, &held, &equal), ZrVariantCompare(&held, nullptr, &equal),
              ZrVariantCompare(&held, &held, nullptr)});
  EXPECT_EQ(equal, 9);
  EXPECT_EQ(Describe(held), "STR text");
  EXPECT_EQ(ZrVariantIsContentEmpty(nullptr), 0);
}
