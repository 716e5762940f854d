#include <gtest/gtest.h>

#include <random>

#include "tests/support/array_samples.h"

static std::string Get(ZRSAFEARRAY array, uint16_t tag, const std::vector<uint32_t>& indices) {
  Element element{};
  const ZRRESULT result = ZrSafeArrayGetElement(array, indices.data(), &element);
  const Array owner = ArrayOf(tag, {element});
  return result == ZR_R_OK ? ShowElement(tag, &element) : std::to_string(result & 0xFF);
}

// ---- Arrays that lack something ------------------------------------------------------------------------------------

TEST(Array, WithoutStorageAnswersAllTheSame) {
  const struct {
    uint16_t tag;
    std::vector<ZrSafeArrayBound> bounds;
    uint32_t dimensions;
    uint32_t count;  // 77: not told
    ZRRESULT access, redim, copy;
  } kRows[] = {
      {14, {{3, 0}}, 1, 77, ZR_R_FAILED, ZR_R_FAILED, ZR_R_OK},
      {ZR_VT_EMPTY, {{3, 0}}, 1, 77, ZR_R_FAILED, ZR_R_FAILED, ZR_R_OK},
      {ZR_VT_OPAQUE | ZR_VT_ARRAY, {{0, 0}}, 1, 77, ZR_R_FAILED, ZR_R_FAILED, ZR_R_OK},
      {0xFFFF, {{3, 0}, {2, 0}}, 2, 77, ZR_R_FAILED, ZR_R_FAILED, ZR_R_OK},
      {ZR_VT_I4, {{3, 0}}, 0, 1, ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE, ZR_R_INVALID_OBJECT_STATE},
      {14, {{3, 0}}, 0, 77, ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE, ZR_R_INVALID_OBJECT_STATE},
      {ZR_VT_I4, {{3, 0}, {0, 0}, {5, 0}}, 3, 0, 1, ZR_R_OK, ZR_R_OK},
      {ZR_VT_STR, {{0x10000, 0}, {0x10000, 0}}, 2, 0, 1, ZR_R_OK, ZR_R_OK},  // the product wraps
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    const Array array(ZrSafeArrayCreate(row.tag, row.dimensions, row.bounds.data()));
    ASSERT_NE(array, nullptr);
    uint16_t tag = 77;
    uint32_t count = 77, lower = 77, dimensions = 77, zeros[3] = {};
    uint64_t bytes = 77;
    const ZrSafeArrayBound* bounds = nullptr;
    void* data = &data;
    Element element{};
    EXPECT_EQ(ZrSafeArrayGetVartype(array.get(), &tag), ZR_R_OK);
    EXPECT_EQ(tag, row.tag & ZR_VT_TYPEMASK);
    EXPECT_EQ(ZrSafeArrayGetElementCount(array.get(), &count, &bytes), ZR_R_OK);
    EXPECT_EQ(count, row.count);
    EXPECT_EQ(bytes, row.count == 77 ? 77u : row.count * 4u);
    EXPECT_EQ(ZrSafeArrayGetBounds(array.get(), &dimensions, &bounds), ZR_R_OK);
    EXPECT_EQ(dimensions, row.dimensions != 0 ? row.dimensions : 77);
    EXPECT_EQ(ZrSafeArrayGetLBound(array.get(), 1, &lower), ZR_R_OK);
    EXPECT_EQ(lower, row.dimensions != 0 ? 0u : 77u);
    EXPECT_EQ(ZrSafeArrayAccessData(array.get(), &data), ZR_R_OK);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(ZrSafeArrayUnaccessData(array.get()), ZR_R_OK);
    if (row.tag != ZR_VT_STR) {  // whose copy would stay behind
      EXPECT_EQ(ZrSafeArrayPutElement(array.get(), zeros, &element), row.access);
    }
    EXPECT_EQ(ZrSafeArrayGetElement(array.get(), zeros, &element), row.access);
    EXPECT_EQ(ZrSafeArrayGetElement(array.get(), zeros, &element), row.access) << "the flag is free again";

    ZRSAFEARRAY copy = MakeArray(ZR_VT_STR, {{1, 0}}).release();  // which goes in any case
    EXPECT_EQ(ZrSafeArrayCopy(array.get(), &copy), row.copy);
    EXPECT_EQ(copy != nullptr, row.copy == ZR_R_OK);
    const Array copied(copy);
    uint8_t equal = 9;
    EXPECT_EQ(ZrSafeArrayCompare(array.get(), copied ? copy : array.get(), &equal), ZR_R_OK);
    EXPECT_EQ(equal, 1);
    const ZrSafeArrayBound two = {2, 7};
    EXPECT_EQ(ZrSafeArrayRedim(array.get(), 1, &two), row.redim);
    if (row.redim == ZR_R_OK) {
      EXPECT_EQ(ShowElements(array.get()), row.tag == ZR_VT_STR ? "tag 50: null; null;" : "tag 4: 00000000; 00000000;");
    }
  }
}

