// Arrays in the tests' terms: owners, elements of every type with the values at the edges, and both as text.

#pragma once

#include <array>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/variant_text.h"

// The string whose owners are counted; wherever this very one is held, " shared" is shown.
inline const Owned g_shared(Units(W("common")));

// A variable for an element of any type.
union Element {
  ZRVARIANT variant;
  ZRVARIANTVALUE value;
  ZRUUID uuid;
};

// All tags that elements can have.
inline constexpr auto kElementTags = [] {
  std::array<uint16_t, std::size(kTagNames) - 2> tags{};
  std::size_t count = 0;
  for (const TagName& row : kTagNames) {
    if (row.tag != ZR_VT_EMPTY && row.tag != ZR_VT_OPAQUE) tags[count++] = row.tag;
  }
  return tags;
}();

inline std::size_t WidthOf(uint16_t tag) {
  return tag == ZR_VT_UUID || tag == ZR_VT_VARIANT ? 16 : NameOf(tag)->width;  // as they are, in arrays
}

struct CDestroyArray {
  void operator()(ZRSAFEARRAY array) const { EXPECT_EQ(ZrSafeArrayDestroy(array), ZR_R_OK); }
};
using Array = std::unique_ptr<ZrSafeArrayDescriptor, CDestroyArray>;

inline Array MakeArray(uint16_t tag, const std::vector<ZrSafeArrayBound>& bounds) {
  return Array(ZrSafeArrayCreate(tag, static_cast<uint32_t>(bounds.size()), bounds.data()));
}
inline Array CopyOf(ZRSAFEARRAY source) {
  ZRSAFEARRAY copy = nullptr;
  (void)ZrSafeArrayCopy(source, &copy);
  return Array(copy);
}
inline OwnedVariant InVariant(uint16_t tag, Array array) {
  OwnedVariant variant;
  variant.Type = tag | ZR_VT_ARRAY;
  variant.Value.array = array.release();
  return variant;
}

// The elements of an array, whether the flag is taken or not.
struct Content {
  char* data = nullptr;
  uint32_t count = 0;
};
inline Content ContentOf(ZRSAFEARRAY array) {
  void* data = nullptr;
  Content content;
  const bool wasTaken = ZrSafeArrayLock(array) != ZR_R_OK;
  (void)ZrSafeArrayUnlock(array);
  (void)ZrSafeArrayAccessData(array, &data);
  if (!wasTaken) (void)ZrSafeArrayUnaccessData(array);
  (void)ZrSafeArrayGetElementCount(array, &content.count, nullptr);
  content.data = static_cast<char*>(data);
  return content;
}

// An array of one dimension that takes the elements.
inline Array ArrayOf(uint16_t tag, const std::vector<Element>& elements) {
  Array array = MakeArray(tag, {{static_cast<uint32_t>(elements.size()), -5}});
  char* to = ContentOf(array.get()).data;
  for (const Element& element : elements)
    to = static_cast<char*>(std::memcpy(to, &element, WidthOf(tag))) + WidthOf(tag);
  return array;
}

// ---- As text -------------------------------------------------------------------------------------------------------

inline std::string Hex(const void* bytes, std::size_t size) {
  std::string text;
  for (std::size_t at = 0; at < size; ++at) text += Format("%02x", static_cast<const unsigned char*>(bytes)[at]);
  return text;
}

inline std::string ShowOwner(uint16_t tag, const ZRVARIANTVALUE& value) {
  ZRSTR text = tag == ZR_VT_STR                             ? value.string
               : tag == ZR_VT_SREF && value.sref != nullptr ? value.sref->text
                                                            : nullptr;
  return text == g_shared.string ? " shared" : "";
}

std::string ShowVariant(const ZRVARIANT& variant);

// Numbers and UUIDs by their bytes.
inline std::string ShowElement(uint16_t tag, const void* at) {
  Element element{};
  std::memcpy(&element, at, WidthOf(tag));
  if (tag == ZR_VT_VARIANT) return ShowVariant(element.variant);
  const bool isPointer = tag == ZR_VT_BLOB || tag == ZR_VT_UNKNOWN || tag >= ZR_VT_STR;
  if (!isPointer) return Hex(at, WidthOf(tag));
  return DescribePayload(*NameOf(tag), element.value) + ShowOwner(tag, element.value);
}

inline std::vector<std::string> ShowEach(uint16_t tag, ZRSAFEARRAY array) {
  const Content content = ContentOf(array);
  std::vector<std::string> shown;
  for (uint32_t index = 0; content.data != nullptr && index < content.count; ++index) {
    shown.push_back(ShowElement(tag, content.data + index * WidthOf(tag)));
  }
  return shown;
}

