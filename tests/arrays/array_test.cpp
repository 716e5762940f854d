// Tests safe arrays: random operations against a model, conversions against the conversion of each element through a
// variant, and the special cases of null arguments, missing elements and unsupported types.

#include <gtest/gtest.h>

#include "tests/support/array_sequence.h"

TEST(Array, RandomOperationsMatchTheModel) {
  const std::string difference = CArraySequence::RunRandomly(1200, 600, RandomSeed(20121));
  EXPECT_TRUE(difference.empty()) << difference;
}

TEST(Array, RejectsNullHandles) {
  const Array array = MakeArray(ZR_VT_I4, {{1, 0}});
  ZRSAFEARRAY null = nullptr, handle = array.get();
  uint32_t word = 7, first = 0;
  uint16_t tag = 0;
  uint8_t equal = 9;
  void* data = nullptr;
  const ZrSafeArrayBound bound = {2, 0}, *bounds = &bound;
  ExpectEach(ZR_R_INVALID_POINTER,
             {ZrSafeArrayDestroy(null), ZrSafeArrayCopy(null, &null), ZrSafeArrayLock(null), ZrSafeArrayUnlock(null),
              ZrSafeArrayAccessData(null, &data), ZrSafeArrayAccessData(handle, nullptr), ZrSafeArrayUnaccessData(null),
              ZrSafeArrayGetElement(null, &word, &word), ZrSafeArrayPutElement(handle, &word, nullptr),
              ZrSafeArrayGetVartype(null, &tag), ZrSafeArrayGetBounds(null, &word, &bounds),
              ZrSafeArrayGetElementCount(null, &word, nullptr), ZrSafeArrayGetLBound(null, 1, &word),
              ZrSafeArrayGetUBound(null, 1, &word), ZrSafeArrayRedim(null, 1, &bound),
              ZrSafeArrayCompare(null, handle, &equal), ZrSafeArrayChangeType(null, 0, ZR_VT_I8)});
  EXPECT_EQ(ZrSafeArrayCreate(ZR_VT_I4, 1, nullptr), nullptr);
  EXPECT_EQ(ZrSafeArrayRedim(handle, 1, nullptr), ZR_R_INVALID_ARGUMENTS);
  // A null variable, or a dimension that does not exist, is not a failure.
  ExpectEach(ZR_R_OK,
             {ZrSafeArrayGetBounds(handle, nullptr, &bounds), ZrSafeArrayGetElementCount(handle, nullptr, nullptr),
              ZrSafeArrayGetLBound(handle, 0, &word), ZrSafeArrayGetUBound(handle, 2, &word)});
  EXPECT_TRUE(equal == 9 && word == 7 && bounds == &bound) << "no variable may be written";
  EXPECT_EQ(ZrSafeArrayLock(handle), ZR_R_OK);
  ExpectEach(ZR_R_INVALID_POINTER,
             {ZrSafeArrayGetElement(handle, nullptr, &word), ZrSafeArrayGetElement(handle, &word, nullptr),
              ZrSafeArrayPutElement(handle, nullptr, &word), ZrSafeArrayPutElement(handle, &word, nullptr)});
  for (const uint16_t nullable : std::initializer_list<uint16_t>{ZR_VT_STR, ZR_VT_BLOB, ZR_VT_REF, ZR_VT_SREF}) {
    const void* variable = &word;
    EXPECT_EQ(ZrSafeArrayGetElement(MakeArray(nullable, {{1, 0}}).get(), &first, &variable), ZR_R_OK);
    EXPECT_EQ(variable, &word) << "a null element must not change the variable";
  }
}

TEST(Array, RejectsEachNullArgument) {
  const ZrSafeArrayBound bound = {1, 0};
  const Array array = MakeArray(ZR_VT_I4, {bound}), bare(ZrSafeArrayCreate(ZR_VT_I4, 0, &bound));
  ZRSAFEARRAY handle = array.get();
  uint32_t word = 7, first = 0;
  uint8_t equal = 9;
  ExpectEach(ZR_R_INVALID_POINTER,
             {ZrSafeArrayGetElement(handle, nullptr, &word), ZrSafeArrayGetElement(handle, &first, nullptr),
              ZrSafeArrayPutElement(handle, nullptr, &word), ZrSafeArrayCopy(handle, nullptr),
              ZrSafeArrayCompare(handle, nullptr, &equal), ZrSafeArrayCompare(handle, handle, nullptr)});
  ExpectEach(ZR_R_OK, {ZrSafeArrayGetLBound(handle, 1, nullptr), ZrSafeArrayGetUBound(handle, 1, nullptr),
                       ZrSafeArrayGetBounds(handle, &word, nullptr), ZrSafeArrayGetLBound(bare.get(), 1, &word)});
  ExpectEach(ZR_R_FAILED,
             {ZrSafeArrayGetElement(bare.get(), &first, &word), ZrSafeArrayPutElement(bare.get(), &first, &word),
              ZrSafeArrayChangeType(bare.get(), 0, ZR_VT_I8)});
  EXPECT_EQ(ZrSafeArrayRedim(handle, 0, &bound), ZR_R_INVALID_ARGUMENTS);
  EXPECT_TRUE(word == 7 && equal == 9) << "no variable may be written";
}