TEST(Array, RefusesNulls) {
  const Array array = MakeArray(ZR_VT_I4, {{1, 0}});
  ZRSAFEARRAY none = nullptr, handle = array.get();
  uint32_t word = 0, *noWord = nullptr;
  uint16_t tag = 0;
  uint8_t equal = 9;
  void* data = nullptr;
  const ZrSafeArrayBound bound = {2, 0}, *bounds = &bound;
  EXPECT_EQ(ZrSafeArrayCreate(ZR_VT_I4, 1, nullptr), nullptr);
  const ZRRESULT kRefused[] = {ZrSafeArrayDestroy(none),
                               ZrSafeArrayCopy(none, &none),
                               ZrSafeArrayCopy(handle, nullptr),
                               ZrSafeArrayLock(none),
                               ZrSafeArrayUnlock(none),
                               ZrSafeArrayAccessData(none, &data),
                               ZrSafeArrayAccessData(handle, nullptr),
                               ZrSafeArrayUnaccessData(none),
                               ZrSafeArrayGetElement(none, &word, &word),
                               ZrSafeArrayGetElement(handle, nullptr, &word),
                               ZrSafeArrayGetElement(handle, &word, nullptr),
                               ZrSafeArrayPutElement(none, &word, &word),
                               ZrSafeArrayPutElement(handle, nullptr, &word),
                               ZrSafeArrayPutElement(handle, &word, nullptr),
                               ZrSafeArrayGetVartype(none, &tag),
                               ZrSafeArrayGetBounds(none, &word, &bounds),
                               ZrSafeArrayGetElementCount(none, &word, nullptr),
                               ZrSafeArrayGetLBound(none, 1, &word),
                               ZrSafeArrayGetUBound(none, 1, &word),
                               ZrSafeArrayRedim(none, 1, &bound),
                               ZrSafeArrayCompare(none, handle, &equal),
                               ZrSafeArrayCompare(handle, none, &equal),
                               ZrSafeArrayCompare(handle, handle, nullptr)};
  for (const ZRRESULT& result : kRefused) EXPECT_EQ(result, ZR_R_INVALID_POINTER) << &result - kRefused;
  EXPECT_EQ(equal, 9);

  const ZRRESULT kSilent[] = {ZrSafeArrayGetBounds(handle, noWord, &bounds),
                              ZrSafeArrayGetBounds(handle, &word, nullptr),
                              ZrSafeArrayGetElementCount(handle, noWord, nullptr),
                              ZrSafeArrayGetLBound(handle, 1, noWord),
                              ZrSafeArrayGetUBound(handle, 1, noWord),
                              ZrSafeArrayGetLBound(handle, 0, &word),
                              ZrSafeArrayGetUBound(handle, 0, &word),
                              ZrSafeArrayGetLBound(handle, 2, &word),
                              ZrSafeArrayGetUBound(handle, 2, &word)};
  for (const ZRRESULT& result : kSilent) EXPECT_EQ(result, ZR_R_OK) << &result - kSilent;
  EXPECT_TRUE(word == 0 && bounds == &bound) << "nothing is written";
  EXPECT_EQ(ZrSafeArrayRedim(handle, 1, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrSafeArrayRedim(handle, 0, &bound), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ShowElements(handle), "tag 4: 00000000;");
}

TEST(Array, FlagHasTwoStatesAndStopsAccessAlone) {
  const Array array = MakeArray(ZR_VT_I4, {{1, 0}});
  std::minstd_rand random(1);
  bool isTaken = false;
  for (int step = 0; step < 300; ++step) {
    const ZRRESULT whenFree = isTaken ? ZR_R_INVALID_OBJECT_STATE : ZR_R_OK,
                   whenTaken = isTaken ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE;
    uint32_t word = 0;
    void* data = nullptr;
    switch (random() % 7) {
      case 0:
        EXPECT_EQ(ZrSafeArrayLock(array.get()), whenFree);
        isTaken = true;
        break;
      case 1:
        EXPECT_EQ(ZrSafeArrayAccessData(array.get(), &data), whenFree);
        EXPECT_EQ(data != nullptr, !isTaken);
        isTaken = true;
        break;
      case 2:
        EXPECT_EQ(ZrSafeArrayUnlock(array.get()), whenTaken);
        isTaken = false;
        break;
      case 3:
        EXPECT_EQ(ZrSafeArrayUnaccessData(array.get()), whenTaken);
        isTaken = false;
        break;
      case 4:
        EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &word, &word), whenFree);
        break;
      case 5:
        EXPECT_EQ(ZrSafeArrayPutElement(array.get(), &word, &word), whenFree);
        break;
      default: {
        const ZrSafeArrayBound bound = {1, 0};
        EXPECT_EQ(ZrSafeArrayRedim(array.get(), 1, &bound), ZR_R_OK);
        EXPECT_EQ(ZrSafeArrayLock(CopyOf(array.get()).get()), ZR_R_OK) << "a copy's is free";
      }
    }
  }
}