inline std::string ShowElements(ZRSAFEARRAY array) {
  uint16_t tag = 0;
  (void)ZrSafeArrayGetVartype(array, &tag);
  std::string text = "tag " + std::to_string(tag) + ":";
  for (const std::string& element : ShowEach(tag, array)) text += " " + element + ";";
  return text;
}

inline std::string ShowArray(ZRSAFEARRAY array) {
  if (array == nullptr) return "null";
  uint32_t dimensions = 0;
  const ZrSafeArrayBound* bounds = nullptr;
  (void)ZrSafeArrayGetBounds(array, &dimensions, &bounds);
  return "[" + Hex(bounds, dimensions * sizeof *bounds) + " " + ShowElements(array) + "]";
}

inline std::string ShowVariant(const ZRVARIANT& variant) {
  const bool holdsArray = (variant.Type & (ZR_VT_ARRAY | ZR_VT_BYREF)) == ZR_VT_ARRAY;
  return Describe(variant) + (holdsArray ? ShowArray(variant.Value.array) : ShowOwner(variant.Type, variant.Value));
}

// What becomes of an element that is copied by its family.
inline std::string CopiedAlone(uint16_t tag, const std::string& shown) {
  if (tag == ZR_VT_SREF && shown == "neither") return "null";
  return tag == ZR_VT_STR && shown == "null" ? "" : shown;
}

// ---- Elements at the edges -----------------------------------------------------------------------------------------

class Samples {
 public:
  Samples() = default;
  Samples(const Samples&) = delete;
  Samples& operator=(const Samples&) = delete;
  ~Samples() {
    for (ZRVARIANT& record : records_) (void)ZrVariantClear(&record);
  }

  // Fresh elements, which the array owns. Those of variants may refer to what this has.
  Array Make(uint16_t tag) { return ArrayOf(tag, Elements(tag)); }

 private:
  // clang-format off
  static constexpr int64_t kIntegers[] = {
      0, 1, -1, 2, 97, 127, 128, -128, -129, 255, 256, 32767, 32768, -32768, -32769, 65535, 65536,
      INT32_MAX, INT32_MAX + int64_t{1}, INT32_MIN, INT32_MIN - int64_t{1}, UINT32_MAX, UINT32_MAX + int64_t{1},
      (int64_t{1} << 53) + 1, 0x1FFFFFF0FFFFFF, INT64_MAX, INT64_MAX - 512, INT64_MAX - 511,
      INT64_MIN, INT64_MIN + 1, INT64_MIN + 1024, INT64_MIN + 1025, INT64_MIN + 3072, -1024, -1025, 129753937230000001};
  static constexpr const char* kTexts[] = {
      "", "0", "12", "-1", "300", "99999999999999999999", "0x10", "1.5", "1e39", "TRUE", "false", "words", " 7", "7 ",
      "7d", "7f", "2012-03-04 05:06:07.0000008", "05:06:07.0000008", "1.2.3.4.5.6",
      "{00112233-4455-6677-8899-AABBCCDDEEFF}"};
  // clang-format on

  static std::vector<double> Reals() {
    std::vector<double> reals = {-0.0, 5e-324, 0.1, -0.5, 1e300, DBL_MAX, -DBL_MAX, NAN, INFINITY, -INFINITY};
    for (const double bound : {0.0, -128.0, 127.0, 255.0, -32768.0, 32767.0, 65535.0, -0x1p31, 0x1p31 - 1, 0x1p32 - 1,
                               -0x1p63, 0x1p63, 0x1p64, double{FLT_MAX}, -double{FLT_MAX}}) {
      for (const double value : {bound, bound + 0.5, bound - 0.5, std::nextafter(bound, INFINITY),
                                 std::nextafter(bound, -INFINITY), bound * (1 - 0x1p-23), bound * (1 + 0x1p-23)}) {
        reals.push_back(value);
      }
    }
    return reals;
  }

