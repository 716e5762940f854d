#include <gtest/gtest.h>

#include <random>

#include "tests/support/array_sequence.h"

TEST(Array, SequencesOfOperationsAreAsOnTheModel) {
  std::minstd_rand random(20121);
  for (int round = 0; round < 400; ++round) {
    std::vector<uint8_t> bytes(600);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 7);
    ASSERT_EQ(CArraySequence::Run(bytes.data(), bytes.size()), "") << round;
  }
}

TEST(Array, RefusesNulls) {
  const Array array = MakeArray(ZR_VT_I4, {{1, 0}}), typeless = MakeArray(ZR_VT_EMPTY, {{1, 0}});
  ZRSAFEARRAY none = nullptr, handle = array.get();
  uint32_t word = 0;
  uint16_t tag = 0;
  uint8_t equal = 9;
  void* data = nullptr;
  const ZrSafeArrayBound bound = {2, 0}, *bounds = &bound;
  EXPECT_EQ(ZrSafeArrayCreate(ZR_VT_I4, 1, nullptr), nullptr);
  // clang-format off
  const ZRRESULT kRefused[] = {
      ZrSafeArrayDestroy(none), ZrSafeArrayCopy(none, &none), ZrSafeArrayCopy(handle, nullptr), ZrSafeArrayLock(none),
      ZrSafeArrayUnlock(none), ZrSafeArrayAccessData(none, &data), ZrSafeArrayAccessData(handle, nullptr),
      ZrSafeArrayUnaccessData(none), ZrSafeArrayGetElement(none, &word, &word),
      ZrSafeArrayGetElement(handle, nullptr, &word), ZrSafeArrayGetElement(handle, &word, nullptr),
      ZrSafeArrayPutElement(none, &word, &word), ZrSafeArrayPutElement(handle, nullptr, &word),
      ZrSafeArrayPutElement(handle, &word, nullptr), ZrSafeArrayGetElement(typeless.get(), nullptr, &word),
      ZrSafeArrayPutElement(typeless.get(), &word, nullptr), ZrSafeArrayGetVartype(none, &tag),
      ZrSafeArrayGetBounds(none, &word, &bounds), ZrSafeArrayGetElementCount(none, &word, nullptr),
      ZrSafeArrayGetLBound(none, 1, &word), ZrSafeArrayGetUBound(none, 1, &word), ZrSafeArrayRedim(none, 1, &bound),
      ZrSafeArrayCompare(none, handle, &equal), ZrSafeArrayCompare(handle, none, &equal),
      ZrSafeArrayCompare(handle, handle, nullptr), ZrSafeArrayChangeType(none, 0, ZR_VT_I8)};
  const ZRRESULT kSilent[] = {
      ZrSafeArrayGetBounds(handle, nullptr, &bounds), ZrSafeArrayGetBounds(handle, &word, nullptr),
      ZrSafeArrayGetElementCount(handle, nullptr, nullptr), ZrSafeArrayGetLBound(handle, 1, nullptr),
      ZrSafeArrayGetUBound(handle, 1, nullptr)};
  // clang-format on
  for (const ZRRESULT& result : kRefused) EXPECT_EQ(result, ZR_R_INVALID_POINTER) << &result - kRefused;
  for (const ZRRESULT& result : kSilent) EXPECT_EQ(result, ZR_R_OK) << &result - kSilent;
  EXPECT_TRUE(equal == 9 && word == 0 && bounds == &bound) << "nothing is written";
  EXPECT_EQ(ZrSafeArrayRedim(handle, 1, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrSafeArrayLock(handle), ZR_R_OK) << "a refusal leaves the flag free";
}

// What the sequences leave out, since copies that were made for no place stay behind: here, of nothing.
TEST(Array, TellsWhatIsInNoPlace) {
  for (const uint16_t tag : kElementTags) {
    SCOPED_TRACE(NameOf(tag)->name);
    const Array array = MakeArray(tag, {{2, 1}}), none = MakeArray(tag, {{0, 0}});
    const uint32_t below = 0, first = 1;
    const bool isRefused = tag == ZR_VT_REF || tag == ZR_VT_SREF;
    const bool isObject = tag == ZR_VT_UNKNOWN || tag == ZR_VT_DISPATCH;
    const uint32_t references = g_object.references;
    Element element{};
    EXPECT_EQ(ZrSafeArrayPutElement(array.get(), &below, &element), ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(ZrSafeArrayPutElement(none.get(), &below, &element), isRefused ? ZR_R_INVALID_ARGUMENTS : 1);
    std::memset(&element, 0x5A, sizeof element);
    if (isObject) element.value.dispatch = &g_object;
    const std::string before = Hex(&element, sizeof element);
    EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &below, &element),
              tag == ZR_VT_VARIANT ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(ZrSafeArrayGetElement(none.get(), &below, &element), 1);
    EXPECT_EQ(std::exchange(g_object.references, references), references + (isObject ? 1 : 0))
        << "the variable is taken at its word";
    if (tag == ZR_VT_BLOB || tag >= ZR_VT_STR) {  // null leaves a variable alone, but for an object's
      EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &first, &element), ZR_R_OK);
      EXPECT_TRUE(!isObject || std::exchange(element.value.dispatch, &g_object) == nullptr);
    }
    EXPECT_EQ(Hex(&element, sizeof element), before);
  }
}