TEST(Array, VariantElementsCompareByValue) {
  for (const char* second : {"I4 2", "I4 3", "I8 2", "R8 0.5"}) {
    OwnedVariant values[] = {Value("STR a"), Value("I4 2")}, others[] = {Value("STR a"), Value(second)};
    const Array left = ArrayOf(ZR_VT_VARIANT, values, 2), right = ArrayOf(ZR_VT_VARIANT, others, 2);
    uint8_t equal = 9;
    EXPECT_EQ(ZrSafeArrayCompare(left.get(), right.get(), &equal), ZR_R_OK);
    EXPECT_EQ(equal, std::string(second) == "I4 2") << second;
  }
  uint8_t equal = 9;
  const Array empty = MakeArray(ZR_VT_VARIANT, {{0, 0}}), twin = MakeArray(ZR_VT_VARIANT, {{0, 0}});
  EXPECT_TRUE(ZrSafeArrayCompare(empty.get(), twin.get(), &equal) == ZR_R_OK && equal == 1);
}

// A get from an array without elements leaves the caller's variable alone but adds a reference to the object in it.
TEST(Array, GetWithoutElementsAddsAReferenceToTheCallersObject) {
  const Array array = MakeArray(ZR_VT_UNKNOWN, {{0, 0}});
  const uint32_t first = 0, before = g_object.references;
  IZrUnknown* variable = &g_object;
  EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &first, &variable), 1);
  EXPECT_TRUE(variable == &g_object && g_object.references == before + 1);
  g_object.Release();
}

TEST(Array, NullUuidConvertsToZeros) {
  OwnedVariant values[] = {Value("I4 0")};
  const Array array = ArrayOf(ZR_VT_VARIANT, values, 1);
  reinterpret_cast<ZRVARIANT*>(StorageOf(array.get()).data)->Type = ZR_VT_UUID;
  EXPECT_EQ(ZrSafeArrayChangeType(array.get(), 0, ZR_VT_UUID), ZR_R_OK);
  EXPECT_EQ(*reinterpret_cast<ZRUUID*>(StorageOf(array.get()).data), ZRUUID{});
}

TEST(Array, UnsupportedElementTypeHasNoElements) {
  const ZrSafeArrayBound bound = {2, 0};
  for (const uint16_t tag : std::initializer_list<uint16_t>{0, 14, ZR_VT_OPAQUE, 54}) {
    const Array array = MakeArray(tag, {bound}), twin = MakeArray(tag, {bound}), numbers = MakeArray(ZR_VT_I4, {bound});
    uint16_t found = 77;
    uint32_t count = 77;
    uint8_t equal = 9;
    EXPECT_EQ(ZrSafeArrayGetElementCount(array.get(), &count, nullptr), ZR_R_OK);
    EXPECT_TRUE(count == 77 && StorageOf(array.get()).data == nullptr);
    EXPECT_EQ(ZrSafeArrayPutElement(array.get(), &count, &count), ZR_R_FAILED);
    EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &count, &count), ZR_R_FAILED);
    EXPECT_EQ(ZrSafeArrayRedim(array.get(), 1, &bound), ZR_R_FAILED);
    const Array bare = CopyOf(array.get());
    EXPECT_TRUE(bare != nullptr && StorageOf(bare.get()).data == nullptr);
    EXPECT_EQ(ZrSafeArrayChangeType(numbers.get(), 0, tag), ZR_R_FAILED);
    // The conversion fails and the tag stays the same, but new elements have the type of the failed conversion.
    EXPECT_EQ(ZrSafeArrayChangeType(array.get(), 0, ZR_VT_I1), ZR_R_FAILED);
    EXPECT_EQ(ZrSafeArrayChangeType(twin.get(), 0, ZR_VT_R8), ZR_R_FAILED);
    for (const Array* each : {&array, &twin}) EXPECT_EQ(ZrSafeArrayRedim(each->get(), 1, &bound), ZR_R_OK);
    EXPECT_EQ(ZrSafeArrayGetVartype(array.get(), &found), ZR_R_OK);
    EXPECT_TRUE(found == tag && StorageOf(array.get()).count == 2);
    StorageOf(array.get()).data[0] = 1;
    EXPECT_EQ(ZrSafeArrayCompare(array.get(), twin.get(), &equal), ZR_R_OK);
    EXPECT_EQ(equal, 0) << "elements of two types must differ even if the arrays have one tag";
    for (const auto& [left, right] : {std::pair(array.get(), bare.get()), std::pair(bare.get(), array.get())}) {
      equal = 9;
      EXPECT_EQ(ZrSafeArrayCompare(left, right, &equal), ZR_R_OK);
      EXPECT_EQ(equal, 1) << "an array without elements must equal any other";
    }
  }
}

