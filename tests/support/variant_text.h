// Variants in a text form, so that a case is one line:
//
//     I4 -7       BOOL 2      R8 1.5      OPAQUE 9     BLOB 01ff     STR text     REF 1.2.3.4.5.6     UUID {...}
//     SREF 1.2.3.4.5.6     SREF text name     SREF 1.2.3.4.5.6 text name     SREF neither     UNKNOWN object
//     STR null    (and likewise every kind that may be null)
//     14 7f       a tag without a name, and Value in hexadecimal; EMPTY alike, where Value isn't zero
//
// Behind the name "+1000" tells bits of the tag word that aren't the tag, "*" a by-reference record. What should not be
// there is told at the end: bytes of Value behind a narrow number, and "~" for marker words other than a new value's.

#pragma once

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/support/text.h"

// An object that counts who holds it. One for all: tests look at differences.
struct CountedObject final : IZrDispatch {
  uint32_t references = 0;
  uint32_t AddRef() override { return ++references; }
  uint32_t Release() override { return --references; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }
};
inline CountedObject g_object;

struct TagName {
  uint16_t tag;
  const char* name;
  std::size_t width;
  bool isSigned = false;
};
inline constexpr TagName kTagNames[] = {
    {ZR_VT_EMPTY, "EMPTY", 0},
    {ZR_VT_BOOL, "BOOL", 1},
    {ZR_VT_I1, "I1", 1, true},
    {ZR_VT_I2, "I2", 2, true},
    {ZR_VT_I4, "I4", 4, true},
    {ZR_VT_I8, "I8", 8, true},
    {ZR_VT_UI1, "UI1", 1},
    {ZR_VT_UI2, "UI2", 2},
    {ZR_VT_UI4, "UI4", 4},
    {ZR_VT_UI8, "UI8", 8},
    {ZR_VT_R4, "R4", 4},
    {ZR_VT_R8, "R8", 8},
    {ZR_VT_TIME, "TIME", 8, true},
    {ZR_VT_CY, "CY", 8, true},
    {ZR_VT_DATETIME, "DATETIME", 8, true},
    {ZR_VT_BYTE, "BYTE", 1},
    {ZR_VT_WORD, "WORD", 2},
    {ZR_VT_DWORD, "DWORD", 4},
    {ZR_VT_QWORD, "QWORD", 8},
    {ZR_VT_BLOB, "BLOB", 8},
    {ZR_VT_UNKNOWN, "UNKNOWN", 8},
    {ZR_VT_OPAQUE, "OPAQUE", 8},
    {ZR_VT_CHAR32, "CHAR32", 4},
    {ZR_VT_VARIANT, "VARIANT", 8},
    {ZR_VT_UUID, "UUID", 8},
    {ZR_VT_STR, "STR", 8},
    {ZR_VT_REF, "REF", 8},
    {ZR_VT_SREF, "SREF", 8},
    {ZR_VT_DISPATCH, "DISPATCH", 8},
};

inline const TagName* NameOf(unsigned tag) {
  for (const TagName& row : kTagNames) {
    if (row.tag == tag) return &row;
  }
  return nullptr;
}

// One unit a byte, zeros among them.
inline Owned StringOf(const std::string& bytes) {
  Units units;
  for (char byte : bytes) units += static_cast<unsigned char>(byte);
  return Owned(units);
}

inline std::string BytesOf(ZRBLOB blob) {
  uint32_t length = 0;
  (void)ZrBlobByteLen(blob, &length);
  std::string bytes(length, 0);
  (void)ZrReadBlobPos(blob, bytes.data(), 0, length);
  return bytes;
}

// A record that is cleared at the end.
struct OwnedVariant : ZRVARIANT {
  OwnedVariant() : ZRVARIANT ZR_VARIANT_INIT {}
  OwnedVariant(OwnedVariant&& other) noexcept : ZRVARIANT(other) { (void)ZrVariantInit(&other); }
  OwnedVariant& operator=(OwnedVariant&& other) noexcept {
    std::swap(static_cast<ZRVARIANT&>(*this), static_cast<ZRVARIANT&>(other));
    return *this;
  }
  ~OwnedVariant() { (void)ZrVariantClear(this); }