// ---- Shapes and indices --------------------------------------------------------------------------------------------

TEST(Array, IndicesAreOffsetsInOneBlockAndOnlyNegativeOnesAreRefused) {
  std::minstd_rand random(2);
  const auto below = [&](uint32_t end) { return static_cast<uint32_t>(random() % end); };
  int refused = 0, stored = 0;
  for (int round = 0; round < 3000; ++round) {
    std::vector<ZrSafeArrayBound> bounds;
    uint32_t count = 1;
    for (uint32_t dimension = 0, dimensions = 1 + below(4); dimension < dimensions; ++dimension) {
      constexpr int32_t kLower[] = {0, 1, -5, INT32_MAX, INT32_MIN};
      bounds.push_back({1 + below(4), kLower[below(5)]});
      count *= bounds.back().elementCount;
    }
    const Array array = MakeArray(ZR_VT_I4, bounds);
    std::vector<uint32_t> indices;
    uint32_t place = 0;
    for (std::size_t k = 0; k < bounds.size(); ++k) {
      const uint32_t offset = below(bounds[k].elementCount + 3) - 1,
                     lower = static_cast<uint32_t>(bounds[k].lowerBound);
      uint32_t factor = 1;
      for (std::size_t behind = k + 1; behind < bounds.size(); ++behind) factor *= bounds[behind].elementCount;
      indices.push_back(lower + offset);
      place += offset * factor;
      uint32_t bound = 0;
      EXPECT_EQ(ZrSafeArrayGetLBound(array.get(), static_cast<uint32_t>(k + 1), &bound), ZR_R_OK);
      EXPECT_EQ(bound, lower);
      EXPECT_EQ(ZrSafeArrayGetUBound(array.get(), static_cast<uint32_t>(k + 1), &bound), ZR_R_OK);
      EXPECT_EQ(bound, lower + bounds[k].elementCount - 1);
    }
    const Content content = ContentOf(array.get());
    ASSERT_EQ(content.count, count);
    const int32_t value = 0x01020304;
    int32_t got = 0;
    if (static_cast<int32_t>(place) < 0) {
      EXPECT_EQ(ZrSafeArrayPutElement(array.get(), indices.data(), &value), ZR_R_INVALID_ARGUMENTS);
      EXPECT_EQ(ZrSafeArrayGetElement(array.get(), indices.data(), &got), ZR_R_INVALID_ARGUMENTS);
      ++refused;
    } else if (place < count) {
      EXPECT_EQ(ZrSafeArrayPutElement(array.get(), indices.data(), &value), ZR_R_OK);
      EXPECT_EQ(std::memcmp(content.data + place * 4, &value, 4), 0);
      EXPECT_EQ(ZrSafeArrayGetElement(array.get(), indices.data(), &got), ZR_R_OK);
      EXPECT_EQ(got, value);
      ++stored;
    }
  }
  EXPECT_TRUE(refused > 300 && stored > 1000) << refused << " " << stored;
}

