#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/variant_text.h"

// Whoever holds what this record holds, as far as it can be counted.
static uint32_t Owners(const ZRVARIANT& variant) {
  const bool isObject = variant.Type == ZR_VT_UNKNOWN || variant.Type == ZR_VT_DISPATCH;
  if (isObject && variant.Value.address != nullptr) return g_object.references;
  if (variant.Type == ZR_VT_SREF && variant.Value.sref != nullptr) return ZrStringRefCount(variant.Value.sref->text);
  return variant.Type == ZR_VT_STR ? ZrStringRefCount(variant.Value.string) : 0;
}

static bool IsZero(const ZRVARIANT& variant) {
  static constexpr ZRVARIANT kZero{};
  return std::memcmp(&variant, &kZero, sizeof kZero) == 0;
}

static void CheckLife(const std::string& value, bool isEmpty) {
  SCOPED_TRACE(value);
  OwnedVariant source = Value(value);
  source.Reserved1 = 5;  // travels with numbers, not with what is owned
  ZRVARIANT reference = ByRef(source), link = ByRef(ZR_VT_VARIANT, &reference);
  const ZRVARIANT toRecord = ByRef(ZR_VT_VARIANT, &source), toLink = ByRef(ZR_VT_VARIANT | 0x9000, &link);
  for (const ZRVARIANT* way : std::initializer_list<const ZRVARIANT*>{&source, &reference, &toRecord, &toLink}) {
    EXPECT_EQ(ZrVariantIsContentEmpty(way), isEmpty);
  }
  const uint32_t owners = Owners(source);
  const std::string copied = value == "STR null" ? "STR " : value == "SREF neither" ? "SREF null" : value;
  const std::string marked = copied + (IsNumber(source.Type) ? " ~" : "");
  const struct {
    ZRRESULT (*copy)(ZRVARIANT*, const ZRVARIANT*);
    const ZRVARIANT* from;
    std::string left;
    bool isOwner = true;
  } kCopies[] = {{ZrVariantCopy, &source, marked},      {ZrVariantCopyInd, &source, marked},
                 {ZrVariantCopyInd, &toRecord, marked}, {ZrVariantCopyInd, &reference, copied},
                 {ZrVariantCopyInd, &toLink, copied},   {ZrVariantCopy, &reference, Describe(reference), false}};
  for (const auto& row : kCopies) {
    OwnedVariant destination = Before();
    EXPECT_EQ(row.copy(&destination, row.from), ZR_R_OK);
    EXPECT_EQ(Describe(destination), row.left);
    EXPECT_EQ(ZrStringRefCount(g_before), 1u);
    EXPECT_EQ(Owners(source), owners + (owners != 0 && row.isOwner ? 1 : 0));
    EXPECT_EQ(ZrVariantClear(&destination), ZR_R_OK);
    EXPECT_TRUE(IsZero(destination));
    EXPECT_EQ(Owners(source), owners);
  }
  // One record as both arguments is released first, and then there is nothing to copy.
  EXPECT_EQ(ZrVariantCopyInd(&reference, &reference), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrVariantCopy(&source, &source), ZR_R_OK);
  EXPECT_EQ(Describe(reference) + Describe(source), "EMPTYEMPTY");
}

TEST(VariantRecord, LifeOfEveryValue) {
  const uint32_t objects = g_object.references;
  for (const TagName& row : kTagNames) {
    if (IsNumber(row.tag)) CheckLife(row.name + std::string(" 7"), false);
  }
  for (const std::string& value :
       Split("I4 0|R8 0|UNKNOWN null|UNKNOWN object|DISPATCH null|DISPATCH object|BLOB 0102|"
             "UUID {00000000-0000-0000-0000-000000000001}|UUID {00000001-0000-0000-0000-000000000000}|STR text|"
             "REF 0.0.0.0.0.1|REF 1.0.0.0.0.0|SREF text 0.0.0.0.0.0|SREF 0.0.0.0.0.1 text name|SREF 1.2.3.4.5.6")) {
    CheckLife(value, false);
  }
  for (const std::string& value :
       Split("BLOB null|BLOB |UUID null|UUID {00000000-0000-0000-0000-000000000000}|STR null|STR |REF null|"
             "REF 0.0.0.0.0.0|SREF null|SREF neither|SREF text |SREF 0.0.0.0.0.0|SREF 0.0.0.0.0.0 text name")) {
    CheckLife(value, true);
  }
  EXPECT_EQ(g_object.references, objects);
}

