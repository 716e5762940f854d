// Every type of elements to every other, against the rule that takes each element through variants, one by one.

#include <gtest/gtest.h>

#include "tests/support/array_samples.h"

// ---- The slow rule -------------------------------------------------------------------------------------------------

// The type that a value has to have in the end, by the storage that it shares with others.
static uint16_t CanonicalTag(uint16_t tag) {
  static constexpr struct {
    uint16_t tag, canonical;
  } kShared[] = {{ZR_VT_BOOL, ZR_VT_UI1},  {ZR_VT_BYTE, ZR_VT_UI1},   {ZR_VT_WORD, ZR_VT_UI2},
                 {ZR_VT_DWORD, ZR_VT_UI4}, {ZR_VT_CHAR32, ZR_VT_UI4}, {ZR_VT_QWORD, ZR_VT_UI8},
                 {ZR_VT_TIME, ZR_VT_I8},   {ZR_VT_DATETIME, ZR_VT_I8}};
  for (const auto& row : kShared) {
    if (row.tag == tag) return row.canonical;
  }
  return tag;
}

static bool IsTime(uint16_t tag) { return tag == ZR_VT_TIME || tag == ZR_VT_DATETIME; }

// A variant of the test's own.
struct Holder {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  Holder() = default;
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() { (void)ZrVariantClear(&variant); }
};

static void MakeTemporary(uint16_t tag, const char* element, ZRVARIANT& temporary) {
  ZRVARIANT lent = ZR_VARIANT_INIT;
  ZRUUID* uuid = nullptr;
  if (tag == ZR_VT_VARIANT) {
    std::memcpy(&lent, element, sizeof lent);
  } else if (tag == ZR_VT_UUID) {
    ZRUUID value;
    std::memcpy(&value, element, sizeof value);
    (void)ZrCopyUUID(&value, &uuid);
    lent.Type = tag;
    lent.Value.uuid = uuid;
  } else {
    lent.Type = IsTime(tag) || CanonicalTag(tag) == tag ? tag : CanonicalTag(tag);
    std::memcpy(&lent.Value, element, WidthOf(tag));
  }
  (void)ZrVariantCopy(&temporary, &lent);
  ZrDestroyUUID(uuid);
  const bool mayBeMissing = tag == ZR_VT_REF || tag == ZR_VT_SREF;
  if (mayBeMissing && temporary.Value.address == nullptr) (void)ZrVariantInit(&temporary);
}

// Moves the value into the element.
static bool Take(ZRVARIANT& from, uint16_t target, char* element) {
  if (target == ZR_VT_UUID) {
    if (from.Value.uuid != nullptr) std::memcpy(element, from.Value.uuid, sizeof(ZRUUID));
    return true;
  }
  std::memcpy(element, target == ZR_VT_VARIANT ? static_cast<void*>(&from) : &from.Value, WidthOf(target));
  (void)ZrVariantInit(&from);
  return true;
}

static bool StoreSlowly(ZRVARIANT& temporary, uint16_t target, char* element) {
  if (target == ZR_VT_VARIANT) return Take(temporary, target, element);
  if (target == ZR_VT_UNKNOWN || target == ZR_VT_DISPATCH) {
    const bool isTaken = temporary.Type == ZR_VT_DISPATCH || temporary.Type == target;
    return isTaken && Take(temporary, target, element);
  }
  const uint16_t canonical = CanonicalTag(target);
  if ((temporary.Type & ZR_VT_ARRAY) != 0) return false;
  Holder value, converted, last;
  const bool isDirect = CanonicalTag(temporary.Type & ZR_VT_TYPEMASK) == canonical;
  if (ZR_FAILED(ZrVariantCopyInd(&value.variant, &temporary))) return false;
  if (isDirect) return ZrVariantCopy(&last.variant, &value.variant) == ZR_R_OK && Take(last.variant, target, element);
  if ((value.variant.Type & ZR_VT_ARRAY) != 0) return false;
  if (ZrVariantChangeType(&converted.variant, &value.variant, 0, target) != ZR_R_OK) {
    if (target == ZR_VT_SREF) ZrDestroySREF(converted.variant.Value.sref);  // remains that nobody owns
    return false;
  }
  if (converted.variant.Type == canonical) return Take(converted.variant, target, element);
  if (ZrVariantChangeType(&last.variant, &converted.variant, 0, canonical) != ZR_R_OK) return true;
  return Take(last.variant, target, element);
}