// ---- Every type ----------------------------------------------------------------------------------------------------

class ArrayOfType : public testing::TestWithParam<uint16_t> {};
INSTANTIATE_TEST_SUITE_P(Array, ArrayOfType, testing::ValuesIn(kElementTags),
                         [](const auto& row) { return NameOf(row.param)->name; });

TEST_P(ArrayOfType, CopiesInAndOutAndReleases) {
  const uint16_t tag = GetParam();
  const std::size_t width = WidthOf(tag);
  Samples samples;
  (void)samples.Make(tag);
  const uint32_t references = g_object.references;
  {
    const Array source = samples.Make(tag);
    const Content content = ContentOf(source.get());
    const Array array = MakeArray(tag, {{content.count, 0}}), again = MakeArray(tag, {{1, 0}});
    const std::string zero = ShowEach(tag, again.get())[0];
    for (uint32_t index = 0; index < content.count; ++index) {
      const char* value = content.data + index * width;
      std::string stored = CopiedAlone(tag, ShowElement(tag, value));
      ZRRESULT expected = ZR_R_OK;
      if (tag == ZR_VT_REF || tag == ZR_VT_SREF) {
        expected = ShowElement(tag, value) == "null" ? ZR_R_INVALID_ARGUMENTS : stored == "null" ? 1 : ZR_R_OK;
      }
      if (tag == ZR_VT_VARIANT) {
        OwnedVariant copy;
        expected = ZrVariantCopy(&copy, reinterpret_cast<const ZRVARIANT*>(value));
        stored = ShowVariant(copy);
      }
      for (const auto& [to, place] : {std::pair{array.get(), index}, std::pair{again.get(), 0u}}) {
        EXPECT_EQ(ZrSafeArrayPutElement(to, &place, value), expected) << stored;
        EXPECT_EQ(ShowElement(tag, ContentOf(to).data + place * width), stored);
        if (expected == ZR_R_OK) {
          EXPECT_EQ(Get(to, tag, {place}), stored);
        }
      }
    }
    EXPECT_EQ(ShowArray(CopyOf(array.get()).get()), ShowArray(array.get()));

    for (const uint32_t count : {content.count + 2, content.count, content.count / 2, 0u, 3u}) {
      std::vector<std::string> expected = ShowEach(tag, array.get());
      for (std::string& element : expected) element = CopiedAlone(tag, element);
      expected.resize(count * 2, zero);
      const ZrSafeArrayBound bounds[] = {{2, 5}, {count, -1}};
      EXPECT_EQ(ZrSafeArrayRedim(array.get(), 2, bounds), ZR_R_OK);
      EXPECT_EQ(ShowEach(tag, array.get()), expected);
      uint32_t dimensions = 0;
      const ZrSafeArrayBound* stored = nullptr;
      EXPECT_EQ(ZrSafeArrayGetBounds(array.get(), &dimensions, &stored), ZR_R_OK);
      EXPECT_TRUE(dimensions == 2 && stored != bounds && std::memcmp(stored, bounds, sizeof bounds) == 0);
    }
  }
  EXPECT_EQ(g_object.references, references);
}

TEST_P(ArrayOfType, TellsWhatIsInNoPlace) {
  const uint16_t tag = GetParam();
  const std::size_t width = WidthOf(tag);
  const Array array = MakeArray(tag, {{2, 1}}), none = MakeArray(tag, {{0, 0}});
  const std::string zeros = ShowElements(array.get());
  const uint32_t below = 0, zero = 0;
  Element element{};  // whose copy nobody misses where it stays behind
  const bool isRefused = tag == ZR_VT_REF || tag == ZR_VT_SREF;
  EXPECT_EQ(ZrSafeArrayPutElement(array.get(), &below, &element), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrSafeArrayPutElement(none.get(), &zero, &element), isRefused ? ZR_R_INVALID_ARGUMENTS : 1);
  std::memset(&element, 0x5A, sizeof element);
  const bool isInterface = tag == ZR_VT_UNKNOWN || tag == ZR_VT_DISPATCH;
  if (isInterface) element.value.dispatch = &g_object;
  const Element before = element;
  EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &below, &element),
            tag == ZR_VT_VARIANT ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrSafeArrayGetElement(none.get(), &zero, &element), 1);
  EXPECT_EQ(std::memcmp(&element, &before, sizeof element), 0);
  EXPECT_EQ(std::exchange(g_object.references, 0), isInterface ? 1u : 0u) << "the variable is taken at its word";
  EXPECT_EQ(ShowElements(array.get()), zeros);
  uint32_t count = 0;
  uint64_t bytes = 0;
  EXPECT_EQ(ZrSafeArrayGetElementCount(array.get(), &count, &bytes), ZR_R_OK);
  EXPECT_TRUE(count == 2 && bytes == 2 * width) << bytes;
}