TEST(VariantRecord, EveryTagWord) {
  const OwnedVariant number = Value("I4 7");
  for (unsigned tag = 0; tag <= 70; ++tag) {
    for (const unsigned bits : {0u, 0x9000u, 0x4000u, 0xD000u}) {
      const bool isByRef = (bits & ZR_VT_BYREF) != 0, isBad = NameOf(tag) == nullptr || tag == 0;
      const char* value = isBad || isByRef ? "2147221520" : tag == ZR_VT_STR ? "" : "null";
      const std::string text = Format("%u+%04x %s", tag == 70 ? 0xFFF : tag, bits, value);
      SCOPED_TRACE(text);
      OwnedVariant source = Value(text), destination = Value(text), copy = Before();
      const std::string whole = Describe(source), alone = whole.substr(0, whole.find(' '));
      EXPECT_EQ(ZrVariantCopy(&copy, &source), isBad && tag != 0 ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
      EXPECT_EQ(Describe(copy), isBad ? alone : whole);
      if (isBad) {
        EXPECT_EQ(ZrVariantIsContentEmpty(&source), 1);
      }
      const ZRVARIANT reference = ByRef(ZR_VT_VARIANT, &source);
      if (isBad && (tag != 0 || isByRef)) {
        EXPECT_EQ(ZrVariantIsContentEmpty(&reference), 1);
        EXPECT_EQ(ZrVariantCopyInd(&copy, &reference), ZR_R_INVALID_ARGUMENTS);
        EXPECT_EQ(Describe(copy), isByRef ? alone.substr(0, alone.find('+')) : alone);
      }
      // What a bad record seems to hold is never released, and the record is zero all the same.
      const uint16_t word = source.Type;
      EXPECT_EQ(ZrVariantClear(&source), isBad && word != 0 ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
      EXPECT_TRUE(word == 0 ? Describe(source) == whole : IsZero(source)) << "an empty record is left as it is";
      EXPECT_EQ(ZrVariantCopy(&destination, &number), ZR_R_OK) << "a bad destination reports nothing";
      EXPECT_EQ(Describe(destination), "I4 7");
    }
  }
}

TEST(VariantRecord, ThroughAddresses) {
  for (const TagName& row : kTagNames) {
    const uint16_t tag = row.tag;
    if (tag == ZR_VT_EMPTY) continue;
    SCOPED_TRACE(row.name);
    const ZRVARIANT nothing = ByRef(tag, nullptr);
    const bool isPointer = tag == ZR_VT_BLOB || tag == ZR_VT_VARIANT || (tag >= ZR_VT_UUID && tag != ZR_VT_DISPATCH);
    EXPECT_EQ(ZrVariantIsContentEmpty(&nothing), isPointer) << "a number is content, wherever it is";
    OwnedVariant destination = Before();
    EXPECT_EQ(ZrVariantCopyInd(&destination, &nothing), ZR_R_OK);
    const char* rest = tag == ZR_VT_UUID   ? " {00000000-0000-0000-0000-000000000000}"
                       : tag == ZR_VT_STR  ? " "
                       : tag == ZR_VT_REF  ? " 0.0.0.0.0.0"
                       : tag == ZR_VT_SREF ? " neither"
                       : tag == ZR_VT_BLOB || tag == ZR_VT_UNKNOWN || tag == ZR_VT_DISPATCH ? " null"
                                                                                            : " 0";
    EXPECT_EQ(Describe(destination), row.name + std::string(rest));
    EXPECT_EQ(ZrStringRefCount(g_before), 1u);
    if (!IsNumber(tag)) continue;
    std::vector<char> bytes(row.width, 7);  // exactly as long: the address sanitizer looks
    const ZRVARIANT reference = ByRef(tag, bytes.data());
    EXPECT_EQ(ZrVariantCopyInd(&destination, &reference), ZR_R_OK);
    EXPECT_EQ(destination.Value.ui8, 0x0707070707070707 >> (64 - 8 * row.width));
  }

  // A variant by value is only carried along.
  OwnedVariant end = Value("VARIANT 9"), copy;
  const ZRVARIANT source = ByRef(ZR_VT_VARIANT, &end), array = ByRef(ZR_VT_STR | ZR_VT_ARRAY, &end);
  EXPECT_EQ(ZrVariantIsContentEmpty(&source), 0);
  EXPECT_EQ(ZrVariantCopyInd(&copy, &source), ZR_R_OK);
  EXPECT_EQ(Describe(copy), "VARIANT 9");
  // The address of an array is copied like any other.
  EXPECT_EQ(ZrVariantCopy(&copy, &array), ZR_R_OK);
  EXPECT_EQ(Describe(copy), Describe(array));
  // A reference to the destination itself finds it released.
  end = Value("STR text");
  EXPECT_EQ(ZrVariantCopyInd(&end, &source), ZR_R_OK);
  EXPECT_EQ(Describe(end), "EMPTY");
}

TEST(VariantRecord, InitLooksAtNothingAndNullIsRefused) {
  OwnedVariant held = Value("STR text");
  ZRVARIANT variant = held;
  EXPECT_EQ(ZrVariantInit(&variant), ZR_R_OK);
  EXPECT_EQ(Describe(variant), "EMPTY");
  for (ZRRESULT result :
       {ZrVariantInit(nullptr), ZrVariantClear(nullptr), ZrVariantCopy(nullptr, &held), ZrVariantCopy(&held, nullptr),
        ZrVariantCopyInd(nullptr, &held), ZrVariantCopyInd(&held, nullptr)}) {
    EXPECT_EQ(result, ZR_R_INVALID_POINTER);
  }
  EXPECT_EQ(Describe(held), "STR text");
  EXPECT_EQ(ZrStringRefCount(held.Value.string), 1u);
  EXPECT_EQ(ZrVariantIsContentEmpty(nullptr), 0);
}
