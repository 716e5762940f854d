// A table of all assigned tags: their names, widths and kinds, and sample values of each as text.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tests/support/units.h"
#include "zrcore/zrcore.h"

// Sample values near the limits of the types, in the tests' text form. Integers are reduced to the width of their type.
inline constexpr const char* kIntegers =
    "0|1|-1|2|127|128|-128|-129|255|256|32767|32768|-32768|-32769|65535|65536|16777217|2147483647|2147483648|"
    "-2147483648|-2147483649|4294967295|4294967296|9007199254740993|9223372036854775295|9223372036854775296|"
    "9223372036854775807|-9223372036854775808|9223371761976868863|9223372036854776833|18446744073709550591";
inline constexpr const char* kReals =
    "0|-0.0|0.5|-0.5|-1|1.5|5e-7|5e-324|127|127.5|-128|-128.5|255|255.0001|32767.5|-32768.5|65535.5|2147483647|"
    "2147483647.5|-2147483648.5|4294967295|4294967295.5|0x1p63|-0x1p63|0x1.fffffffffffffp62|0x1.0000000000001p63|"
    "-0x1.0000000000001p63|0x1p64|0x1.fffffffffffffp63|0x1.0000000000001p64|0x1.fffffep127|-0x1.fffffep127|"
    "0x1.fffffe0000001p127|-0x1.fffffe0000001p127|inf|-inf|nan";

// Types of one kind convert, compare and are owned alike. The letter of a kind is lower case:
//
//     e  nothing                     c  a code point                  l  a blob
//     o  opaque                      f  a 32-bit floating point       u  a UUID
//     b  a boolean                   d  a 64-bit floating point       s  a string
//     n  an integer up to 32 bits    y  a currency                    r  a REF
//     q  a 64-bit integer            t  a time, or a date and time    g  an SREF
//     v  a variant                                                    i  an interface
struct TagName {
  uint16_t tag;
  const char* name;
  std::size_t width;
  char kind;
  bool isSigned = false;
  const char* texts = kIntegers;
};
// clang-format off
inline constexpr TagName kTagNames[] = {
    {ZR_VT_EMPTY, "EMPTY", 0, 'e'}, {ZR_VT_OPAQUE, "OPAQUE", 8, 'o'}, {ZR_VT_BOOL, "BOOL", 1, 'b'},
    {ZR_VT_I1, "I1", 1, 'n', true}, {ZR_VT_I2, "I2", 2, 'n', true}, {ZR_VT_I4, "I4", 4, 'n', true},
    {ZR_VT_I8, "I8", 8, 'q', true}, {ZR_VT_UI1, "UI1", 1, 'n'}, {ZR_VT_UI2, "UI2", 2, 'n'},
    {ZR_VT_UI4, "UI4", 4, 'n'}, {ZR_VT_UI8, "UI8", 8, 'q'}, {ZR_VT_R4, "R4", 4, 'f', true, kReals},
    {ZR_VT_R8, "R8", 8, 'd', true, kReals}, {ZR_VT_TIME, "TIME", 8, 't', true}, {ZR_VT_CY, "CY", 8, 'y', true},
    {ZR_VT_DATETIME, "DATETIME", 8, 't', true}, {ZR_VT_BYTE, "BYTE", 1, 'n'}, {ZR_VT_WORD, "WORD", 2, 'n'},
    {ZR_VT_DWORD, "DWORD", 4, 'n'}, {ZR_VT_QWORD, "QWORD", 8, 'q'}, {ZR_VT_CHAR32, "CHAR32", 4, 'c'},
    {ZR_VT_BLOB, "BLOB", 8, 'l', false, "85|null||85c1347a797877|85c1347a79787776|85c1347a797877767574737271706f6e"},
    {ZR_VT_UNKNOWN, "UNKNOWN", 8, 'i', false, "object|null"}, {ZR_VT_VARIANT, "VARIANT", 8, 'v'},
    {ZR_VT_UUID, "UUID", 8, 'u', false, "{00000000-0000-0000-0000-000000000000}|{00000001-0000-0000-0000-000000000000}|"
                                        "{00000000-0000-0000-0000-000000000001}"},
    {ZR_VT_STR, "STR", 8, 's', false, "common|null||12|-1|1.5|TRUE|words|2012-03-04 05:06:07.0000008|05:06:07.0000008|"
                                      "1.2.3.4.5.6|{00112233-4455-6677-8899-AABBCCDDEEFF}"},
    {ZR_VT_REF, "REF", 8, 'r', false, "0.0.0.0.0.0|null|1.0.0.0.0.0|0.0.0.0.0.1|1.2.4294967295.4.5.6"},
    {ZR_VT_SREF, "SREF", 8, 'g', false, "1.2.4294967295.4.5.6 text common|null|neither|1.2.3.4.5.6|0.0.0.0.0.0|text |"
                                        "0.0.0.0.0.0 text name|text 0.0.0.0.0.0|text 1.2.3.4.5.6|text name"},
    {ZR_VT_DISPATCH, "DISPATCH", 8, 'i', false, "object|null"},
};
// clang-format on

// The row of a tag; null if the tag is not assigned.
inline const TagName* NameOf(unsigned tag) {
  for (const TagName& row : kTagNames) {
    if (row.tag == tag) return &row;
  }
  return nullptr;
}

// A tag word with its flags as in source code: "ZR_VT_I4 | ZR_VT_ARRAY". Bits without a name are hexadecimal.
inline std::string TagWordName(unsigned word) {
  const TagName* row = NameOf(word & ZR_VT_TYPEMASK);
  std::string name = row != nullptr ? std::string("ZR_VT_") + row->name : Format("0x%X", word & ZR_VT_TYPEMASK);
  if ((word & ZR_VT_ARRAY) != 0) name += " | ZR_VT_ARRAY";
  if ((word & ZR_VT_BYREF) != 0) name += " | ZR_VT_BYREF";
  constexpr unsigned kNamed = ZR_VT_TYPEMASK | ZR_VT_ARRAY | ZR_VT_BYREF;
  const unsigned others = word & ~kNamed;
  return others != 0 ? name + Format(" | 0x%X", others) : name;
}

inline bool IsOfKind(uint16_t tag, std::string_view kinds) {
  const TagName* row = NameOf(tag);
  return row != nullptr && kinds.find(row->kind) != std::string_view::npos;
}
inline bool IsReal(uint16_t tag) { return IsOfKind(tag, "fd"); }
inline bool IsNumber(uint16_t tag) { return IsOfKind(tag, "bnqfdtyoc"); }
inline bool IsOwned(uint16_t tag) { return IsOfKind(tag, "liusrg"); }
