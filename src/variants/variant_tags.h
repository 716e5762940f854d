// The tags: for each tag the kind of its payload, which decides who owns it and how it is copied, and its width.
//
// A tag word is a tag plus flags:
//
//     | 0x8000 no meaning | ZR_VT_BYREF | ZR_VT_ARRAY | 0x1000 no meaning | tag, 12 bits |
//
// Tags are looked up in one table, so that all code agrees on what a tag is. Callers may pass any tag word: tags that
// are not assigned, and all above ZR_VT_LAST, have the kind Unassigned, and no lookup reads past the end of a table.

#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "zrcore/variant.h"

// The order matters: IsInline and IsOwned compare with the first and the last kind of a group.
enum class PayloadKind : uint8_t {
  Unassigned,  // the tag is not assigned
  Empty,
  Number,  // inline, as are the next four: the payload is the value, and nothing is owned
  Real4,
  Real8,
  Opaque,
  Carried,  // ZR_VT_VARIANT by value: 64 bits that are copied but have no meaning
  Blob,     // owned, as are all that follow: the payload is a pointer to something that the record owns
  Interface,
  Uuid,
  String,
  Ref,
  Sref,
};

struct CTag {
  PayloadKind kind = PayloadKind::Unassigned;
  uint8_t width = 0;  // of the payload, in bytes; 0 for ZR_VT_EMPTY and tags that are not assigned
};

struct CTagRow {
  uint16_t tag;
  CTag info;
};

// clang-format off
inline constexpr CTagRow kTagRows[] = {
  {ZR_VT_EMPTY,    {PayloadKind::Empty,     0}},
  {ZR_VT_BOOL,     {PayloadKind::Number,    1}},
  {ZR_VT_I1,       {PayloadKind::Number,    1}},
  {ZR_VT_I2,       {PayloadKind::Number,    2}},
  {ZR_VT_I4,       {PayloadKind::Number,    4}},
  {ZR_VT_I8,       {PayloadKind::Number,    8}},
  {ZR_VT_UI1,      {PayloadKind::Number,    1}},
  {ZR_VT_UI2,      {PayloadKind::Number,    2}},
  {ZR_VT_UI4,      {PayloadKind::Number,    4}},
  {ZR_VT_UI8,      {PayloadKind::Number,    8}},
  {ZR_VT_R4,       {PayloadKind::Real4,     4}},
  {ZR_VT_R8,       {PayloadKind::Real8,     8}},
  {ZR_VT_TIME,     {PayloadKind::Number,    8}},
  {ZR_VT_DATETIME, {PayloadKind::Number,    8}},
  {ZR_VT_CY,       {PayloadKind::Number,    8}},
  {ZR_VT_BYTE,     {PayloadKind::Number,    1}},
  {ZR_VT_WORD,     {PayloadKind::Number,    2}},
  {ZR_VT_DWORD,    {PayloadKind::Number,    4}},
  {ZR_VT_QWORD,    {PayloadKind::Number,    8}},
  {ZR_VT_BLOB,     {PayloadKind::Blob,      8}},
  {ZR_VT_UNKNOWN,  {PayloadKind::Interface, 8}},
  {ZR_VT_OPAQUE,   {PayloadKind::Opaque,    8}},
  {ZR_VT_CHAR32,   {PayloadKind::Number,    4}},
  {ZR_VT_VARIANT,  {PayloadKind::Carried,   8}},
  {ZR_VT_UUID,     {PayloadKind::Uuid,      8}},
  {ZR_VT_STR,      {PayloadKind::String,    8}},
  {ZR_VT_REF,      {PayloadKind::Ref,       8}},
  {ZR_VT_SREF,     {PayloadKind::Sref,      8}},
  {ZR_VT_DISPATCH, {PayloadKind::Interface, 8}},
};
// clang-format on

// The size of a table that is indexed by TagIndex: one entry for each tag from 0 to ZR_VT_LAST, and one that all
// greater tags share.
inline constexpr std::size_t kTagCount = ZR_VT_LAST + 2;

inline constexpr auto kTags = [] {
  std::array<CTag, kTagCount> tags{};
  for (const CTagRow& row : kTagRows) {
    if (tags[row.tag].kind != PayloadKind::Unassigned) throw "a tag with two rows";  // a compilation error
    tags[row.tag] = row.info;
  }
  return tags;
}();

// The index of a tag word in a table of kTagCount entries: its tag without flags, or the shared last entry.
constexpr std::size_t TagIndex(uint16_t tagWord) noexcept {
  const std::size_t tag = tagWord & ZR_VT_TYPEMASK;
  return tag <= ZR_VT_LAST ? tag : ZR_VT_LAST + 1;
}

// The kind and the width for the tag in a tag word; flags are ignored.
constexpr CTag TagOf(uint16_t tagWord) noexcept { return kTags[TagIndex(tagWord)]; }

// These two describe records without flags. With ZR_VT_ARRAY or ZR_VT_BYREF the flags decide what is owned.
constexpr bool IsInline(PayloadKind kind) noexcept {
  return kind >= PayloadKind::Number && kind <= PayloadKind::Carried;
}
constexpr bool IsOwned(PayloadKind kind) noexcept { return kind >= PayloadKind::Blob; }

constexpr bool HasFlag(uint16_t tagWord, unsigned flag) noexcept { return (tagWord & flag) != 0; }

// The array handle at the address in a by-reference record, which must not be null. The handle may be null.
inline ZRSAFEARRAY ArrayAtAddress(const void* address) noexcept {
  ZRVARIANTVALUE payload;
  std::memcpy(&payload, address, sizeof payload);
  return payload.array;
}
