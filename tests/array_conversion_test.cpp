// Every type of elements to every other, against the rule that takes each element through variants, one by one.

#include <gtest/gtest.h>

#include "tests/support/array_model.h"

class Conversions : public testing::TestWithParam<uint16_t> {};

TEST_P(Conversions, AreTheVariantsOwn) {
  const uint16_t source = GetParam();
  Samples samples;
  (void)samples.Make(source);
  const uint32_t references = g_object.references;
  for (const uint16_t target : kElementTags) {
    SCOPED_TRACE("tag " + std::to_string(source) + " to tag " + std::to_string(target));
    const Array array = samples.Make(source);
    const auto [slow, all] = ConvertSlowly(source, array.get(), target);

    // In a variant: all elements or none. To the own type it is a copy.
    const OwnedVariant from = InVariant(source, CopyOf(array.get()));
    const auto targetWord = static_cast<uint16_t>(target | ZR_VT_ARRAY);
    OwnedVariant to = Value("I4 5");
    EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, targetWord), all ? ZR_R_OK : ZR_R_FAILED);
    EXPECT_EQ(all ? ShowArray(to.Value.array) : Describe(to), all ? ShowArray(slow.get()) : "I4 5");
    EXPECT_EQ(all ? to.Type : targetWord, targetWord);

    EXPECT_EQ(ZrSafeArrayLock(array.get()), ZR_R_OK) << "which nobody looks at";
    EXPECT_EQ(ZrSafeArrayChangeType(array.get(), 0xFFFFFFFF, target | ZR_VT_BYREF | ZR_VT_ARRAY), all ? ZR_R_OK : 1);
    EXPECT_EQ(ShowArray(array.get()), ShowArray(slow.get()));
    EXPECT_EQ(ZrSafeArrayUnlock(array.get()), ZR_R_OK);
  }
  EXPECT_EQ(g_object.references, references);
}

INSTANTIATE_TEST_SUITE_P(Array, Conversions, testing::ValuesIn(kElementTags),
                         [](const auto& row) { return NameOf(row.param)->name; });

struct ArrayCase {
  uint16_t tag;
  std::vector<ZrSafeArrayBound> bounds;
};

TEST(ArrayConversion, IsRefusedWithoutATypeOrElements) {
  for (const auto& [tag, bounds] :
       {ArrayCase{ZR_VT_I4, {{2, 1}}}, ArrayCase{ZR_VT_I4, {{0, 0}}}, ArrayCase{14, {{2, 0}}}}) {
    const Array array = MakeArray(tag, bounds);
    const std::string before = ShowArray(array.get());
    for (const int target : {0, 14, 16, 26, 54, 0xFFF, ZR_VT_BYREF}) {
      EXPECT_EQ(ZrSafeArrayChangeType(array.get(), 0, static_cast<uint16_t>(target)), ZR_R_FAILED) << target;
      EXPECT_EQ(ShowArray(array.get()), before);
    }
  }
  const ZrSafeArrayBound bound = {3, 0};
  EXPECT_EQ(ZrSafeArrayChangeType(Array(ZrSafeArrayCreate(ZR_VT_I4, 0, &bound)).get(), 0, ZR_VT_I8), ZR_R_FAILED);
  EXPECT_EQ(ZrSafeArrayChangeType(nullptr, 0, ZR_VT_I8), ZR_R_INVALID_POINTER);
}

// The tag stays, the elements are of the new type from then on: in shapes with elements, copies and comparisons too.
TEST(ArrayConversion, OfNothingDecidesWhatElementsWillBe) {
  static constexpr uint32_t kIndex = 2;
  for (const auto& [tag, target] : {std::pair{ZR_VT_VARIANT, ZR_VT_I1}, std::pair{ZR_VT_I1, ZR_VT_VARIANT},
                                    std::pair{ZR_VT_STR, ZR_VT_I2}, std::pair{14, ZR_VT_STR}}) {
    const ZrSafeArrayBound none = {tag == 14 ? 4u : 0u, 0}, four = {4, 0};
    const Array array(ZrSafeArrayCreate(static_cast<uint16_t>(tag), 1, &none));
    EXPECT_EQ(ZrSafeArrayChangeType(array.get(), 0, static_cast<uint16_t>(target)), ZR_R_FAILED);
    EXPECT_EQ(ZrSafeArrayRedim(array.get(), 1, &four), ZR_R_OK);
    const Array other = MakeArray(static_cast<uint16_t>(tag), {four});
    Element variable{};
    variable.variant.Type = target == ZR_VT_VARIANT ? ZR_VT_I4 : ZR_VT_EMPTY;
    EXPECT_EQ(ZrSafeArrayPutElement(array.get(), &kIndex, &variable), ZR_R_OK);
    const Array copy = CopyOf(array.get());
    for (const Array* of : {&array, &copy}) {
      uint16_t type = 0;
      uint64_t bytes = 0;
      uint32_t count = 0;
      uint8_t equal = 0;
      EXPECT_EQ(ZrSafeArrayGetVartype(of->get(), &type), ZR_R_OK);
      EXPECT_EQ(type, tag);
      EXPECT_EQ(ZrSafeArrayGetElementCount(of->get(), &count, &bytes), ZR_R_OK);
      EXPECT_EQ(bytes, 4 * WidthOf(static_cast<uint16_t>(target)));
      EXPECT_EQ(ZrSafeArrayCompare(of->get(), array.get(), &equal), ZR_R_OK);
      EXPECT_EQ(equal, 1);
      EXPECT_EQ(ZrSafeArrayCompare(of->get(), other.get(), &equal), ZR_R_OK);
      EXPECT_EQ(ZrSafeArrayCompare(other.get(), of->get(), &equal), ZR_R_OK);
      EXPECT_EQ(equal, 1) << "elements of different types";
    }
  }
}
