// Arrays in the tests' terms: owners, elements of every type with the values at the edges, and both as text.

#pragma once

#include <cfloat>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/variant_text.h"

// The string whose owners are counted: it is held wherever "common" is shown, as nobody makes another.
inline const Owned g_shared(Units(W("common")));

// All tags that elements can have.
inline constexpr uint16_t kElementTags[] = {
    ZR_VT_BOOL,    ZR_VT_I1,   ZR_VT_I2,    ZR_VT_I4,    ZR_VT_I8,   ZR_VT_UI1,     ZR_VT_UI2,
    ZR_VT_UI4,     ZR_VT_UI8,  ZR_VT_R4,    ZR_VT_R8,    ZR_VT_TIME, ZR_VT_CY,      ZR_VT_DATETIME,
    ZR_VT_BYTE,    ZR_VT_WORD, ZR_VT_DWORD, ZR_VT_QWORD, ZR_VT_BLOB, ZR_VT_UNKNOWN, ZR_VT_CHAR32,
    ZR_VT_VARIANT, ZR_VT_UUID, ZR_VT_STR,   ZR_VT_REF,   ZR_VT_SREF, ZR_VT_DISPATCH};

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
  const bool wasTaken = ZrSafeArrayUnlock(array) == ZR_R_OK;
  (void)ZrSafeArrayAccessData(array, &data);
  if (!wasTaken) (void)ZrSafeArrayUnaccessData(array);
  (void)ZrSafeArrayGetElementCount(array, &content.count, nullptr);
  content.data = static_cast<char*>(data);
  return content;
}

inline bool IsTime(uint16_t tag) { return tag == ZR_VT_TIME || tag == ZR_VT_DATETIME; }

// The plain name of what several types store in the same way.
inline uint16_t CanonicalTag(uint16_t tag) {
  static constexpr std::pair<uint16_t, uint16_t> kShared[] = {
      {ZR_VT_BOOL, ZR_VT_UI1},   {ZR_VT_BYTE, ZR_VT_UI1},  {ZR_VT_WORD, ZR_VT_UI2}, {ZR_VT_DWORD, ZR_VT_UI4},
      {ZR_VT_CHAR32, ZR_VT_UI4}, {ZR_VT_QWORD, ZR_VT_UI8}, {ZR_VT_TIME, ZR_VT_I8},  {ZR_VT_DATETIME, ZR_VT_I8}};
  for (const auto& [other, plain] : kShared) {
    if (other == tag) return plain;
  }
  return tag;
}

// The element as a variant, which owns nothing.
inline ZRVARIANT Lend(uint16_t tag, const char* element) {
  ZRVARIANT lent = ZR_VARIANT_INIT;
  lent.Type = IsTime(tag) ? tag : CanonicalTag(tag);
  if (tag == ZR_VT_VARIANT) {
    std::memcpy(&lent, element, sizeof lent);
  } else if (tag == ZR_VT_UUID) {
    lent.Value.address = const_cast<char*>(element);
  } else {
    std::memcpy(&lent.Value, element, WidthOf(tag));
  }
  return lent;
}

// What a put of the value is given.
inline const void* PayloadOf(uint16_t tag, const ZRVARIANT& value) {
  if (tag == ZR_VT_VARIANT) return &value;
  return tag == ZR_VT_UUID ? value.Value.address : &value.Value;
}

// Moves a value into an element.
inline bool Take(OwnedVariant& from, uint16_t tag, char* element) {
  if (const void* payload = PayloadOf(tag, from)) std::memcpy(element, payload, WidthOf(tag));
  if (tag != ZR_VT_UUID) (void)ZrVariantInit(&from);
  return true;
}

// An array of one dimension that takes the values.
inline Array ArrayOf(uint16_t tag, OwnedVariant* values, std::size_t count) {
  Array array = MakeArray(tag, {{static_cast<uint32_t>(count), -5}});
  for (char* to = ContentOf(array.get()).data; count-- > 0; to += WidthOf(tag)) (void)Take(*values++, tag, to);
  return array;
}

