#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "tests/support/variant_text.h"

static bool IsZero(const ZRVARIANT& variant) {
  static constexpr char kZero[sizeof variant] = {};
  return std::memcmp(&variant, kZero, sizeof variant) == 0;
}

// Whoever holds what this record holds, as far as it can be counted.
static uint32_t Owners(const ZRVARIANT& variant) {
  switch (variant.Type) {
    case ZR_VT_STR:
      return ZrStringRefCount(variant.Value.string);
    case ZR_VT_SREF:
      return variant.Value.sref != nullptr ? ZrStringRefCount(variant.Value.sref->text) : 0;
    case ZR_VT_UNKNOWN:
    case ZR_VT_DISPATCH:
      return variant.Value.address != nullptr ? g_object.references : 0;
    default:
      return 0;
  }
}

static bool HasRecordOfItsOwn(const ZRVARIANT& variant) {
  return variant.Type == ZR_VT_BLOB || variant.Type == ZR_VT_UUID || variant.Type == ZR_VT_REF ||
         variant.Type == ZR_VT_SREF;
}

// ---- Values --------------------------------------------------------------------------------------------------------

TEST(VariantRecord, LifeOfEveryValue) {
  const uint32_t objects = g_object.references;
  const struct {
    const char* value;
    bool isEmpty = false;
    const char* copy = nullptr;  // where it isn't the same again
  } kRows[] = {
      // clang-format off
      {"BOOL 2"}, {"I1 -1"}, {"I2 -2"}, {"I4 0"}, {"I8 -9"}, {"UI1 1"}, {"UI2 2"}, {"UI4 4"}, {"UI8 8"}, {"R4 1.5"},
      {"R8 2.5"}, {"TIME 5"}, {"DATETIME 6"}, {"CY 7"}, {"BYTE 1"}, {"WORD 2"}, {"DWORD 4"}, {"QWORD 8"},
      {"OPAQUE 0"}, {"CHAR32 65"}, {"UNKNOWN null"}, {"UNKNOWN object"}, {"DISPATCH null"}, {"DISPATCH object"},
      {"BLOB null", true}, {"BLOB ", true}, {"BLOB 0102"}, {"UUID null", true},
      {"UUID {00000000-0000-0000-0000-000000000000}", true}, {"UUID {00000000-0000-0000-0000-000000000001}"},
      {"UUID {00000001-0000-0000-0000-000000000000}"}, {"STR null", true, "STR "}, {"STR ", true}, {"STR text"},
      {"REF null", true}, {"REF 0.0.0.0.0.0", true}, {"REF 0.0.0.0.0.1"}, {"REF 1.0.0.0.0.0"}, {"SREF null", true},
      {"SREF neither", true, "SREF null"}, {"SREF text ", true}, {"SREF text 0.0.0.0.0.0"},
      {"SREF 0.0.0.0.0.0", true}, {"SREF 0.0.0.0.0.0 text name", true}, {"SREF 0.0.0.0.0.1 text name"},
      {"SREF 1.2.3.4.5.6"},
      // clang-format on
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.value);
    OwnedVariant source = Value(row.value);
    const std::string copied = row.copy != nullptr ? row.copy : row.value;
    const bool isOwned =
        NameOf(source.Type)->tag >= ZR_VT_UUID || source.Type == ZR_VT_BLOB || source.Type == ZR_VT_UNKNOWN;
    const uint32_t owners = Owners(source);
    source.Reserved1 = 5;  // travels with numbers, not with what is owned
    const std::string numberMark = isOwned ? "" : " ~";
    ZRVARIANT reference = ByRef(source);
    EXPECT_EQ(ZrVariantIsContentEmpty(&source), row.isEmpty);
    EXPECT_EQ(ZrVariantIsContentEmpty(&reference), row.isEmpty);

    const struct {
      ZRRESULT (*copy)(ZRVARIANT*, const ZRVARIANT*);
      const ZRVARIANT* from;
      std::string left;
    } kCopies[] = {{ZrVariantCopy, &source, copied + numberMark},
                   {ZrVariantCopyInd, &source, copied + numberMark},
                   {ZrVariantCopyInd, &reference, copied}};
    for (const auto& copy : kCopies) {
      OwnedVariant destination = Before();
      EXPECT_EQ(copy.copy(&destination, copy.from), ZR_R_OK);
      EXPECT_EQ(Describe(destination), copy.left);
      EXPECT_EQ(ZrStringRefCount(g_before), 1u);
      EXPECT_EQ(Owners(source), owners + (owners != 0 ? 1 : 0));
      if (HasRecordOfItsOwn(source) && destination.Value.address != nullptr) {
        EXPECT_NE(destination.Value.address, source.Value.address);
      }
      EXPECT_EQ(ZrVariantClear(&destination), ZR_R_OK);
      EXPECT_TRUE(IsZero(destination));
      EXPECT_EQ(Owners(source), owners);
    }
    // A reference that is copied stays one, holds nothing and is only forgotten.
    OwnedVariant destination = Before();
    EXPECT_EQ(ZrVariantCopy(&destination, &reference), ZR_R_OK);
    EXPECT_EQ(Describe(destination), Describe(reference));
    EXPECT_EQ(ZrStringRefCount(g_before), 1u);
    EXPECT_EQ(ZrVariantClear(&destination), ZR_R_OK);
    EXPECT_TRUE(IsZero(destination));
    EXPECT_EQ(Owners(source), owners);

    // One record as both arguments is released first, and then there is nothing to copy.
    EXPECT_EQ(ZrVariantCopyInd(&reference, &reference), ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(Describe(reference), "EMPTY");
    EXPECT_EQ(ZrVariantCopy(&source, &source), ZR_R_OK);
    EXPECT_EQ(Describe(source), "EMPTY");
  }
  EXPECT_EQ(g_object.references, objects);
}