  explicit OwnedVariant(const std::string& text) : OwnedVariant() {
    const std::size_t nameEnd = text.find_first_of("+ "), end = text.find(' ');
    const std::string name = text.substr(0, nameEnd);
    const std::string rest = end == std::string::npos ? "" : text.substr(end + 1);
    if (nameEnd != end) Type = static_cast<uint16_t>(std::strtoul(text.c_str() + nameEnd + 1, nullptr, 16));
    for (const TagName& row : kTagNames) {
      if (name != row.name) continue;
      Type = static_cast<uint16_t>(Type | row.tag);
      if (rest != "null") Fill(row, rest);
      return;
    }
    Type = static_cast<uint16_t>(Type | std::strtoul(name.c_str(), nullptr, 10));
    Value.ui8 = std::strtoull(rest.c_str(), nullptr, 16);
  }

 private:
  void Fill(const TagName& row, const std::string& rest) {
    ZRVARIANTVALUE& value = Value;
    switch (row.tag) {
      case ZR_VT_EMPTY:
        value.ui8 = std::strtoull(rest.c_str(), nullptr, 16);
        break;
      case ZR_VT_R4:
        value.r4 = std::strtof(rest.c_str(), nullptr);
        break;
      case ZR_VT_R8:
        value.r8 = std::strtod(rest.c_str(), nullptr);
        break;
      case ZR_VT_BLOB: {
        std::string bytes;
        for (std::size_t at = 0; at < rest.size(); at += 2) {
          bytes += static_cast<char>(std::strtoul(rest.substr(at, 2).c_str(), nullptr, 16));
        }
        // There is no way to make an empty one but to empty one.
        value.blob = ZrCreateBlob(bytes.empty() ? 1 : static_cast<uint32_t>(bytes.size()), bytes.data());
        if (bytes.empty()) (void)ZrRemoveBlob(value.blob, 0, 1);
        break;
      }
      case ZR_VT_UNKNOWN:
      case ZR_VT_DISPATCH:
        if (row.tag == ZR_VT_UNKNOWN) value.unknown = &g_object;
        if (row.tag == ZR_VT_DISPATCH) value.dispatch = &g_object;
        g_object.AddRef();
        break;
      case ZR_VT_UUID:
        value.uuid = ZrCreateUUID();
        (void)ZrUUIDFromString(rest.c_str(), value.uuid);
        break;
      case ZR_VT_STR:
        value.string = ZrCopyString(StringOf(rest));
        break;
      case ZR_VT_REF:
        (void)ZrStringToREF(StringOf(rest), &value.ref);
        break;
      case ZR_VT_SREF: {
        value.sref = ZrCreateSREF();
        const std::size_t text = rest.find("text ");
        if (text != std::string::npos) value.sref->text = ZrCopyString(StringOf(rest.substr(text + 5)));
        if (text != 0) (void)ZrStringToREF(StringOf(rest.substr(0, text)), &value.sref->ref);
        break;
      }
      default: {
        const uint64_t number = row.isSigned ? static_cast<uint64_t>(std::strtoll(rest.c_str(), nullptr, 10))
                                             : std::strtoull(rest.c_str(), nullptr, 10);
        std::memcpy(&value, &number, row.width);
      }
    }
  }
};

// What a destination holds before it is written to: a reference of its own on a string that nobody else holds.
inline const Owned g_before(Units(W("before")));

inline OwnedVariant Before() {
  OwnedVariant variant;
  variant.Type = ZR_VT_STR;
  variant.Value.string = ZrCopyString(g_before);
  return variant;
}

inline OwnedVariant Value(const std::string& text) { return OwnedVariant(text); }

// A record without an owner that refers to this one.
inline ZRVARIANT ByRef(ZRVARIANT& behind) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  const bool isRecord = (behind.Type & ~0x9000) == (ZR_VT_VARIANT | ZR_VT_BYREF);
  variant.Type = behind.Type | ZR_VT_BYREF;
  variant.Value.address = isRecord ? static_cast<void*>(&behind) : &behind.Value;
  return variant;
}
inline ZRVARIANT ByRef(uint16_t tag, void* address) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  variant.Type = tag | ZR_VT_BYREF;
  variant.Value.address = address;
  return variant;
}

