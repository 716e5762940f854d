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
  constexpr int kNoFailures = 5;  // the last ones
  // clang-format off
  const ZRRESULT kAnswers[] = {
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
      ZrSafeArrayCompare(handle, handle, nullptr), ZrSafeArrayChangeType(none, 0, ZR_VT_I8),
      ZrSafeArrayGetBounds(handle, nullptr, &bounds), ZrSafeArrayGetBounds(handle, &word, nullptr),
      ZrSafeArrayGetElementCount(handle, nullptr, nullptr), ZrSafeArrayGetLBound(handle, 1, nullptr),
      ZrSafeArrayGetUBound(handle, 1, nullptr)};
  // clang-format on
  for (const ZRRESULT& answer : kAnswers) {
    EXPECT_EQ(answer, std::end(kAnswers) - &answer > kNoFailures ? ZR_R_INVALID_POINTER : ZR_R_OK)
        << &answer - kAnswers;
  }
  EXPECT_TRUE(equal == 9 && word == 0 && bounds == &bound) << "nothing is written";
  EXPECT_EQ(ZrSafeArrayRedim(handle, 1, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrSafeArrayLock(handle), ZR_R_OK) << "a refusal leaves the flag free";
}

// All that holds for elements of each type.
class Elements : public testing::TestWithParam<uint16_t> {
 protected:
  const uint16_t tag_ = GetParam();
  Samples samples_;
};
INSTANTIATE_TEST_SUITE_P(Array, Elements, testing::ValuesIn(kElementTags),
                         [](const auto& row) { return NameOf(row.param)->name; });

// What the sequences leave out, since copies that were made for no place stay behind: here, of nothing.
TEST_P(Elements, AreInNoPlace) {
  const Array array = MakeArray(tag_, {{2, 1}}), none = MakeArray(tag_, {{0, 0}});
  const uint32_t below = 0, first = 1;
  const bool isRefused = tag_ == ZR_VT_REF || tag_ == ZR_VT_SREF;
  const bool isObject = tag_ == ZR_VT_UNKNOWN || tag_ == ZR_VT_DISPATCH;
  const uint32_t references = g_object.references;
  void *element[2] = {}, *before[2];
  EXPECT_EQ(ZrSafeArrayPutElement(array.get(), &below, element), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrSafeArrayPutElement(none.get(), &below, element), isRefused ? ZR_R_INVALID_ARGUMENTS : 1);
  std::memset(element, 0x5A, sizeof element);
  if (isObject) element[0] = static_cast<IZrUnknown*>(&g_object);
  std::memcpy(before, element, sizeof element);
  EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &below, element),
            tag_ == ZR_VT_VARIANT ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrSafeArrayGetElement(none.get(), &below, element), 1);
  EXPECT_EQ(std::exchange(g_object.references, references), references + (isObject ? 1 : 0))
      << "the variable is taken at its word";
  if (tag_ == ZR_VT_BLOB || tag_ >= ZR_VT_STR) {  // null leaves a variable alone, but for an object's
    EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &first, element), ZR_R_OK);
    EXPECT_TRUE(!isObject || std::exchange(element[0], before[0]) == nullptr);
  }
  EXPECT_EQ(std::memcmp(element, before, sizeof element), 0);
}

// With what lies at the edges, as the rule that takes each through variants has it.
TEST_P(Elements, AreConvertedAsVariantsAre) {
  const uint32_t references = g_object.references, owners = ZrStringRefCount(g_shared);
  for (const uint16_t target : kElementTags) {
    SCOPED_TRACE(NameOf(target)->name);
    std::vector<Array> arrays;  // of all, and of each alone, since one that doesn't convert hides the others
    arrays.push_back(samples_.Make(tag_));
    for (OwnedVariant& value : samples_.Of(tag_)) arrays.push_back(ArrayOf(tag_, &value, 1));
    for (const Array& array : arrays) {
      const auto [slow, all] = ConvertSlowly(tag_, array.get(), target);
      const std::string expected = ShowArray(slow.get());

      // In a variant, apart or in place: all elements or none.
      OwnedVariant from = InVariant(tag_, CopyOf(array.get()));
      const auto targetWord = static_cast<uint16_t>(target | ZR_VT_ARRAY);
      const std::string before = ShowArray(from.Value.array);
      OwnedVariant to = Value("I4 5");
      EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, targetWord | ZR_VT_BYREF), all ? ZR_R_OK : ZR_R_FAILED);
      EXPECT_EQ(all ? ShowArray(to.Value.array) : Describe(to), all ? expected : "I4 5");
      EXPECT_EQ(all ? to.Type : targetWord, targetWord);
      EXPECT_EQ(ZrVariantChangeType(&from, &from, 0, targetWord | ZR_VT_BYREF), all ? ZR_R_OK : ZR_R_FAILED);
      EXPECT_EQ(ShowArray(from.Value.array), all ? expected : before);

      EXPECT_EQ(ZrSafeArrayLock(array.get()), ZR_R_OK) << "which nobody looks at";
      EXPECT_EQ(ZrSafeArrayChangeType(array.get(), 0xFFFFFFFF, target | ZR_VT_BYREF | ZR_VT_ARRAY), all ? ZR_R_OK : 1);
      EXPECT_EQ(ShowArray(array.get()), expected);
    }
  }
  EXPECT_EQ(g_object.references, references);
  EXPECT_EQ(ZrStringRefCount(g_shared), owners);
}