TEST(VariantRecord, NullAddresses) {
  for (uint16_t tag = 1; tag <= ZR_VT_LAST; ++tag) {
    const TagName* row = NameOf(tag);
    if (row == nullptr) continue;
    SCOPED_TRACE(row->name);
    const ZRVARIANT source = ByRef(tag, nullptr);
    const bool isPointer = tag == ZR_VT_BLOB || tag == ZR_VT_VARIANT || (tag >= ZR_VT_UUID && tag != ZR_VT_DISPATCH);
    EXPECT_EQ(ZrVariantIsContentEmpty(&source), isPointer) << "a number is content, wherever it is";
    OwnedVariant destination = Before();
    EXPECT_EQ(ZrVariantCopyInd(&destination, &source), ZR_R_OK);
    const char* rest = tag == ZR_VT_UUID   ? " {00000000-0000-0000-0000-000000000000}"
                       : tag == ZR_VT_STR  ? " "
                       : tag == ZR_VT_REF  ? " 0.0.0.0.0.0"
                       : tag == ZR_VT_SREF ? " neither"
                       : tag == ZR_VT_BLOB || tag == ZR_VT_UNKNOWN || tag == ZR_VT_DISPATCH ? " null"
                                                                                            : " 0";
    EXPECT_EQ(Describe(destination), row->name + std::string(rest));
    EXPECT_EQ(ZrStringRefCount(g_before), 1u);
  }
}

// ---- Tags ----------------------------------------------------------------------------------------------------------