// A null element leaves a variable alone, but for an interface, which it makes null.
TEST(Array, DeliversNulls) {
  const uint32_t zero = 0;
  for (const int tag : {ZR_VT_STR, ZR_VT_BLOB, ZR_VT_REF, ZR_VT_SREF, ZR_VT_UNKNOWN}) {
    const Array array = MakeArray(static_cast<uint16_t>(tag), {{1, 0}});
    void* variable = &variable;
    EXPECT_EQ(ZrSafeArrayGetElement(array.get(), &zero, &variable), ZR_R_OK);
    EXPECT_EQ(variable, tag == ZR_VT_UNKNOWN ? nullptr : &variable);
  }
}

TEST(Array, CountsOwners) {
  const Owned text(Units(W("shared")));
  ZRSTR string = text;
  IZrUnknown* unknown = &g_object;
  g_object.AddRef();
  const auto expect = [&](uint32_t owners, const char* step) {
    EXPECT_EQ(ZrStringRefCount(text), owners) << step;
    EXPECT_EQ(g_object.references, owners) << step;
  };
  {
    const Array strings = MakeArray(ZR_VT_STR, {{3, 0}}), objects = MakeArray(ZR_VT_UNKNOWN, {{3, 0}});
    for (uint32_t index : {0u, 1u, 2u, 0u}) {
      EXPECT_EQ(ZrSafeArrayPutElement(strings.get(), &index, &string), ZR_R_OK);
      EXPECT_EQ(ZrSafeArrayPutElement(objects.get(), &index, &unknown), ZR_R_OK);
    }
    expect(4, "puts, one of them over");
    {
      const Array copies[] = {CopyOf(strings.get()), CopyOf(objects.get())};
      expect(7, "copies");
    }
    expect(4, "destroyed copies");
    const ZrSafeArrayBound two = {2, 0};
    EXPECT_EQ(ZrSafeArrayRedim(strings.get(), 1, &two) | ZrSafeArrayRedim(objects.get(), 1, &two), ZR_R_OK);
    expect(3, "a shape with one fewer");
    EXPECT_EQ(Get(strings.get(), ZR_VT_STR, {1}), "shared");
    EXPECT_EQ(ZrSafeArrayChangeType(strings.get(), 0, ZR_VT_VARIANT), ZR_R_OK);
    EXPECT_EQ(ZrSafeArrayChangeType(objects.get(), 0, ZR_VT_VARIANT), ZR_R_OK);
    expect(3, "in variants");
    EXPECT_EQ(ZrSafeArrayChangeType(strings.get(), 0, ZR_VT_STR), ZR_R_OK);
    EXPECT_EQ(ZrSafeArrayChangeType(objects.get(), 0, ZR_VT_DISPATCH), 1);
    EXPECT_EQ(g_object.references, 1u) << "refused";
    EXPECT_EQ(ZrStringRefCount(text), 3u);
  }
  expect(1, "the end");
  g_object.Release();
}

// ---- Comparison ----------------------------------------------------------------------------------------------------