// ---- As text -------------------------------------------------------------------------------------------------------

std::string ShowArray(ZRSAFEARRAY array);

inline std::string ShowElement(uint16_t tag, const char* at) {
  const ZRVARIANT lent = Lend(tag, at);
  const bool holdsArray = (lent.Type & (ZR_VT_ARRAY | ZR_VT_BYREF)) == ZR_VT_ARRAY;
  return Describe(lent) + (holdsArray ? ShowArray(lent.Value.array) : "");
}

inline std::vector<std::string> ShowEach(uint16_t tag, ZRSAFEARRAY array) {
  const Content content = ContentOf(array);
  std::vector<std::string> shown;
  for (uint32_t index = 0; content.data != nullptr && index < content.count; ++index) {
    shown.push_back(ShowElement(tag, content.data + index * WidthOf(tag)));
  }
  return shown;
}

inline std::string ShowArray(ZRSAFEARRAY array) {
  if (array == nullptr) return "null";
  uint16_t tag = 0;
  uint32_t dimensions = 0;
  const ZrSafeArrayBound* bounds = nullptr;
  (void)ZrSafeArrayGetVartype(array, &tag);
  (void)ZrSafeArrayGetBounds(array, &dimensions, &bounds);
  std::string text = "[tag " + std::to_string(tag) + ":";
  for (; dimensions > 0; --dimensions, ++bounds)
    text += Format(" %u from %d,", bounds->elementCount, bounds->lowerBound);
  for (const std::string& element : ShowEach(tag, array)) text += " " + element + ";";
  return text + "]";
}

// ---- Elements at the edges -----------------------------------------------------------------------------------------

inline std::vector<std::string> RealTexts() {
  std::vector<std::string> texts = {"5e-324", "0.1", "-0.5", "1e300", "1.8e308", "nan", "inf", "-inf", "-0.0"};
  for (const double bound : {0.0, -128.0, 127.0, 255.0, -32768.0, 32767.0, 65535.0, -0x1p31, 0x1p31 - 1, 0x1p32 - 1,
                             -0x1p63, 0x1p63, 0x1p64, double{FLT_MAX}, -double{FLT_MAX}, DBL_MAX, -DBL_MAX}) {
    for (const double value : {bound, bound + 0.5, bound - 0.5, std::nextafter(bound, INFINITY),
                               std::nextafter(bound, -INFINITY), bound * (1 - 0x1p-23), bound * (1 + 0x1p-23)}) {
      texts.push_back(Format("%.17g", value));
    }
  }
  return texts;
}

inline std::vector<std::string> TextsOf(uint16_t tag) {
  // clang-format off
  switch (tag) {
    case ZR_VT_R4:
    case ZR_VT_R8:
      return RealTexts();
    case ZR_VT_STR:
      return {"common", "null", "", "12", "-1", "1.5", "TRUE", "words", "2012-03-04 05:06:07.0000008",
              "05:06:07.0000008", "1.2.3.4.5.6", "{00112233-4455-6677-8899-AABBCCDDEEFF}"};
    case ZR_VT_BLOB:
      return {"85", "null", "", "85c1347a797877", "85c1347a79787776", "85c1347a797877767574737271706f6e"};
    case ZR_VT_UUID:
      return {"{00000000-0000-0000-0000-000000000000}", "{12345678-0002-0003-0405-060708090A0B}"};
    case ZR_VT_REF:
      return {"0.0.0.0.0.0", "null", "1.2.4294967295.4.5.6"};
    case ZR_VT_SREF:
      return {"1.2.4294967295.4.5.6 text common", "null", "neither", "1.2.3.4.5.6", "text 1.2.3.4.5.6", "text name"};
    case ZR_VT_UNKNOWN:
    case ZR_VT_DISPATCH:
      return {"object", "null"};
    default:  // integers, cut to their width
      return {"0", "1", "-1", "2", "97", "127", "128", "-128", "-129", "255", "256", "32767", "32768", "-32768",
              "-32769", "65535", "65536", "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295",
              "4294967296", "9007199254740993", "9007195277791231", "9223372036854775807", "9223372036854775295",
              "9223372036854775296", "-9223372036854775808", "-9223372036854775807", "-9223372036854774784",
              "-9223372036854774783", "-9223372036854772736", "-1024", "-1025", "129753937230000001"};
  }
  // clang-format on
}

