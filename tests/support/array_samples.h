// Arrays in the tests' terms: owners, elements of every type with the values at the edges, and both as text.

#pragma once

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/text.h"

// A variable for an element of any type.
union Element {
  ZRVARIANT variant;
  ZRVARIANTVALUE value;
  ZRUUID uuid;
};

struct ElementType {
  uint16_t tag;
  std::size_t width;
};
inline constexpr ElementType kElementTypes[] = {
    {ZR_VT_BOOL, 1},     {ZR_VT_I1, 1},      {ZR_VT_I2, 2},   {ZR_VT_I4, 4},      {ZR_VT_I8, 8},
    {ZR_VT_UI1, 1},      {ZR_VT_UI2, 2},     {ZR_VT_UI4, 4},  {ZR_VT_UI8, 8},     {ZR_VT_R4, 4},
    {ZR_VT_R8, 8},       {ZR_VT_TIME, 8},    {ZR_VT_CY, 8},   {ZR_VT_BYTE, 1},    {ZR_VT_WORD, 2},
    {ZR_VT_DWORD, 4},    {ZR_VT_QWORD, 8},   {ZR_VT_BLOB, 8}, {ZR_VT_CHAR32, 4},  {ZR_VT_UUID, 16},
    {ZR_VT_STR, 8},      {ZR_VT_REF, 8},     {ZR_VT_SREF, 8}, {ZR_VT_UNKNOWN, 8}, {ZR_VT_DISPATCH, 8},
    {ZR_VT_DATETIME, 8}, {ZR_VT_VARIANT, 16}};

inline std::size_t WidthOf(uint16_t tag) {
  for (const ElementType& type : kElementTypes) {
    if (type.tag == tag) return type.width;
  }
  return 0;
}

class CountedObject final : public IZrDispatch {
 public:
  uint32_t references = 0;
  uint32_t AddRef() override { return ++references; }
  uint32_t Release() override { return --references; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }
};

// A variant of the test's own.
struct Holder {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  Holder() = default;
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() { (void)ZrVariantClear(&variant); }
};

struct CDestroyArray {
  void operator()(ZRSAFEARRAY array) const { (void)ZrSafeArrayDestroy(array); }
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
  for (std::size_t index = 0; index < size; ++index) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", static_cast<const unsigned char*>(bytes)[index]);
    text += digits;
  }
  return text;
}

inline std::string Show(ZRSTR string) {
  if (string == nullptr) return "null";
  std::string text = "'";
  for (const WCHAR unit : ContentOf(string))
    text += unit >= ' ' && unit < 0x7F ? std::string(1, static_cast<char>(unit)) : Hex(&unit, 2);
  return text + "'";
}

inline std::string Show(ZRBLOB blob) {
  if (blob == nullptr) return "null";
  uint32_t length = 0;
  (void)ZrBlobByteLen(blob, &length);
  std::string bytes(length, 0);
  (void)ZrReadBlobPos(blob, bytes.data(), 0, length);
  return "blob" + Hex(bytes.data(), length);
}

inline std::string Show(const ZRREF* ref) { return ref != nullptr ? "ref" + Hex(ref, sizeof *ref) : "null"; }

std::string ShowVariant(const ZRVARIANT& variant);