// An array without elements keeps its tag when its type is changed. A copy of it has the type of the tag. A copy of an
// array with elements has the type of the elements.
TEST(Array, CopyHasTheTypeOfTheElementsElseOfTheTag) {
  const ZrSafeArrayBound one = {1, 0};
  for (const uint16_t tag : std::initializer_list<uint16_t>{14, ZR_VT_I8}) {
    const Array changed = MakeArray(tag, {{0, 0}});
    EXPECT_EQ(ZrSafeArrayChangeType(changed.get(), 0, ZR_VT_I2), ZR_R_FAILED);
    const Array empty = CopyOf(changed.get());
    const ZRRESULT redimmed = ZrSafeArrayRedim(empty.get(), 1, &one);
    uint32_t count = 0;
    uint64_t bytes = 0;
    EXPECT_EQ(redimmed, tag == 14 ? ZR_R_FAILED : ZR_R_OK) << tag;
    EXPECT_EQ(ZrSafeArrayGetElementCount(empty.get(), &count, &bytes), ZR_R_OK);
    EXPECT_EQ(bytes, tag == 14 ? 0u : 8u) << tag;

    EXPECT_EQ(ZrSafeArrayRedim(changed.get(), 1, &one), ZR_R_OK);
    EXPECT_EQ(ZrSafeArrayGetElementCount(CopyOf(changed.get()).get(), &count, &bytes), ZR_R_OK);
    EXPECT_EQ(bytes, 2u) << tag;
  }
}

TEST(Array, ZeroDimensionsMeanNoElements) {
  const ZrSafeArrayBound bound = {2, 0}, *bounds = nullptr;
  const Array array(ZrSafeArrayCreate(ZR_VT_I4, 0, &bound)), other = MakeArray(ZR_VT_I4, {bound});
  ZRSAFEARRAY copy = CopyOf(other.get()).release();
  uint32_t dimensions = 77;
  uint8_t equal = 9;
  EXPECT_EQ(ZrSafeArrayGetBounds(array.get(), &dimensions, &bounds), ZR_R_OK);
  EXPECT_EQ(ZrSafeArrayCopy(array.get(), &copy), ZR_R_INVALID_OBJECT_STATE);
  EXPECT_EQ(ZrSafeArrayRedim(array.get(), 1, &bound), ZR_R_INVALID_OBJECT_STATE);
  EXPECT_EQ(ZrSafeArrayCompare(array.get(), other.get(), &equal), ZR_R_OK);
  EXPECT_TRUE(dimensions == 77 && copy == nullptr && equal == 1);
  EXPECT_EQ(StorageOf(array.get()).data, nullptr) << "an array without dimensions must have no storage";
}

// Arrays of different shape leave the result unwritten. Elements of another type count as equal. An array equals
// itself, whatever its elements are. References to arrays in variants compare like the arrays.
TEST(Array, CompareChecksTheShapeFirst) {
  const Array array = MakeArray(ZR_VT_BLOB, {{2, 0}}), twin = MakeArray(ZR_VT_BLOB, {{2, 0}}),
              higher = MakeArray(ZR_VT_BLOB, {{2, 1}}), deeper = MakeArray(ZR_VT_BLOB, {{2, 0}, {1, 0}}),
              numbers = MakeArray(ZR_VT_I4, {{2, 0}});
  ZRSAFEARRAY left = array.get();
  for (ZRSAFEARRAY right : {array.get(), twin.get(), higher.get(), deeper.get(), numbers.get()}) {
    const ZRVARIANT leftRef = ByRef(ZR_VT_BLOB | ZR_VT_ARRAY, &left), rightRef = ByRef(leftRef.Type, &right);
    const int expected = right == twin.get() ? 0 : right == higher.get() || right == deeper.get() ? 9 : 1;
    uint8_t equal = 9, equalByRef = 9;
    EXPECT_EQ(ZrSafeArrayCompare(left, right, &equal), ZR_R_OK);
    EXPECT_EQ(ZrVariantCompare(&leftRef, &rightRef, &equalByRef), ZR_R_OK);
    EXPECT_TRUE(equal == expected && equalByRef == expected);
  }
}