// All elements of one type, with what lies at the edges, as another: as the rule that takes each through variants has
// it.
class Conversions : public testing::TestWithParam<uint16_t> {};
INSTANTIATE_TEST_SUITE_P(Array, Conversions, testing::ValuesIn(kElementTags),
                         [](const auto& row) { return NameOf(row.param)->name; });

TEST_P(Conversions, AreTheVariantsOwn) {
  const uint16_t source = GetParam();
  Samples samples;
  (void)samples.Make(source);
  const uint32_t references = g_object.references, owners = ZrStringRefCount(g_shared);
  for (const uint16_t target : kElementTags) {
    SCOPED_TRACE(NameOf(target)->name);
    const Array array = samples.Make(source);
    const auto [slow, all] = ConvertSlowly(source, array.get(), target);

    // In a variant: all elements or none. To the own type it is a copy.
    const OwnedVariant from = InVariant(source, CopyOf(array.get()));
    const auto targetWord = static_cast<uint16_t>(target | ZR_VT_ARRAY);
    OwnedVariant to = Value("I4 5");
    EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, targetWord | ZR_VT_BYREF), all ? ZR_R_OK : ZR_R_FAILED);
    EXPECT_EQ(all ? ShowArray(to.Value.array) : Describe(to), all ? ShowArray(slow.get()) : "I4 5");
    EXPECT_EQ(all ? to.Type : targetWord, targetWord);

    EXPECT_EQ(ZrSafeArrayLock(array.get()), ZR_R_OK) << "which nobody looks at";
    EXPECT_EQ(ZrSafeArrayChangeType(array.get(), 0xFFFFFFFF, target | ZR_VT_BYREF | ZR_VT_ARRAY), all ? ZR_R_OK : 1);
    EXPECT_EQ(ShowArray(array.get()), ShowArray(slow.get()));

    const Array elements = samples.Make(source);  // and each alone, since one that doesn't convert hides the others
    const Content content = ContentOf(elements.get());
    for (uint32_t index = 0, zero = 0; index < content.count; ++index) {
      const Array alone = MakeArray(source, {{1, 0}});
      (void)ZrSafeArrayPutElement(alone.get(), &zero, content.data + index * WidthOf(source));
      const bool converts = ConvertSlowly(source, alone.get(), target).all;
      EXPECT_EQ(ZrSafeArrayChangeType(alone.get(), 0, target), converts ? ZR_R_OK : 1) << index;
    }
  }
  EXPECT_EQ(g_object.references, references);
  EXPECT_EQ(ZrStringRefCount(g_shared), owners);
}