  std::vector<Element> Elements(uint16_t tag) {
    std::vector<Element> elements;
    const auto add = [&](const auto& value) {
      Element element{};
      std::memcpy(&element, &value, sizeof value);
      elements.push_back(element);
    };
    const auto addEach = [&](std::initializer_list<const char*> texts) {
      for (const char* text : texts) {
        OwnedVariant variant = Value(std::string(NameOf(tag)->name) + " " + text);
        add(std::exchange(variant.Value, {}));
      }
    };
    switch (tag) {
      case ZR_VT_R4:
        for (const double value : Reals())
          add(std::fabs(value) <= FLT_MAX || !std::isfinite(value) ? static_cast<float>(value) : FLT_MAX);
        break;
      case ZR_VT_R8:
        for (const double value : Reals()) add(value);
        break;
      case ZR_VT_STR:
        addEach({"null"});
        add(ZrCopyString(g_shared));
        for (const char* text : kTexts) addEach({text});
        break;
      case ZR_VT_BLOB:
        addEach({"null", "", "85", "85c1", "85c1347a797877", "85c1347a79787776", "85c1347a797877767574737271706f6e",
                 "85c1347a797877767574737271706f6e6d6c6b6a"});
        break;
      case ZR_VT_UUID:
        add(ZRUUID{});
        add(ZRUUID{0x12345678, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}});
        break;
      case ZR_VT_REF:
        addEach({"null", "1.2.4294967295.4.5.6"});
        break;
      case ZR_VT_SREF:
        addEach({"null", "neither", "1.2.4294967295.4.5.6", "text 6.5.4.3.2.1", "1.2.3.4.5.6 text name"});
        elements.back().value.sref->text = (ZrDestroyString(elements.back().value.sref->text), ZrCopyString(g_shared));
        break;
      case ZR_VT_UNKNOWN:
      case ZR_VT_DISPATCH:
        addEach({"null", "object"});
        break;
      case ZR_VT_VARIANT:
        for (const ZRVARIANT& variant : Variants()) add(variant);
        break;
      default:
        for (const int64_t value : kIntegers) add(value);  // cut to the width by whoever stores it
    }
    return elements;
  }

  // Each type by value, by reference, and by reference to a record of it; then what has no value.
  std::vector<ZRVARIANT> Variants() {
    if (behind_.empty()) MakeBehind();
    std::vector<ZRVARIANT> variants = behind_;
    for (ZRVARIANT& record : records_) {
      variants.push_back(ByRef(ZR_VT_VARIANT, &record));
      (void)ZrVariantCopy(&variants.emplace_back(ZRVARIANT{}), &record);
    }
    variants.push_back(ByRef(ZR_VT_VARIANT, &link_));
    for (const uint16_t tag : kElementTags) {
      if (tag != ZR_VT_QWORD) variants.push_back(ByRef(tag, nullptr));
    }
    for (const int odd :
         {0x0000, 0x1000, 0x4000, 14, 0x400E, 54, 0x4036, 0x8003, 26, 48, ZR_VT_STR, ZR_VT_STR | ZR_VT_ARRAY}) {
      variants.push_back(ZR_VARIANT_INIT);
      variants.back().Type = static_cast<uint16_t>(odd);
    }
    return variants;
  }

  void MakeBehind() {
    for (const uint16_t tag : kElementTags) {
      if (tag == ZR_VT_VARIANT || tag == ZR_VT_UUID || tag == ZR_VT_QWORD) continue;
      const Content content = ContentOf(arrays_.emplace_back(Make(tag)).get());
      for (uint32_t at = 0; at < content.count; ++at) behind_.push_back(ByRef(tag, content.data + at * WidthOf(tag)));
    }
    behind_.push_back(ByRef(ZR_VT_UUID, &uuid_));
    behind_.push_back(ByRef(ZR_VT_QWORD, &address_));  // one conversion takes it for an address
    ZRSAFEARRAY* handle = handles_;
    for (const int tag : {ZR_VT_I4, ZR_VT_UNKNOWN, ZR_VT_VARIANT}) {
      *handle = arrays_.emplace_back(MakeArray(static_cast<uint16_t>(tag), {{2, 0}})).get();
      behind_.push_back(ByRef(static_cast<uint16_t>(tag | ZR_VT_ARRAY), handle++));
    }
    for (const ZRVARIANT& byRef : behind_) (void)ZrVariantCopyInd(&records_.emplace_back(ZRVARIANT{}), &byRef);
    for (const char* text :
         {"UNKNOWN+8000 object", "DISPATCH+1000 object", "STR+9000 12", "BOOL+1000 2", "R8+8000 2"}) {
      const OwnedVariant variant = Value(text);
      (void)ZrVariantCopy(&records_.emplace_back(ZRVARIANT{}), &variant);
    }
    link_ = ByRef(ZR_VT_VARIANT, &records_[1]);
  }

  std::vector<Array> arrays_;
  std::vector<ZRVARIANT> behind_, records_;  // by reference, and what CopyInd makes of them
  ZRVARIANT link_{};
  ZRSAFEARRAY handles_[3]{};
  ZRUUID value_{7, 6, 5, {4}}, *uuid_ = &value_;
  int64_t count_ = 5, *address_ = &count_;
};