inline std::vector<OwnedVariant> ValuesOf(uint16_t tag) {
  std::vector<OwnedVariant> values;
  for (const std::string& text : TextsOf(tag)) {
    ZRVARIANTVALUE& value = values.emplace_back(NameOf(tag)->name + (" " + text)).Value;
    if (text.find("common") == std::string::npos) continue;
    ZRSTR& string = tag == ZR_VT_STR ? value.string : value.sref->text;
    ZrDestroyString(std::exchange(string, ZrCopyString(g_shared)));
  }
  return values;
}

class Samples {
 public:
  Samples() = default;
  Samples(const Samples&) = delete;

  // Fresh values of elements. Those of variants may refer to what this has.
  std::vector<OwnedVariant> Of(uint16_t tag) { return tag == ZR_VT_VARIANT ? Variants() : ValuesOf(tag); }
  Array Make(uint16_t tag) {
    std::vector<OwnedVariant> values = Of(tag);
    return ArrayOf(tag, values.data(), values.size());
  }

 private:
  static std::vector<OwnedVariant> Records() {
    static const int64_t kCount = 5;
    std::vector<OwnedVariant> records;
    for (const uint16_t tag : kElementTags) {
      if (tag == ZR_VT_VARIANT || tag == ZR_VT_QWORD) continue;
      for (OwnedVariant& value : ValuesOf(tag)) records.push_back(std::move(value));
    }
    for (const char* text :
         {"UNKNOWN+8000 object", "DISPATCH+1000 object", "STR+9000 12", "BOOL+1000 2", "R8+8000 2", "QWORD 0"}) {
      records.push_back(Value(text));
    }
    records.back().Value.ui8 = reinterpret_cast<uintptr_t>(&kCount);  // one conversion takes it for an address
    for (const uint16_t tag : std::initializer_list<uint16_t>{ZR_VT_I4, ZR_VT_UNKNOWN, ZR_VT_VARIANT}) {
      records.push_back(InVariant(tag, MakeArray(tag, {{2, 0}})));
    }
    for (const int odd : {0x0000, 0x1000, 0x4000, 14, 0x400E, 54, 0x4036, 0x8003, 26, ZR_VT_STR | ZR_VT_ARRAY}) {
      records.emplace_back().Type = static_cast<uint16_t>(odd);
    }
    return records;
  }

  // Each record itself, by reference to its value, and by reference to it; then what refers to nothing.
  std::vector<OwnedVariant> Variants() {
    std::vector<OwnedVariant> variants = Records();
    const auto add = [&](const ZRVARIANT& variant) { static_cast<ZRVARIANT&>(variants.emplace_back()) = variant; };
    for (OwnedVariant& record : behind_) add(ByRef(record));
    for (OwnedVariant& record : behind_) add(ByRef(ZR_VT_VARIANT, &record));
    for (const uint16_t tag : kElementTags) {
      if (tag != ZR_VT_QWORD) add(ByRef(tag, nullptr));
    }
    add(ByRef(link_));
    variants.emplace_back().Type = ZR_VT_VARIANT;
    return variants;
  }

  std::vector<OwnedVariant> behind_ = Records();
  ZRVARIANT link_ = ByRef(ZR_VT_VARIANT, &behind_[1]);
};
