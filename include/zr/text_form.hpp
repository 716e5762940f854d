// The text forms that ostream.hpp, fmt.hpp and format.hpp print. Include one of those three instead.

#ifndef ZR_TEXT_FORM_HPP
#define ZR_TEXT_FORM_HPP

#include <cstdint>
#include <string>
#include <type_traits>

#include "zr/date_time.hpp"
#include "zr/ref.hpp"
#include "zr/sref.hpp"
#include "zr/string.hpp"
#include "zr/time_span.hpp"
#include "zr/uuid.hpp"
#include "zr/variant.hpp"

namespace zr::detail {

// The types that can be printed. Printers are templates over exactly these types: with a plain parameter of type
// Variant, everything that converts to a Variant would be copied and printed.
template <class T>
constexpr bool kHasTextForm =
    std::is_same_v<T, String> || std::is_same_v<T, Uuid> || std::is_same_v<T, Ref> || std::is_same_v<T, Sref> ||
    std::is_same_v<T, DateTime> || std::is_same_v<T, TimeSpan> || std::is_same_v<T, Variant>;

// The name of a type in angle brackets, such as "<EMPTY>" or "<R8 ARRAY>". A tag without a name is a number.
inline std::string TypeName(uint16_t type) {
  static constexpr struct {
    uint16_t tag;
    const char* name;
  } kNames[] = {{ZR_VT_EMPTY, "EMPTY"},
                {ZR_VT_BOOL, "BOOL"},
                {ZR_VT_I1, "I1"},
                {ZR_VT_I2, "I2"},
                {ZR_VT_I4, "I4"},
                {ZR_VT_I8, "I8"},
                {ZR_VT_UI1, "UI1"},
                {ZR_VT_UI2, "UI2"},
                {ZR_VT_UI4, "UI4"},
                {ZR_VT_UI8, "UI8"},
                {ZR_VT_R4, "R4"},
                {ZR_VT_R8, "R8"},
                {ZR_VT_TIME, "TIME"},
                {ZR_VT_DATETIME, "DATETIME"},
                {ZR_VT_CY, "CY"},
                {ZR_VT_BYTE, "BYTE"},
                {ZR_VT_WORD, "WORD"},
                {ZR_VT_DWORD, "DWORD"},
                {ZR_VT_QWORD, "QWORD"},
                {ZR_VT_BLOB, "BLOB"},
                {ZR_VT_UNKNOWN, "UNKNOWN"},
                {ZR_VT_OPAQUE, "OPAQUE"},
                {ZR_VT_CHAR32, "CHAR32"},
                {ZR_VT_VARIANT, "VARIANT"},
                {ZR_VT_UUID, "UUID"},
                {ZR_VT_STR, "STR"},
                {ZR_VT_REF, "REF"},
                {ZR_VT_SREF, "SREF"},
                {ZR_VT_DISPATCH, "DISPATCH"}};
  const uint16_t tag = type & ZR_VT_TYPEMASK;
  std::string name = std::to_string(tag);
  for (const auto& row : kNames) {
    if (row.tag == tag) name = row.name;
  }
  if ((type & ZR_VT_ARRAY) != 0) name += " ARRAY";
  if ((type & ZR_VT_BYREF) != 0) name += " BYREF";
  return "<" + name + ">";
}

// The text form of a value as UTF-8.
template <class T>
std::string TextForm(const T& value) {
  static_assert(kHasTextForm<T>);
  if constexpr (std::is_same_v<T, String>) {
    return value.ToUtf8();
  } else if constexpr (std::is_same_v<T, Variant>) {
    const Result<String> text = value.template To<String>();
    if (text.Code() == ZR_R_NO_MEMORY) OutOfMemory();
    return text ? text->ToUtf8() : TypeName(value.Type());
  } else {
    return value.ToString().ToUtf8();
  }
}

}  // namespace zr::detail

#endif