static bool ConvertSlowly(uint16_t source, const char* from, uint16_t target, char* element) {
  if (IsTime(source)) {
    const uint16_t canonical = CanonicalTag(target);
    int64_t count;
    std::memcpy(&count, from, sizeof count);
    const auto real = static_cast<double>(count);
    if (canonical == ZR_VT_I8 || canonical == ZR_VT_UI8 || canonical == ZR_VT_CY)
      return std::memcpy(element, from, 8) != nullptr;
    if (canonical == ZR_VT_R8) return std::memcpy(element, &real, 8) != nullptr;
    if (canonical != ZR_VT_STR && canonical != ZR_VT_VARIANT) return false;
  }
  Holder temporary;
  MakeTemporary(source, from, temporary.variant);
  return StoreSlowly(temporary.variant, target, element);
}

// ---- The tests -----------------------------------------------------------------------------------------------------

class Conversions : public testing::TestWithParam<ElementType> {};

TEST_P(Conversions, AreTheVariantsOwn) {
  const auto [source, width] = GetParam();
  Samples samples;
  (void)samples.Make(source);
  const uint32_t references = samples.object.references;
  for (const ElementType& type : kElementTypes) {
    SCOPED_TRACE("tag " + std::to_string(source) + " to tag " + std::to_string(type.tag));
    const Array array = samples.Make(source);
    const Content content = ContentOf(array.get());
    Element zero{};
    if (type.tag == ZR_VT_VARIANT) (void)ZrVariantInit(&zero.variant);
    std::vector<Element> expected(content.count, zero);
    bool all = true;
    for (uint32_t index = 0; index < content.count; ++index) {
      all = ConvertSlowly(source, content.data + index * width, type.tag, reinterpret_cast<char*>(&expected[index])) &&
            all;
    }
    const Array slow = ArrayOf(type.tag, expected);

    // In a variant: all elements or none. To the own type it is a copy.
    Holder from, to;
    const auto sourceWord = static_cast<uint16_t>(source | ZR_VT_ARRAY),
               targetWord = static_cast<uint16_t>(type.tag | ZR_VT_ARRAY);
    from.variant.Type = sourceWord;
    from.variant.Value.array = CopyOf(array.get()).release();
    const std::string before = ShowVariant(to.variant);
    EXPECT_EQ(ZrVariantChangeType(&to.variant, &from.variant, 0, targetWord), all ? ZR_R_OK : ZR_R_FAILED);
    EXPECT_EQ(all ? ShowElements(to.variant.Value.array) : ShowVariant(to.variant),
              all ? ShowElements(slow.get()) : before);
    EXPECT_EQ(all ? to.variant.Type : targetWord, targetWord);

    EXPECT_EQ(ZrSafeArrayLock(array.get()), ZR_R_OK) << "which nobody looks at";
    EXPECT_EQ(ZrSafeArrayChangeType(array.get(), 0xFFFFFFFF, type.tag | ZR_VT_BYREF | ZR_VT_ARRAY), all ? ZR_R_OK : 1);
    EXPECT_EQ(ShowArray(array.get()), ShowArray(slow.get()));
    EXPECT_EQ(ZrSafeArrayUnlock(array.get()), ZR_R_OK);
  }
  EXPECT_EQ(samples.object.references, references);
}

INSTANTIATE_TEST_SUITE_P(Array, Conversions, testing::ValuesIn(kElementTypes),
                         [](const auto& row) { return "tag" + std::to_string(row.param.tag); });

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
