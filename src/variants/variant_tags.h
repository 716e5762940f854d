// What each tag stands for: the kind of its payload, which decides who owns it, and its width.

#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "zrcore/variant.h"

enum class PayloadKind : uint8_t {
  Unassigned,  // no such tag
  Empty,
  Number,  // inline, and so are the next four
  Real4,
  Real8,
  Opaque,
  Carried,  // a variant by value: a word without a meaning
  Blob,     // owned, and so are all that follow
  Interface,
  Uuid,
  String,
  Ref,
  Sref,
};

struct CTag {
  PayloadKind kind = PayloadKind::Unassigned;
  uint8_t width = 0;  // in bytes, of the value; 0 where it has none
};

struct CTagRow {
  uint16_t tag;
  CTag what;
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

// One entry more than there are tags, for all that are greater.
inline constexpr std::size_t kTagCount = ZR_VT_LAST + 2;

inline constexpr auto kTags = [] {
  std::array<CTag, kTagCount> tags{};
  for (const CTagRow& row : kTagRows) {
    if (tags[row.tag].kind != PayloadKind::Unassigned) throw "a tag with two rows";  // stops the build
    tags[row.tag] = row.what;
  }
  return tags;
}();

// The tag in a tag word, all that are above the last one as one.
constexpr std::size_t TagIndex(uint16_t tagWord) noexcept {
  const std::size_t tag = tagWord & ZR_VT_TYPEMASK;
  return tag <= ZR_VT_LAST ? tag : ZR_VT_LAST + 1;
}

constexpr CTag TagOf(uint16_t tagWord) noexcept { return kTags[TagIndex(tagWord)]; }

constexpr bool IsInline(PayloadKind kind) noexcept {
  return kind >= PayloadKind::Number && kind <= PayloadKind::Carried;
}
constexpr bool IsOwned(PayloadKind kind) noexcept { return kind >= PayloadKind::Blob; }

constexpr bool HasFlag(uint16_t tagWord, unsigned flag) noexcept { return (tagWord & flag) != 0; }

// The handle that the address in a by-reference record leads to.
inline ZRSAFEARRAY ArrayBehind(const void* address) noexcept {
  ZRVARIANTVALUE behind;
  std::memcpy(&behind, address, sizeof behind);
  return behind.array;
}