TEST(Array, ComparesByTheRuleOfItsElements) {
  const auto number = [](auto value) {
    Element element{};
    std::memcpy(&element, &value, sizeof value);
    return element;
  };
  const auto text = [&](const WCHAR* units) { return number(ZrCreateString(units)); };
  const auto blob = [&](const char* bytes) { return number(ZrCreateBlob(2, bytes)); };
  const auto variant = [](uint16_t type, ZRVARIANTVALUE value) {
    Element element{};
    element.variant = ZR_VARIANT_INIT;
    element.variant.Type = type;
    element.variant.Value = value;
    return element;
  };
  g_object.AddRef();
  ZRVARIANTVALUE one{}, close{};
  one.r8 = 1.0;
  close.r8 = 1.0 + 2e-16;
  const struct {
    uint16_t tag;
    Element left, right;
    bool equal;
  } kRows[] = {
      {ZR_VT_R8, number(0.0), number(-0.0), false},
      {ZR_VT_R8, number(double{NAN}), number(double{NAN}), true},
      {ZR_VT_BOOL, number(uint8_t{1}), number(uint8_t{2}), false},
      {ZR_VT_STR, text(W("ab")), text(W("ab")), true},
      {ZR_VT_STR, text(W("ab")), text(W("aB")), false},
      {ZR_VT_STR, Element{}, text(W("")), true},
      {ZR_VT_BLOB, blob("ab"), blob("ab"), true},
      {ZR_VT_BLOB, blob("ab"), blob("ac"), false},
      {ZR_VT_BLOB, Element{}, Element{}, false},
      {ZR_VT_REF, Element{}, number(ZrCreateREF()), true},
      {ZR_VT_SREF, Element{}, number(ZrCreateSREF()), true},
      {ZR_VT_UUID, number(ZRUUID{1, 2, 3, {4}}), number(ZRUUID{1, 2, 3, {4}}), true},
      {ZR_VT_UUID, number(ZRUUID{1, 2, 3, {4}}), number(ZRUUID{1, 2, 3, {4, 0, 0, 0, 0, 0, 0, 1}}), false},
      {ZR_VT_DISPATCH, number(static_cast<IZrDispatch*>(&g_object)), Element{}, false},
      {ZR_VT_VARIANT, variant(ZR_VT_R8, one), variant(ZR_VT_R8, close), true},
      {ZR_VT_VARIANT, variant(ZR_VT_R8, one), variant(ZR_VT_I8, one), false},
      {ZR_VT_VARIANT, variant(ZR_VT_VARIANT, one), variant(ZR_VT_VARIANT, one), false},  // can't be compared
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    const Array left = ArrayOf(row.tag, {row.left}), right = ArrayOf(row.tag, {row.right});
    uint8_t equal = 9;
    EXPECT_EQ(ZrSafeArrayCompare(left.get(), right.get(), &equal), ZR_R_OK);
    EXPECT_EQ(equal, row.equal ? 1 : 0);
    EXPECT_EQ(ZrSafeArrayCompare(left.get(), left.get(), &equal), ZR_R_OK);
    EXPECT_EQ(equal, 1) << "the same array, whatever its elements say";
  }
  const ZrSafeArrayBound bound = {2, 0};
  const Array without(ZrSafeArrayCreate(ZR_VT_I4, 0, &bound));
  const auto answer = [](const Array& left, const Array& right) {
    uint8_t equal = 9;
    EXPECT_EQ(ZrSafeArrayCompare(left.get(), right.get(), &equal), ZR_R_OK);
    return equal;
  };
  const Array plain = MakeArray(ZR_VT_I4, {{2, 0}});
  EXPECT_EQ(answer(plain, MakeArray(ZR_VT_R4, {{2, 0}})), 1) << "of different types";
  EXPECT_EQ(answer(plain, MakeArray(ZR_VT_I4, {{2, 1}})), 9) << "of different shapes";
  EXPECT_EQ(answer(plain, MakeArray(ZR_VT_I4, {{3, 0}})), 9);
  EXPECT_EQ(answer(plain, MakeArray(ZR_VT_I4, {{2, 0}, {1, 0}})), 9);
  EXPECT_EQ(answer(plain, without), 9);
  EXPECT_EQ(answer(without, plain), 1) << "the left one has no shape to compare";
}

// ---- In variants ---------------------------------------------------------------------------------------------------

