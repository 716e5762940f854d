// A text form of variants, so that a row of a test table is one line:
//
//     I4 -7       BOOL 2      R8 1.5      OPAQUE 9     BLOB 01ff     STR text     REF 1.2.3.4.5.6     UUID {...}
//     SREF 1.2.3.4.5.6     SREF text name     SREF 1.2.3.4.5.6 text name     SREF neither     UNKNOWN object
//     STR null    (and null for every other kind that may be null)
//     14 7        a tag without a name, and Value; Describe writes this Value, and that of EMPTY and of by-reference
//                 records, in hexadecimal
//
// "+1000" after the name is the bits of the tag word that are not part of the tag. Describe also reports what a valid
// record does not have: bits of Value above a narrow number, and "~" if the marker words are not those of a new value.

#pragma once

#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/tag_names.h"
#include "tests/support/text.h"

// An object with a reference count. All tests share one and compare differences of its count.
struct CountedObject final : IZrDispatch {
  uint32_t references = 0;
  uint32_t AddRef() override { return ++references; }
  uint32_t Release() override { return --references; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }
};
inline CountedObject g_object;

// "common" in a text form always means this one string, so tests can count its references. Destinations are filled with
// a reference to the second string before they are written to, and nothing else references that string.
inline const Owned g_shared(Units(W("common"))), g_before(Units(W("before")));

// One unit per byte; the bytes may contain zeros.
inline Owned StringOf(const std::string& bytes) {
  if (bytes == "common") return Owned(ZrCopyString(g_shared));
  if (bytes == "before") return Owned(ZrCopyString(g_before));
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

// A record that its destructor clears.
struct OwnedVariant : ZRVARIANT {
  OwnedVariant() : ZRVARIANT ZR_VARIANT_INIT {}
  OwnedVariant(OwnedVariant&& other) noexcept : ZRVARIANT(other) { (void)ZrVariantInit(&other); }
  OwnedVariant& operator=(OwnedVariant&& other) noexcept {
    std::swap(static_cast<ZRVARIANT&>(*this), static_cast<ZRVARIANT&>(other));
    return *this;
  }
  ~OwnedVariant() { (void)ZrVariantClear(this); }
};

inline ZRBLOB BlobOf(const std::string& hexadecimal) {
  std::string bytes;
  for (std::size_t at = 0; at < hexadecimal.size(); at += 2) {
    bytes += static_cast<char>(std::strtoul(hexadecimal.substr(at, 2).c_str(), nullptr, 16));
  }
  // An empty blob can only be made by removing the bytes of another one.
  ZRBLOB blob = ZrCreateBlob(bytes.empty() ? 1 : static_cast<uint32_t>(bytes.size()), bytes.data());
  if (bytes.empty()) (void)ZrRemoveBlob(blob, 0, 1);
  return blob;
}
inline ZRSREF* SrefOf(const std::string& text) {
  ZRSREF* sref = ZrCreateSREF();
  const std::size_t at = text.find("text ");
  if (at != std::string::npos) sref->text = ZrCopyString(StringOf(text.substr(at + 5)));
  if (at != 0) (void)ZrStringToREF(StringOf(text.substr(0, at)), &sref->ref);
  return sref;
}

inline ZRVARIANTVALUE ParsedPayload(const TagName& row, const std::string& text) {
  ZRVARIANTVALUE value = {};
  const uint64_t integer = std::strtoull(text.c_str(), nullptr, 10);  // a negative number becomes its two's complement
  if (!IsOwned(row.tag)) std::memcpy(&value, &integer, row.width);
  if (row.kind == 'f') value.r4 = std::strtof(text.c_str(), nullptr);
  if (row.kind == 'd') value.r8 = std::strtod(text.c_str(), nullptr);
  if (row.kind == 'l') value.blob = BlobOf(text);
  if (row.kind == 'i') value.unknown = &g_object;
  if (row.kind == 'i') g_object.AddRef();
  if (row.kind == 'u') value.uuid = ZrCreateUUID();
  if (row.kind == 'u') (void)ZrUUIDFromString(text.c_str(), value.uuid);
  if (row.kind == 's') value.string = ZrCopyString(StringOf(text));
  if (row.kind == 'r') (void)ZrStringToREF(StringOf(text), &value.ref);
  if (row.kind == 'g') value.sref = SrefOf(text);
  return value;
}

inline OwnedVariant Value(const std::string& text) {
  const std::size_t nameEnd = text.find_first_of("+ "), end = text.find(' ');
  const std::string name = text.substr(0, nameEnd), payload = end == std::string::npos ? "" : text.substr(end + 1);
  unsigned long word = std::strtoul(name.c_str(), nullptr, 10);
  if (nameEnd != end) word |= std::strtoul(text.c_str() + nameEnd + 1, nullptr, 16);
  for (const TagName& row : kTagNames) {
    if (name == row.name) word |= row.tag;
  }
  OwnedVariant variant;
  variant.Type = static_cast<uint16_t>(word);
  const TagName* row = NameOf(word & (ZR_VT_TYPEMASK | ZR_VT_BYREF));
  if (row == nullptr || row->width == 0) row = NameOf(ZR_VT_OPAQUE);
  if (payload != "null") variant.Value = ParsedPayload(*row, payload);
  return variant;
}

inline OwnedVariant Before() { return Value("STR before"); }

// A by-reference record, which owns nothing. It refers to a value, or to the record of a variant.
inline ZRVARIANT ByRef(uint16_t tag, void* address) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  variant.Type = tag | ZR_VT_BYREF;
  variant.Value.address = address;
  return variant;
}
inline ZRVARIANT ByRef(ZRVARIANT& target) {
  const bool isRecord = (target.Type & ZR_VT_TYPEMASK) == ZR_VT_VARIANT && (target.Type & ZR_VT_ARRAY) == 0;
  return ByRef(target.Type, isRecord ? static_cast<void*>(&target) : &target.Value);
}

