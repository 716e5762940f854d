#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/variant_text.h"

// Whoever holds what can be counted.
static uint32_t Owners() { return ZrStringRefCount(g_shared) + g_object.references; }

static constexpr ZRVARIANT kZero{};
static bool IsZero(const ZRVARIANT& variant) { return std::memcmp(&variant, &kZero, sizeof kZero) == 0; }

static void CheckLife(const std::string& text) {
  SCOPED_TRACE(text);
  static const std::vector<std::string> kEmpty = Split(
      "BLOB null|BLOB |UUID null|UUID {00000000-0000-0000-0000-000000000000}|STR null|STR |REF null|REF 0.0.0.0.0.0|"
      "SREF null|SREF neither|SREF text |SREF 0.0.0.0.0.0|SREF 0.0.0.0.0.0 text name");
  OwnedVariant source = Value(text);
  const bool isNumber = IsNumber(source.Type);
  const std::string copied = text == "STR null" ? "STR " : text == "SREF neither" ? "SREF null" : Describe(source);
  source.Reserved1 = 5;  // travels with numbers, not with what is owned, and so does what stands behind a narrow one
  if (isNumber && NameOf(source.Type)->width < 8) source.Value.ui8 |= uint64_t{7} << 60;
  ZRVARIANT reference = ByRef(source), link = ByRef(ZR_VT_VARIANT, &reference);
  const ZRVARIANT toRecord = ByRef(ZR_VT_VARIANT, &source), toLink = ByRef(ZR_VT_VARIANT | 0x9000, &link);
  for (const ZRVARIANT* way : std::initializer_list<const ZRVARIANT*>{&source, &reference, &toRecord, &toLink}) {
    EXPECT_EQ(ZrVariantIsContentEmpty(way), std::count(kEmpty.begin(), kEmpty.end(), text)) << Describe(*way);
  }
  const uint32_t owners = Owners();
  const bool isCounted = text.find("common") != std::string::npos || text.find("object") != std::string::npos;
  const std::string whole = IsOwned(source.Type) ? copied : Describe(source);
  const std::string behind = isNumber ? copied : whole;  // of a variant by value, the address is that of its record
  const struct {
    const char* name;
    ZRRESULT (*copy)(ZRVARIANT*, const ZRVARIANT*);
    const ZRVARIANT* from;
    std::string left;
  } kCopies[] = {{"ZrVariantCopy", ZrVariantCopy, &source, whole},
                 {"ZrVariantCopyInd", ZrVariantCopyInd, &source, whole},
                 {"ZrVariantCopyInd", ZrVariantCopyInd, &toRecord, whole},
                 {"ZrVariantCopyInd", ZrVariantCopyInd, &reference, behind},
                 {"ZrVariantCopyInd", ZrVariantCopyInd, &toLink, behind},
                 {"ZrVariantCopy", ZrVariantCopy, &reference, Describe(reference)}};
  for (const auto& [name, copy, from, left] : kCopies) {
    SCOPED_TRACE(name + (" of " + testing::PrintToString(Describe(*from))));
    OwnedVariant destination = Before();
    EXPECT_RESULT(copy(&destination, from), ZR_R_OK);
    EXPECT_EQ(Describe(destination), left);
    EXPECT_EQ(ZrStringRefCount(g_before), 1u);
    const bool isOwner = isCounted && (destination.Type & ZR_VT_BYREF) == 0;
    EXPECT_EQ(Owners(), owners + (isOwner ? 1 : 0));
    EXPECT_RESULT(ZrVariantClear(&destination), ZR_R_OK);
    EXPECT_TRUE(IsZero(destination)) << Describe(destination);
    EXPECT_EQ(Owners(), owners);
  }
  // One record as both arguments is released first, and then there is nothing to copy.
  EXPECT_RESULT(ZrVariantCopyInd(&reference, &reference), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrVariantCopy(&source, &source), ZR_R_OK);
  EXPECT_EQ(Describe(reference) + Describe(source), "EMPTYEMPTY");
  EXPECT_EQ(Owners(), owners - (isCounted ? 1 : 0));
}

TEST(VariantRecord, LifeOfEveryValue) {
  CheckLife("UUID null");
  for (const TagName& row : kTagNames) {
    if (row.tag == ZR_VT_EMPTY) continue;
    for (const std::string& payload : TextsOf(row.tag)) CheckLife(row.name + (" " + payload));
  }
}

// What they seem to hold is never looked at.
TEST(VariantRecord, EveryBadTagWord) {
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
          << Describe(source) << ": an empty record is left as it is";
      EXPECT_RESULT(ZrVariantCopy(&destination, &number), ZR_R_OK) << "a bad destination reports nothing";
      EXPECT_EQ(Describe(destination), "I4 7");
    }
  }
}

// What a null address reads as.
static void CheckNothing(const std::string& nothing, bool isEmpty) {
  SCOPED_TRACE("a null address that reads as " + nothing);
  const ZRVARIANT null = ByRef(Value(nothing).Type, nullptr);
  OwnedVariant destination = Before();
  EXPECT_RESULT(ZrVariantCopyInd(&destination, &null), ZR_R_OK);
  EXPECT_EQ(Describe(destination), nothing);
  EXPECT_EQ(ZrVariantIsContentEmpty(&null), isEmpty);
}

TEST(VariantRecord, ThroughAddresses) {
  const char* nothings =
      "BLOB null|UUID {00000000-0000-0000-0000-000000000000}|STR |REF 0.0.0.0.0.0|SREF neither|VARIANT 0";
  for (const std::string& nothing : Split(nothings)) CheckNothing(nothing, true);
  CheckNothing("UNKNOWN null", false);
  CheckNothing("DISPATCH null", false);
  for (const TagName& row : kTagNames) {
    if (IsNumber(row.tag)) CheckNothing(row.name + std::string(" 0"), false);
  }

  // The address of an array is copied like any other, and a reference to the destination itself finds it released.
  OwnedVariant end = Value("STR text"), copy;
  const ZRVARIANT source = ByRef(ZR_VT_VARIANT, &end), array = ByRef(ZR_VT_STR | ZR_VT_ARRAY, &end);
  EXPECT_RESULT(ZrVariantCopy(&copy, &array), ZR_R_OK);
  EXPECT_EQ(Describe(copy), Describe(array));
  EXPECT_RESULT(ZrVariantCopyInd(&end, &source), ZR_R_OK);
  EXPECT_EQ(Describe(end), "EMPTY");
}

TEST(VariantRecord, InitLooksAtNothingAndNullIsRefused) {
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
