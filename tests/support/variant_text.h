// Variants in a text form, so that a case is one line:
//
//     I4 -7       BOOL 2      R8 1.5      OPAQUE 9     BLOB 01ff     STR text     REF 1.2.3.4.5.6     UUID {...}
//     SREF 1.2.3.4.5.6     SREF text name     SREF 1.2.3.4.5.6 text name     SREF neither     UNKNOWN object
//     STR null    (and likewise every kind that may be null)
//     14 7        a tag without a name, and Value; EMPTY and by-reference records alike, all in hexadecimal where told
//
// Behind the name "+1000" tells bits of the tag word that aren't the tag. What should not be there is told at the end:
// bytes of Value behind a narrow number, and "~" for marker words other than a new value's.

#pragma once

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/tag_names.h"
#include "tests/support/text.h"

// An object that counts who holds it. One for all: tests look at differences.
struct CountedObject final : IZrDispatch {
  uint32_t references = 0;
  uint32_t AddRef() override { return ++references; }
  uint32_t Release() override { return --references; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }
};
inline CountedObject g_object;

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
    unsigned long word = std::strtoul(name.c_str(), nullptr, 10);
    if (nameEnd != end) word |= std::strtoul(text.c_str() + nameEnd + 1, nullptr, 16);
    for (const TagName& row : kTagNames) {
      if (name == row.name) word |= row.tag;
    }
    Type = static_cast<uint16_t>(word);
    const TagName* row = NameOf(word & (ZR_VT_TYPEMASK | ZR_VT_BYREF));
    if (rest != "null") Fill(row != nullptr && row->width != 0 ? *row : *NameOf(ZR_VT_OPAQUE), rest);
  }

 private:
  void Fill(const TagName& row, const std::string& rest) {
    ZRVARIANTVALUE& value = Value;
    switch (row.tag) {
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
        const uint64_t number = std::strtoull(rest.c_str(), nullptr, 10);  // one below 0 as its complement
        std::memcpy(&value, &number, row.width);
      }
    }
  }
};

inline OwnedVariant Value(const std::string& text) { return OwnedVariant(text); }

// What a destination holds before it is written to: a reference of its own on a string that nobody else holds.
inline const Owned g_before(Units(W("before")));

inline OwnedVariant Before() {
  OwnedVariant variant = Value("STR null");
  variant.Value.string = ZrCopyString(g_before);
  return variant;
}

// A record without an owner that refers to a value, or to a record.
inline ZRVARIANT ByRef(uint16_t tag, void* address) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  variant.Type = tag | ZR_VT_BYREF;
  variant.Value.address = address;
  return variant;
}
inline ZRVARIANT ByRef(ZRVARIANT& behind) {
  const bool isRecord = (behind.Type & ~0x9000) == (ZR_VT_VARIANT | ZR_VT_BYREF);
  return ByRef(behind.Type, isRecord ? static_cast<void*>(&behind) : &behind.Value);
}

template <class... Arguments>
std::string Format(const char* format, Arguments... arguments) {
  char text[400];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

// The parts between bars.
inline std::vector<std::string> Split(const std::string& list) {
  std::vector<std::string> parts;
  std::istringstream stream(list);
  for (std::string part; std::getline(stream, part, '|');) parts.push_back(part);
  return parts;
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
      return Format("%.17g", value.r8);
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
      if (value.sref->ref != nullptr) text = Describe(*value.sref->ref);
      if (value.sref->text == nullptr) return text.empty() ? "neither" : text;
      return text + (text.empty() ? "text " : " text ") + DescribeText(value.sref->text);
    default: {
      const std::size_t unused = 64 - 8 * row.width;
      const uint64_t top = value.ui8 << unused;
      text = row.isSigned ? std::to_string(static_cast<int64_t>(top) >> unused) : std::to_string(top >> unused);
    }
  }
  const uint64_t behind = row.width < 8 ? value.ui8 >> 8 * row.width : 0;
  return behind != 0 ? text + Format(" behind it %" PRIx64, behind) : text;
}

inline std::string Describe(const ZRVARIANT& variant) {
  const unsigned tag = variant.Type & ZR_VT_TYPEMASK, bits = variant.Type - tag;
  const TagName* row = NameOf(tag);
  std::string text = row != nullptr ? row->name : std::to_string(tag);
  if (bits != 0) text += Format("+%04x", bits);
  if ((bits & (ZR_VT_ARRAY | ZR_VT_BYREF)) == ZR_VT_ARRAY) {
    text += " array";
  } else if (tag == ZR_VT_EMPTY || row == nullptr || (bits & ZR_VT_BYREF) != 0) {
    if (variant.Value.ui8 != 0) text += Format(" %" PRIx64, variant.Value.ui8);
  } else {
    text += ' ';
    text += DescribePayload(*row, variant.Value);
  }
  const bool isMarked = variant.Reserved1 == 0x41 && variant.Reserved2 == 0x4D && variant.Reserved3 == 0x43;
  return isMarked ? text : text + " ~";
}