inline std::string ShowElement(uint16_t tag, const void* at) {
  ZRVARIANTVALUE value;
  std::memcpy(&value, at, 8 < WidthOf(tag) ? 8 : WidthOf(tag));
  switch (tag) {
    case ZR_VT_STR:
      return Show(value.string);
    case ZR_VT_BLOB:
      return Show(value.blob);
    case ZR_VT_REF:
      return Show(value.ref);
    case ZR_VT_SREF:
      return value.sref == nullptr ? "null" : "{" + Show(value.sref->ref) + Show(value.sref->text) + "}";
    case ZR_VT_VARIANT: {
      ZRVARIANT variant;
      std::memcpy(&variant, at, sizeof variant);
      return ShowVariant(variant);
    }
    default:
      return Hex(at, WidthOf(tag));
  }
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
  for (const std::string& element : ShowEach(tag, array)) text += " " + element;
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
  const std::string head = "<" + Hex(&variant, 8) + " ";
  const uint16_t tag = variant.Type & ZR_VT_TYPEMASK;
  if ((variant.Type & ZR_VT_BYREF) == 0) {
    if ((variant.Type & ZR_VT_ARRAY) != 0) return head + ShowArray(variant.Value.array) + ">";
    if (tag == ZR_VT_UUID && variant.Value.uuid != nullptr) return head + Hex(variant.Value.uuid, 16) + ">";
    if (tag >= ZR_VT_STR && tag < ZR_VT_DISPATCH) return head + ShowElement(tag, &variant.Value) + ">";
    if (tag == ZR_VT_BLOB) return head + Show(variant.Value.blob) + ">";
  }
  return head + Hex(&variant.Value, 8) + ">";
}