TEST(Array, InVariantsIsTheirOwn) {
  const Owned text(Units(W("shared")));
  ZRSTR string = text;
  const uint32_t zero = 0;
  {
    Array strings = MakeArray(ZR_VT_STR, {{1, 0}});
    EXPECT_EQ(ZrSafeArrayPutElement(strings.get(), &zero, &string), ZR_R_OK);
    // An array of variants that hold arrays of variants that hold an array.
    OwnedVariant outer = InVariant(ZR_VT_STR, std::move(strings));
    for (uint32_t depth = 0; depth < 3; ++depth) {
      Array around = MakeArray(ZR_VT_VARIANT, {{1, 0}});
      EXPECT_EQ(ZrSafeArrayPutElement(around.get(), &zero, &outer), ZR_R_OK);
      EXPECT_EQ(ZrStringRefCount(text), 3u) << depth;
      outer = InVariant(ZR_VT_VARIANT, std::move(around));
      EXPECT_EQ(ZrStringRefCount(text), 2u) << depth;
    }
    OwnedVariant copy, behind;
    ZRVARIANT byRef = ByRef(outer);
    EXPECT_EQ(ZrVariantCopy(&copy, &outer), ZR_R_OK);
    EXPECT_EQ(ShowVariant(copy), ShowVariant(outer));
    EXPECT_EQ(ZrVariantCopyInd(&behind, &byRef), ZR_R_OK);
    EXPECT_EQ(ShowVariant(behind), ShowVariant(outer));
    EXPECT_EQ(ZrStringRefCount(text), 4u);
    uint8_t equal = 0;
    EXPECT_EQ(ZrVariantCompare(&copy, &behind, &equal), ZR_R_OK);
    EXPECT_EQ(equal, 1);
    EXPECT_EQ(ZrVariantChangeType(&copy, &copy, 0, ZR_VT_STR), ZR_R_FAILED) << "arrays don't convert";
    EXPECT_EQ(ShowVariant(copy), ShowVariant(outer));
    EXPECT_EQ(ZrVariantIsContentEmpty(&byRef), 0);
    const ZrSafeArrayBound none = {0, 0};
    EXPECT_EQ(ZrSafeArrayRedim(outer.Value.array, 1, &none), ZR_R_OK);
    EXPECT_EQ(ZrVariantIsContentEmpty(&byRef), 1);
    EXPECT_EQ(ZrVariantIsContentEmpty(&outer), 1);
    equal = 7;
    EXPECT_EQ(ZrVariantCompare(&copy, &outer, &equal), ZR_R_OK);
    EXPECT_EQ(equal, 7) << "of different shapes";
    byRef.Value.address = nullptr;
    EXPECT_EQ(ZrVariantCompare(&byRef, &byRef, &equal), ZR_R_OK);
    EXPECT_EQ(ZrVariantIsContentEmpty(&byRef), 0);
    EXPECT_EQ(ZrVariantCopyInd(&behind, &byRef), ZR_R_INVALID_POINTER);
    EXPECT_EQ(equal, 7);
    EXPECT_EQ(ZrStringRefCount(text), 2u) << "that of the copy is left";
  }
  EXPECT_EQ(ZrStringRefCount(text), 1u);
}

TEST(Array, InVariantsGivesTheArraysCodes) {
  const ZrSafeArrayBound bound = {0, 0};
  for (const bool isNull : {true, false}) {
    OwnedVariant from, to;
    from.Type = ZR_VT_I4 | ZR_VT_ARRAY;
    from.Value.array = isNull ? nullptr : ZrSafeArrayCreate(ZR_VT_I4, 0, &bound);
    const ZRRESULT refusal = isNull ? ZR_R_INVALID_POINTER : ZR_R_INVALID_OBJECT_STATE;
    EXPECT_EQ(ZrVariantCopy(&to, &from), refusal);
    EXPECT_TRUE(to.Type == from.Type && to.Value.array == nullptr);
    EXPECT_EQ(ZrVariantClear(&to), ZR_R_INVALID_POINTER);
    EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, ZR_VT_I4), ZR_R_OK) << "a copy that isn't told";
    EXPECT_EQ(ZrVariantChangeType(&to, &from, 0, ZR_VT_I8), ZR_R_FAILED);
    EXPECT_EQ(ZrVariantIsContentEmpty(&from), isNull ? 0 : 1);
    uint8_t equal = 7;
    EXPECT_EQ(ZrVariantCompare(&from, &to, &equal), ZR_R_INVALID_POINTER);
    EXPECT_EQ(equal, 7);
  }
}