TEST_P(Elements, AreComparedAsVariantsAre) {
  std::vector<Array> left, right;
  for (OwnedVariant& value : samples_.Of(tag_)) left.push_back(ArrayOf(tag_, &value, 1));
  for (OwnedVariant& value : samples_.Of(tag_)) right.push_back(ArrayOf(tag_, &value, 1));
  for (std::size_t at = 0; at < left.size(); ++at) {
    for (std::size_t other = at; other < std::min(at + 8, right.size()); ++other) {
      const bool expected = AreEqual(tag_, ContentOf(left[at].get()).data, ContentOf(right[other].get()).data);
      uint8_t equal = 9;
      EXPECT_EQ(ZrSafeArrayCompare(left[at].get(), right[other].get(), &equal), ZR_R_OK);
      EXPECT_EQ(equal, expected ? 1 : 0) << at << " " << other;
    }
  }
}

// Elements of different types under one tag, and of one type under different tags: what an array has got when it had
// none to convert.
TEST(Array, ComparesNoElementsOfDifferentTypes) {
  const ZrSafeArrayBound four = {4, 0};
  const Array records = MakeArray(ZR_VT_VARIANT, {four}), zeros = MakeArray(ZR_VT_VARIANT, {{0, 0}});
  EXPECT_EQ(ZrSafeArrayChangeType(zeros.get(), 0, ZR_VT_I1), ZR_R_FAILED);
  EXPECT_EQ(ZrSafeArrayRedim(zeros.get(), 1, &four), ZR_R_OK);
  const Array ones = MakeArray(ZR_VT_I1, {four});
  ContentOf(ones.get()).data[0] = 1;
  for (const Array* other : {&records, &ones}) {
    uint8_t equal = 9;
    EXPECT_EQ(ZrSafeArrayCompare(other->get(), zeros.get(), &equal), ZR_R_OK);
    EXPECT_EQ(equal, 1);
  }
}

TEST(Array, MayBeMissingInAVariant) {
  OwnedVariant from = InVariant(ZR_VT_I4, nullptr), to = Value("STR before");
  const ZRVARIANT byRef = ByRef(from), toNothing = ByRef(from.Type, nullptr);
  EXPECT_EQ(ZrVariantCopyInd(&to, &toNothing), ZR_R_INVALID_POINTER);
  EXPECT_EQ(Describe(to), "EMPTY");
  EXPECT_EQ(ZrVariantCopyInd(&to, &byRef), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantClear(&to), ZR_R_INVALID_POINTER) << "nothing to destroy";
  EXPECT_EQ(ZrVariantCopy(&to, &from), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, ZR_VT_I8), ZR_R_FAILED);
  EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, ZR_VT_I4), ZR_R_OK) << "a copy that isn't told";
  EXPECT_EQ(Describe(to) + ShowArray(to.Value.array), "I4+2000 arraynull");
  uint8_t equal = 7;
  EXPECT_EQ(ZrVariantCompare(&from, &to, &equal), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantCompare(&byRef, &toNothing, &equal), ZR_R_OK);
  EXPECT_EQ(equal, 7);
  for (const ZRVARIANT& variant : {ZRVARIANT(from), byRef, toNothing}) EXPECT_EQ(ZrVariantIsContentEmpty(&variant), 0);
}