// The parts of a list that '|' separates.
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

inline std::string Describe(const ZRSREF& sref) {
  const std::string ref = sref.ref != nullptr ? Describe(*sref.ref) : "";
  if (sref.text == nullptr) return ref.empty() ? "neither" : ref;
  return ref + (ref.empty() ? "text " : " text ") + DescribeText(sref.text);
}
inline std::string Hexadecimal(const std::string& bytes) {
  std::string text;
  for (char byte : bytes) text += Format("%02x", static_cast<unsigned char>(byte));
  return text;
}

inline std::string DescribePayload(const TagName& row, const ZRVARIANTVALUE& value) {
  if (IsOwned(row.tag) && value.address == nullptr) return "null";
  if (row.kind == 'l') return Hexadecimal(BytesOf(value.blob));
  if (row.kind == 'i') return value.unknown == &g_object ? "object" : "?";
  if (row.kind == 'u') return testing::PrintToString(*value.uuid);
  if (row.kind == 's') return DescribeText(value.string);
  if (row.kind == 'r') return Describe(*value.ref);
  if (row.kind == 'g') return Describe(*value.sref);
  if (row.kind == 'd') return Format("%.17g", value.r8);
  const std::size_t unused = 64 - 8 * row.width;
  const uint64_t top = value.ui8 << unused, above = unused != 0 ? value.ui8 >> (64 - unused) : 0;
  const std::string text = row.kind == 'f' ? Format("%.9g", double{value.r4})
                           : row.isSigned  ? std::to_string(static_cast<int64_t>(top) >> unused)
                                           : std::to_string(top >> unused);
  return above != 0 ? text + Format(" with bits above it %" PRIx64, above) : text;
}

inline std::string Describe(const ZRVARIANT& variant) {
  const unsigned tag = variant.Type & ZR_VT_TYPEMASK, bits = variant.Type - tag;
  const TagName* row = NameOf(tag);
  std::string text = row != nullptr ? row->name : std::to_string(tag);
  if (bits != 0) text += Format("+%04x", bits);
  const unsigned flags = bits & (ZR_VT_ARRAY | ZR_VT_BYREF);
  const bool hasPayload = row != nullptr && tag != ZR_VT_EMPTY && flags == 0, isArray = flags == ZR_VT_ARRAY;
  if (hasPayload) text.append(" ").append(DescribePayload(*row, variant.Value));
  if (isArray) text += " array";
  if (!hasPayload && !isArray && variant.Value.ui8 != 0) text += Format(" %" PRIx64, variant.Value.ui8);
  const bool isMarked = variant.Reserved1 == 0x41 && variant.Reserved2 == 0x4D && variant.Reserved3 == 0x43;
  return isMarked ? text : text + " ~";
}

inline std::vector<std::string> TextsOf(uint16_t tag) {
  const TagName* row = NameOf(tag);
  return Split(row != nullptr ? row->texts : kIntegers);
}