TEST(VariantRecord, EveryTagWord) {
  uint64_t behind = 0;
  for (unsigned tag = 0; tag <= 70; ++tag) {
    for (const unsigned bits : {0u, 0x1000u, 0x8000u, 0x4000u, 0xD000u}) {
      const auto word = static_cast<uint16_t>((tag == 70 ? 0xFFF : tag) | bits);
      SCOPED_TRACE(word);
      const bool isByRef = (bits & ZR_VT_BYREF) != 0, isBad = NameOf(word & ZR_VT_TYPEMASK) == nullptr || tag == 0;
      ZRVARIANT source = ZR_VARIANT_INIT;
      source.Type = word;
      source.Value.address = isByRef || isBad ? &behind : nullptr;
      if (isBad) {
        EXPECT_EQ(ZrVariantIsContentEmpty(&source), 1);
      }

      OwnedVariant copy = Before(), direct = Before();
      EXPECT_EQ(ZrVariantCopy(&copy, &source), isBad && tag != 0 ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
      EXPECT_EQ(copy.Type, word);
      if (isBad) {
        EXPECT_EQ(copy.Value.address, nullptr);
      }
      EXPECT_EQ(copy.Reserved3, 0x43);
      if (isByRef && tag != ZR_VT_VARIANT) {
        EXPECT_EQ(ZrVariantCopyInd(&direct, &source), isBad ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
        EXPECT_EQ(direct.Type, word & ZR_VT_TYPEMASK);
        if (isBad) {
          EXPECT_EQ(direct.Value.address, nullptr);
        }
      }
      EXPECT_EQ(ZrStringRefCount(g_before), isByRef && tag != ZR_VT_VARIANT ? 1u : 2u);

      // What a bad record seems to hold is never released, and the record is zero all the same.
      const std::string before = Describe(source);
      EXPECT_EQ(ZrVariantClear(&source), isBad && word != 0 ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
      EXPECT_TRUE(word == 0 ? Describe(source) == before : IsZero(source)) << "an empty record is left as it is";
      source.Type = word;
      source.Value.address = isByRef || isBad ? &behind : nullptr;
      const OwnedVariant number = Value("I4 7");
      EXPECT_EQ(ZrVariantCopy(&source, &number), ZR_R_OK) << "and a bad destination reports nothing";
      EXPECT_EQ(Describe(source), "I4 7");
    }
  }
}

TEST(VariantRecord, ChainsOfReferences) {
  OwnedVariant end = Value("STR text"), carried = Value("VARIANT 9"), bad = Value("14 5");
  ZRVARIANT number = ByRef(end);
  ZRVARIANT first = ByRef(ZR_VT_VARIANT, &number), second = ByRef(ZR_VT_VARIANT | 0x9000, &first);
  const struct {
    ZRVARIANT* target;
    ZRRESULT result;
    bool isEmpty;
    const char* left;
  } kRows[] = {
      {&end, ZR_R_OK, false, "STR text"},         {&number, ZR_R_OK, false, "STR text"},
      {&second, ZR_R_OK, false, "STR text"},      {&carried, ZR_R_OK, false, "VARIANT 9"},
      {&bad, ZR_R_INVALID_ARGUMENTS, true, "14"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.left);
    const ZRVARIANT source = ByRef(ZR_VT_VARIANT, row.target);
    EXPECT_EQ(ZrVariantIsContentEmpty(&source), row.isEmpty);
    OwnedVariant destination = Before();
    EXPECT_EQ(ZrVariantCopyInd(&destination, &source), row.result);
    EXPECT_EQ(Describe(destination), row.left);
  }
  EXPECT_EQ(ZrStringRefCount(end.Value.string), 1u);
  // The address of an array is copied like any other.
  const ZRVARIANT array = ByRef(ZR_VT_STR | ZR_VT_ARRAY, &end);
  OwnedVariant copy;
  EXPECT_EQ(ZrVariantCopy(&copy, &array), ZR_R_OK);
  EXPECT_EQ(std::memcmp(&copy, &array, sizeof array), 0);
  // A reference to the destination itself finds it released.
  const ZRVARIANT source = ByRef(ZR_VT_VARIANT, &end);
  EXPECT_EQ(ZrVariantCopyInd(&end, &source), ZR_R_OK);
  EXPECT_EQ(Describe(end), "EMPTY");
}

TEST(VariantRecord, InitLooksAtNothingAndNullIsRefused) {
  OwnedVariant held = Value("STR text");
  ZRVARIANT variant = held;
  EXPECT_EQ(ZrVariantInit(&variant), ZR_R_OK);
  EXPECT_EQ(Describe(variant), "EMPTY");
  EXPECT_EQ(ZrStringRefCount(held.Value.string), 1u);
  for (ZRRESULT result :
       {ZrVariantInit(nullptr), ZrVariantClear(nullptr), ZrVariantCopy(nullptr, &held), ZrVariantCopy(&held, nullptr),
        ZrVariantCopyInd(nullptr, &held), ZrVariantCopyInd(&held, nullptr)}) {
    EXPECT_EQ(result, ZR_R_INVALID_POINTER);
  }
  EXPECT_EQ(Describe(held), "STR text");
  EXPECT_EQ(ZrVariantIsContentEmpty(nullptr), 0);
}
