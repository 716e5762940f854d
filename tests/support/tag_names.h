// The tags that are assigned, with the names and the widths of their values.

#pragma once

#include <cstddef>
#include <cstdint>

#include "zrcore/zrcore.h"

struct TagName {
  uint16_t tag;
  const char* name;
  std::size_t width;
  bool isSigned = false;
};
// clang-format off
inline constexpr TagName kTagNames[] = {
    {ZR_VT_EMPTY, "EMPTY", 0}, {ZR_VT_BOOL, "BOOL", 1},
    {ZR_VT_I1, "I1", 1, true}, {ZR_VT_I2, "I2", 2, true}, {ZR_VT_I4, "I4", 4, true}, {ZR_VT_I8, "I8", 8, true},
    {ZR_VT_UI1, "UI1", 1}, {ZR_VT_UI2, "UI2", 2}, {ZR_VT_UI4, "UI4", 4}, {ZR_VT_UI8, "UI8", 8},
    {ZR_VT_R4, "R4", 4}, {ZR_VT_R8, "R8", 8},
    {ZR_VT_TIME, "TIME", 8, true}, {ZR_VT_CY, "CY", 8, true}, {ZR_VT_DATETIME, "DATETIME", 8, true},
    {ZR_VT_BYTE, "BYTE", 1}, {ZR_VT_WORD, "WORD", 2}, {ZR_VT_DWORD, "DWORD", 4}, {ZR_VT_QWORD, "QWORD", 8},
    {ZR_VT_BLOB, "BLOB", 8}, {ZR_VT_UNKNOWN, "UNKNOWN", 8}, {ZR_VT_OPAQUE, "OPAQUE", 8}, {ZR_VT_CHAR32, "CHAR32", 4},
    {ZR_VT_VARIANT, "VARIANT", 8}, {ZR_VT_UUID, "UUID", 8}, {ZR_VT_STR, "STR", 8}, {ZR_VT_REF, "REF", 8},
    {ZR_VT_SREF, "SREF", 8}, {ZR_VT_DISPATCH, "DISPATCH", 8},
};
// clang-format on

inline const TagName* NameOf(unsigned tag) {
  for (const TagName& row : kTagNames) {
    if (row.tag == tag) return &row;
  }
  return nullptr;
}

// Whether a value lies in the record itself.
inline bool IsNumber(uint16_t tag) {
  const bool isBelow = tag > ZR_VT_EMPTY && tag < ZR_VT_BLOB && NameOf(tag) != nullptr;
  return isBelow || tag == ZR_VT_OPAQUE || tag == ZR_VT_CHAR32;
}