template <class... Arguments>
std::string Format(const char* format, Arguments... arguments) {
  char text[400];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

inline std::string DescribeText(ZRSTR string) {
  std::string text;
  for (WCHAR unit : ContentOf(string)) {
    text += unit <= 0xFF ? std::string(1, static_cast<char>(unit)) : Format("\\u%04x", unsigned{unit});
  }
  return text;
}
inline std::string Describe(const ZRREF& ref) {
  const uint32_t* w = ref.words;
  return Format("%u.%u.%u.%u.%u.%u", w[0], w[1], w[2], w[3], w[4], w[5]);
}

inline std::string DescribePayload(const TagName& row, const ZRVARIANTVALUE& value) {
  const bool isPointer = row.tag == ZR_VT_BLOB || row.tag == ZR_VT_UNKNOWN || row.tag >= ZR_VT_UUID;
  if (isPointer && value.address == nullptr) return "null";
  std::string text;
  switch (row.tag) {
    case ZR_VT_R4:
      text = Format("%.9g", double{value.r4});
      break;
    case ZR_VT_R8:
      text = Format("%.17g", value.r8);
      break;
    case ZR_VT_BLOB:
      for (char byte : BytesOf(value.blob)) text += Format("%02x", static_cast<unsigned char>(byte));
      return text;
    case ZR_VT_UNKNOWN:
      return value.unknown == &g_object ? "object" : "?";
    case ZR_VT_DISPATCH:
      return value.dispatch == &g_object ? "object" : "?";
    case ZR_VT_UUID: {
      ZRSTR string = nullptr;
      (void)ZrStringFromUUID(value.uuid, &string);
      return DescribeText(Owned(string));
    }
    case ZR_VT_STR:
      return DescribeText(value.string);
    case ZR_VT_REF:
      return Describe(*value.ref);
    case ZR_VT_SREF:
      if (value.sref->ref == nullptr && value.sref->text == nullptr) return "neither";
      if (value.sref->ref != nullptr) text = Describe(*value.sref->ref);
      if (value.sref->text == nullptr) return text;
      return text + (text.empty() ? "text " : " text ") + DescribeText(value.sref->text);
    default: {
      uint64_t number = 0;
      std::memcpy(&number, &value, row.width);
      const unsigned unused = static_cast<unsigned>(64 - 8 * row.width);
      if (row.isSigned) {
        text = Format("%" PRId64, static_cast<int64_t>(number << unused) >> unused);
      } else {
        text = Format("%" PRIu64, number);
      }
    }
  }
  if (row.width < 8 && value.ui8 >> 8 * row.width != 0)
    text += Format(" behind it %" PRIx64, value.ui8 >> 8 * row.width);
  return text;
}

inline std::string Describe(const ZRVARIANT& variant) {
  const unsigned bits = variant.Type & ~unsigned{ZR_VT_TYPEMASK}, tag = variant.Type & ZR_VT_TYPEMASK;
  const TagName* row = NameOf(tag);
  std::string text = row != nullptr ? row->name : std::to_string(tag);
  if ((bits & ~unsigned{ZR_VT_BYREF}) != 0) text += Format("+%04x", bits & ~unsigned{ZR_VT_BYREF});
  if ((bits & (ZR_VT_ARRAY | ZR_VT_BYREF)) != 0) {
    text += (bits & ZR_VT_BYREF) != 0 ? Format("* %" PRIx64, variant.Value.ui8) : " array";
  } else if (tag == ZR_VT_EMPTY || row == nullptr) {
    if (variant.Value.ui8 != 0) text += Format(" %" PRIx64, variant.Value.ui8);
  } else {
    text += ' ';
    text += DescribePayload(*row, variant.Value);
  }
  const bool isMarked = variant.Reserved1 == 0x41 && variant.Reserved2 == 0x4D && variant.Reserved3 == 0x43;
  return isMarked ? text : text + " ~";
}