// What becomes of an element that is copied by its family.
inline std::string CopiedAlone(uint16_t tag, const std::string& shown) {
  if (shown == "{nullnull}") return "null";
  return shown == "null" && tag == ZR_VT_STR ? "''" : shown;
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

  CountedObject object;

  // Fresh elements, which the array owns. Those of variants may refer to what this has.
  Array Make(uint16_t tag) { return ArrayOf(tag, Elements(tag)); }

 private:
  static constexpr int64_t kIntegers[] = {0,
                                          1,
                                          -1,
                                          2,
                                          97,
                                          127,
                                          128,
                                          -128,
                                          -129,
                                          255,
                                          256,
                                          32767,
                                          32768,
                                          -32768,
                                          -32769,
                                          65535,
                                          65536,
                                          INT32_MAX,
                                          INT32_MAX + int64_t{1},
                                          INT32_MIN,
                                          INT32_MIN - int64_t{1},
                                          UINT32_MAX,
                                          UINT32_MAX + int64_t{1},
                                          (int64_t{1} << 53) + 1,
                                          INT64_MAX,
                                          INT64_MAX - 512,
                                          INT64_MAX - 511,
                                          INT64_MIN,
                                          INT64_MIN + 1,
                                          INT64_MIN + 1024,
                                          INT64_MIN + 1025,
                                          INT64_MIN + 3072,
                                          -1024,
                                          -1025,
                                          0x1FFFFFF0FFFFFF,
                                          129753937230000001};
  static constexpr const char* kTexts[] = {"",
                                           "0",
                                           "12",
                                           "-1",
                                           "300",
                                           "99999999999999999999",
                                           "0x10",
                                           "1.5",
                                           "1e39",
                                           "TRUE",
                                           "false",
                                           "words",
                                           " 7",
                                           "7 ",
                                           "7d",
                                           "7f",
                                           "2012-03-04 05:06:07.0000008",
                                           "05:06:07.0000008",
                                           "1.2.3.4.5.6",
                                           "{00112233-4455-6677-8899-AABBCCDDEEFF}"};

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
    switch (tag) {
      case ZR_VT_R4:
        for (const double value : Reals())
          add(std::fabs(value) <= FLT_MAX || !std::isfinite(value) ? static_cast<float>(value) : FLT_MAX);
        break;
      case ZR_VT_R8:
        for (const double value : Reals()) add(value);
        break;
      case ZR_VT_STR:
        add(ZRSTR{});
        for (const char* text : kTexts) add(ZrCreateString(Widened(text).c_str()));
        break;
      case ZR_VT_BLOB:
        add(ZRBLOB{});
        for (const uint32_t length : {1u, 2u, 7u, 8u, 16u, 20u})
          add(ZrCreateBlob(length, "\x85\xC1\x34zyxwvutsrqponmlkj"));
        break;
      case ZR_VT_UUID:
        add(ZRUUID{});
        add(ZRUUID{0x12345678, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}});
        break;
      case ZR_VT_REF:
        for (const bool isNull : {false, true}) add(isNull ? nullptr : CopyOfRef());
        break;
      case ZR_VT_SREF:
        add(static_cast<ZRSREF*>(nullptr));
        for (int fields = 0; fields < 4; ++fields) {
          ZRSREF* sref = ZrCreateSREF();
          if ((fields & 1) != 0) sref->ref = CopyOfRef();
          if ((fields & 2) != 0) sref->text = ZrCreateString(W("6.5.4.3.2.1"));
          add(sref);
        }
        break;
      case ZR_VT_UNKNOWN:
      case ZR_VT_DISPATCH:
        add(static_cast<IZrUnknown*>(nullptr));
        add(static_cast<IZrDispatch*>(&object));
        object.AddRef();
        break;
      case ZR_VT_VARIANT:
        for (const ZRVARIANT& variant : Variants()) add(variant);
        break;
      default:
        for (const int64_t value : kIntegers) add(value);  // cut to the width by whoever stores it
    }
    return elements;
  }

  static ZRREF* CopyOfRef() {
    ZRREF* ref = ZrCreateREF();
    *ref = {{1, 2, 0xFFFFFFFF, 4, 5, 6}};
    return ref;
  }

  static ZRVARIANT Record(unsigned type, const void* address) {
    ZRVARIANT variant = ZR_VARIANT_INIT;
    variant.Type = static_cast<uint16_t>(type);
    variant.Value.address = const_cast<void*>(address);
    return variant;
  }

  // Each type by value, by reference, and by reference to a record of it; then what has no value.
  std::vector<ZRVARIANT> Variants() {
    if (behind_.empty()) MakeBehind();
    std::vector<ZRVARIANT> variants = behind_;
    for (const ZRVARIANT& record : records_) {
      variants.push_back(Record(ZR_VT_VARIANT | ZR_VT_BYREF, &record));
      (void)ZrVariantCopy(&variants.emplace_back(ZRVARIANT{}), &record);
    }
    variants.push_back(Record(ZR_VT_VARIANT | ZR_VT_BYREF, &link_));
    for (const ElementType& type : kElementTypes) {
      if (type.tag != ZR_VT_QWORD) variants.push_back(Record(type.tag | ZR_VT_BYREF, nullptr));
    }
    for (const unsigned odd : {0x0000u, 0x1000u, 0x4000u, 14u, 0x400Eu, 54u, 0x4036u, 0x8003u, 26u, 48u}) {
      variants.push_back(Record(odd, nullptr));
    }
    return variants;
  }

  void MakeBehind() {
    arrays_.push_back(MakeArray(ZR_VT_I4, {{2, 0}}));
    array_ = arrays_[0].get();
    for (const ElementType& type : kElementTypes) {
      if (type.tag == ZR_VT_VARIANT || type.tag == ZR_VT_UUID || type.tag == ZR_VT_QWORD) continue;
      const Content content = ContentOf(arrays_.emplace_back(Make(type.tag)).get());
      for (uint32_t index = 0; index < content.count; ++index) {
        behind_.push_back(Record(type.tag | ZR_VT_BYREF, content.data + index * type.width));
      }
    }
    behind_.push_back(Record(ZR_VT_UUID | ZR_VT_BYREF, &uuid_));
    behind_.push_back(Record(ZR_VT_QWORD | ZR_VT_BYREF, &address_));  // one conversion takes it for an address
    behind_.push_back(Record(ZR_VT_I4 | ZR_VT_ARRAY | ZR_VT_BYREF, &array_));
    for (const ZRVARIANT& byRef : behind_) (void)ZrVariantCopyInd(&records_.emplace_back(ZRVARIANT{}), &byRef);
    link_ = Record(ZR_VT_VARIANT | ZR_VT_BYREF, &records_[1]);
  }

  std::vector<Array> arrays_;
  std::vector<ZRVARIANT> behind_, records_;  // by reference, and what CopyInd makes of them
  ZRVARIANT link_{};
  ZRSAFEARRAY array_ = nullptr;
  ZRUUID value_{7, 6, 5, {4}}, *uuid_ = &value_;
  int64_t count_ = 5, *address_ = &count_;
};