TEST(Array, VariantMayHoldANullArray) {
  OwnedVariant from = InVariant(ZR_VT_I4, nullptr), to = Value("STR before");
  const ZRVARIANT byRef = ByRef(from), toNothing = ByRef(from.Type, nullptr);
  uint8_t equal = 7;
  EXPECT_EQ(ZrVariantIsContentEmpty(&from) + ZrVariantIsContentEmpty(&byRef) + ZrVariantIsContentEmpty(&toNothing), 0);
  EXPECT_EQ(ZrVariantCopyInd(&to, &byRef), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantCopyInd(&to, &toNothing), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, ZR_VT_I8), ZR_R_FAILED);
  EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, ZR_VT_I4), ZR_R_OK) << "a failed copy to the same tag is not reported";
  EXPECT_EQ(ZrVariantCompare(&from, &to, &equal), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantCompare(&byRef, &toNothing, &equal), ZR_R_OK);
  EXPECT_EQ(ZrVariantCompare(&toNothing, &byRef, &equal), ZR_R_OK);
  EXPECT_EQ(equal, 7);
  EXPECT_EQ(ZrVariantClear(&to), ZR_R_INVALID_POINTER) << "there is no array to destroy";
  ZRVARIANT bad = ByRef(14 | ZR_VT_ARRAY, nullptr);
  EXPECT_EQ(ZrVariantClear(&bad), ZR_R_OK) << "a reference owns no array, so its tag does not matter";
}

static uint16_t TagOf(ZRSAFEARRAY array) {
  uint16_t tag = 0;
  (void)ZrSafeArrayGetVartype(array, &tag);
  return tag;
}

// Reports the first element that differs, with the element of `source` that it was converted from.
static void ExpectElements(const char* call, ZRSAFEARRAY found, ZRSAFEARRAY expected, ZRSAFEARRAY source) {
  const std::vector<std::string> left = DescribeElements(TagOf(found), found),
                                 right = DescribeElements(TagOf(expected), expected);
  EXPECT_EQ(TagText(TagOf(found)), TagText(TagOf(expected))) << call;
  ASSERT_EQ(left.size(), right.size()) << call;
  for (std::size_t at = 0; at < left.size(); ++at) {
    if (left[at] == right[at]) continue;
    ADD_FAILURE() << call << " converted element " << at << "\n  from     \""
                  << DescribeElements(TagOf(source), source)[at] << "\"\n  to       \"" << left[at]
                  << "\"\n  expected \"" << right[at] << "\"";
    return;
  }
}

static void ExpectResult(const char* call, ZRRESULT returned, ZRRESULT expected) {
  EXPECT_EQ(returned, expected) << call << " returned " << ResultName(returned) << ", expected "
                                << ResultName(expected);
}

// Converts an array in every way and compares it with the model, which converts each element through a variant.
static void CheckConversion(uint16_t tag, const Array& array, uint16_t target) {
  const auto [slow, all] = ModelConvert(tag, array.get(), target);
  const Array source = CopyOf(array.get());

  // In a variant, into another variant or in place: all elements convert or none.
  const auto targetWord = static_cast<uint16_t>(target | ZR_VT_ARRAY | ZR_VT_BYREF);
  const ZRRESULT expected = all ? ZR_R_OK : ZR_R_FAILED;
  OwnedVariant from = InVariant(tag, CopyOf(array.get())), to = Value("I4 5");
  ExpectResult("ZrVariantChangeType", ZrVariantChangeType(&to, &from, 0, targetWord), expected);
  if (all && (to.Type & ZR_VT_ARRAY) != 0) {
    ExpectElements("ZrVariantChangeType", to.Value.array, slow.get(), source.get());
  } else {
    EXPECT_EQ(Describe(to), all ? "an array" : "I4 5");
  }
  ExpectResult("ZrVariantChangeType in place", ZrVariantChangeType(&from, &from, 0, targetWord), expected);
  ExpectElements("ZrVariantChangeType in place", from.Value.array, all ? slow.get() : source.get(), source.get());

  EXPECT_EQ(ZrSafeArrayLock(array.get()), ZR_R_OK) << "the flag must be free; a conversion ignores it";
  ExpectResult("ZrSafeArrayChangeType", ZrSafeArrayChangeType(array.get(), 0xFFFFFFFF, targetWord), all ? ZR_R_OK : 1);
  ExpectElements("ZrSafeArrayChangeType", array.get(), slow.get(), source.get());
}

TEST(Array, ConversionMatchesTheModel) {
  Samples samples;
  for (const TagName& from : kElementTags) {
    for (const TagName& to : kElementTags) {
      SCOPED_TRACE(TagText(from.tag) + " to " + TagText(to.tag));
      std::vector<OwnedVariant> values = samples.Of(from.tag);
      CheckConversion(from.tag, ArrayOf(from.tag, values.data(), values.size()), to.tag);
      // Also converts each element alone, because an element that fails hides the others.
      for (OwnedVariant& value : samples.Of(from.tag)) CheckConversion(from.tag, ArrayOf(from.tag, &value, 1), to.tag);
    }
  }
}