TEST(Array, ComparesByTheRuleOfItsElements) {
  const struct {
    const char *left, *right;
    bool equal;
  } kRows[] = {
      {"R8 0", "R8 -0.0", false},  // by their bytes
      {"R8 nan", "R8 nan", true},
      {"BOOL 1", "BOOL 2", false},
      {"STR ab", "STR aB", false},
      {"STR null", "STR ", true},
      {"BLOB 01", "BLOB 01", true},
      {"BLOB null", "BLOB null", false},
      {"REF null", "REF 0.0.0.0.0.0", true},
      {"REF 0.0.0.0.0.1", "REF 0.0.0.0.0.2", false},
      {"SREF 1.2.3.4.5.6", "SREF 1.2.3.4.5.7", false},
      {"SREF 1.2.3.4.5.6", "SREF text 1.2.3.4.5.6", true},
      {"SREF 1.2.3.4.5.6", "SREF text name", false},
      {"UNKNOWN object", "UNKNOWN object", true},
      {"UNKNOWN object", "UNKNOWN null", false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    OwnedVariant values[] = {Value(row.left), Value(row.right)};
    std::vector<Array> arrays, inVariants;
    for (OwnedVariant& value : values) {
      Element variant{}, element{};
      (void)ZrVariantCopy(&variant.variant, &value);
      element.value = value.Value;
      inVariants.push_back(ArrayOf(ZR_VT_VARIANT, {variant}));
      arrays.push_back(ArrayOf(value.Type, {element}));
      value.Value = {};
    }
    uint8_t equal = 9, own = 9, expected = 9;
    EXPECT_EQ(ZrSafeArrayCompare(arrays[0].get(), arrays[1].get(), &equal), ZR_R_OK);
    EXPECT_EQ(equal, row.equal ? 1 : 0);
    EXPECT_EQ(ZrSafeArrayCompare(arrays[0].get(), arrays[0].get(), &own), ZR_R_OK);
    EXPECT_EQ(own, 1) << "the same array, whatever its elements say";
    // In variants by the rule of those, where what can't be compared differs.
    const auto in = [](const Array& array) { return reinterpret_cast<ZRVARIANT*>(ContentOf(array.get()).data); };
    const bool isOk = ZrVariantCompare(in(inVariants[0]), in(inVariants[1]), &expected) == ZR_R_OK;
    EXPECT_EQ(ZrSafeArrayCompare(inVariants[0].get(), inVariants[1].get(), &equal), ZR_R_OK);
    EXPECT_EQ(equal, isOk ? expected : 0);
  }
  uint8_t equal = 9;  // what has no answer differs, too
  Element nothing{};
  nothing.variant = ByRef(ZR_VT_I4, nullptr);
  const Array left = ArrayOf(ZR_VT_VARIANT, {nothing}), right = ArrayOf(ZR_VT_VARIANT, {nothing});
  EXPECT_EQ(ZrSafeArrayCompare(left.get(), right.get(), &equal), ZR_R_OK);
  EXPECT_EQ(equal, 0);
}

// Elements of different types under one tag, of one type under different tags, and none on one side: what an array has
// kept or got from when it had none to convert.
TEST(Array, ComparesNoElementsOfDifferentTypes) {
  const ZrSafeArrayBound none = {0, 0}, four = {4, 0};
  const Array records = MakeArray(ZR_VT_VARIANT, {four}), bytes = MakeArray(ZR_VT_VARIANT, {none});
  EXPECT_EQ(ZrSafeArrayChangeType(bytes.get(), 0, ZR_VT_I1), ZR_R_FAILED);
  EXPECT_EQ(ZrSafeArrayRedim(bytes.get(), 1, &four), ZR_R_OK);
  const Array others = MakeArray(ZR_VT_I1, {four}), late = MakeArray(14, {four});
  ContentOf(others.get()).data[0] = 1;
  EXPECT_EQ(ZrSafeArrayChangeType(late.get(), 0, ZR_VT_I1), ZR_R_FAILED);
  const Array zeros = CopyOf(late.get());  // which has elements
  const std::pair<const Array&, const Array&> kPairs[] = {{records, bytes}, {bytes, others}, {late, zeros}};
  for (const auto& [left, right] : kPairs) {
    for (const bool isSwapped : {false, true}) {
      uint8_t equal = 9;
      EXPECT_EQ(ZrSafeArrayCompare((isSwapped ? right : left).get(), (isSwapped ? left : right).get(), &equal),
                ZR_R_OK);
      EXPECT_EQ(equal, 1);
    }
  }
}

TEST(Array, InVariantsGivesTheArraysCodes) {
  const ZrSafeArrayBound bound = {0, 0};
  for (const bool isNull : {true, false}) {
    OwnedVariant from = InVariant(ZR_VT_I4, Array(isNull ? nullptr : ZrSafeArrayCreate(ZR_VT_I4, 0, &bound))), to;
    const ZRVARIANT byRef = ByRef(from), toNothing = ByRef(from.Type, nullptr);
    const ZRRESULT refusal = isNull ? ZR_R_INVALID_POINTER : ZR_R_INVALID_OBJECT_STATE;
    const struct {
      ZRRESULT (*copy)(ZRVARIANT*, const ZRVARIANT*);
      const ZRVARIANT* from;
      ZRRESULT result;
    } kCopies[] = {{ZrVariantCopy, &from, refusal},
                   {ZrVariantCopyInd, &byRef, refusal},
                   {ZrVariantCopyInd, &toNothing, ZR_R_INVALID_POINTER}};
    for (const auto& row : kCopies) {
      to = Value("STR before");
      EXPECT_EQ(row.copy(&to, row.from), row.result);
      EXPECT_EQ(to.Value.array, nullptr);
      EXPECT_EQ(to.Type, row.from == &toNothing ? ZR_VT_EMPTY : ZR_VT_I4 | ZR_VT_ARRAY);
    }
    EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, ZR_VT_I8), ZR_R_FAILED);
    EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, ZR_VT_I4), ZR_R_OK) << "a copy that isn't told";
    EXPECT_EQ(ZrVariantIsContentEmpty(&from), isNull ? 0 : 1);
    EXPECT_EQ(ZrVariantIsContentEmpty(&toNothing), 0);
    uint8_t equal = 7;
    EXPECT_EQ(ZrVariantCompare(&from, &to, &equal), ZR_R_INVALID_POINTER);
    EXPECT_EQ(ZrVariantCompare(&toNothing, &toNothing, &equal), ZR_R_OK);
    EXPECT_EQ(equal, 7);
    EXPECT_EQ(ZrVariantClear(&to), ZR_R_INVALID_POINTER) << "nothing to destroy";
  }
}
