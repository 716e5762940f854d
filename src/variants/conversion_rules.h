// The decision table of conversions: which rule converts a scalar of one tag to another tag.
//
// Example: the row ZR_VT_STR and the column CY contain D, so a text converts to ZR_VT_CY by ParseDecimal. A tag without
// a row, such as ZR_VT_EMPTY or ZR_VT_OPAQUE, converts to nothing. Tags whose targets share a column, such as all
// numbers up to 32 bits, differ only in the range that the target function checks.
//
// The table says which function applies, not how it works: the functions are in numeric_targets.cpp, text_target.cpp
// and structured_targets.cpp. Sources that have the target's own tag, arrays and by-reference records are handled
// before the table is used; see ZrVariantChangeType.

#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "variants/variant_tags.h"

// One letter per rule, so that the table fits on a screen. The tests use the same letters with the same meanings.
enum class Rule : char {
  NotSupported = 'X',    // refused with ZR_R_NOT_SUPPORTED
  Invalid = 'A',         // refused with ZR_R_INVALID_ARGUMENTS: the source is a ZR_VT_VARIANT by value
  Range = 'N',           // the number if it is in the target's range
  RawByte = 'Y',         // the byte of a boolean unchanged: a boolean may hold 2 and converts to 2
  FirstBytes = 'L',      // as many first bytes of a blob as the target is wide; missing bytes are zero
  Parse = 'P',           // a number in a text, up to its end or to a suffix letter; or a word such as "TRUE"
  ParseDecimal = 'D',    // the same for base 10 only, without words
  FirstCodePoint = 'C',  // the first code point of a text; digits are not parsed
  ParseTime = 'T',       // the date and time in a text
  Word = 'W',            // the 64 bits unchanged
  WordAtAddress = 'I',   // the 64 bits at the address that the payload is
  Truncate = 'Q',        // the number truncated towards zero, without a range check
  Text = 'S',            // the value as text
  Bytes = 'E',           // a new blob of the value's bytes
  Uuid = 'U',            // a UUID parsed from a text or made of a blob's first bytes
  Ref = 'F',             // a REF parsed from a text, or the ref of an SREF
  Sref = 'G',            // an SREF made of a text or of a REF
  Same = '=',            // source and target have the same tag: never converted
};
inline constexpr std::string_view kRuleLetters = "XANYLPDCTWIQSEUFG=";

// The columns of the table. kNarrow is all numbers up to 32 bits and booleans; kUint64 is ZR_VT_UI8 and ZR_VT_QWORD. A
// code point is as wide as a number but has a column of its own, since texts convert to it differently.
enum Column : uint8_t {
  kNarrow,
  kChar32,
  kInt64,
  kUint64,
  kReal,
  kCurrency,
  kTime,
  kDateTime,
  kText,
  kBlob,
  kUuid,
  kRef,
  kSref,
  kColumnCount
};

// The cells in the order of Column, separated by any number of blanks.
struct CRuleRow {
  uint16_t source;
  std::string_view cells;
};

// clang-format off
inline constexpr CRuleRow kRuleRows[] = {
  //               narrow CHAR32 I8 UI8 R4/R8 CY TIME DATETIME STR BLOB UUID REF SREF
  {ZR_VT_BOOL,     "Y     Y      Y  Y   Y     X  X    X        S   E    X    X   X"},
  {ZR_VT_I1,       "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_I2,       "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_I4,       "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_UI1,      "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_UI2,      "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_UI4,      "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_BYTE,     "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_WORD,     "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_DWORD,    "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_CHAR32,   "N     =      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_I8,       "N     N      =  N   N     W  W    W        S   E    X    X   X"},
  {ZR_VT_UI8,      "N     N      N  N   N     W  W    W        S   E    X    X   X"},
  {ZR_VT_QWORD,    "N     N      N  N   N     W  W    I        S   E    X    X   X"},
  {ZR_VT_CY,       "N     N      N  N   N     =  W    W        S   E    X    X   X"},
  {ZR_VT_TIME,     "N     N      N  N   N     W  =    W        S   E    X    X   X"},
  {ZR_VT_DATETIME, "N     N      N  N   N     W  W    =        S   E    X    X   X"},
  {ZR_VT_R4,       "N     N      N  N   N     X  X    X        S   E    X    X   X"},
  {ZR_VT_R8,       "N     N      N  N   N     Q  Q    Q        S   E    X    X   X"},
  {ZR_VT_BLOB,     "L     L      L  L   L     X  X    X        S   =    U    X   X"},
  {ZR_VT_VARIANT,  "X     X      X  X   X     A  A    A        A   A    A    A   A"},
  {ZR_VT_UUID,     "X     X      X  X   X     X  X    X        S   E    =    X   X"},
  {ZR_VT_STR,      "P     C      P  P   P     D  T    T        =   E    U    F   G"},
  {ZR_VT_REF,      "X     X      X  X   X     X  X    X        S   E    X    =   G"},
  {ZR_VT_SREF,     "X     X      X  X   X     X  X    X        S   E    X    F   ="},
};
// clang-format on

// The rows above as an array [source tag][column]. A throw in this initialiser is a compilation error: the rows are
// checked whenever this header is compiled.
inline constexpr auto kRules = [] {
  std::array<std::array<Rule, kColumnCount>, kTagCount> rules{};
  for (auto& row : rules) row.fill(Rule::NotSupported);  // for the tags that have no row
  for (const CRuleRow& row : kRuleRows) {
    std::size_t column = 0;
    for (const char cell : row.cells) {
      if (cell == ' ') continue;
      if (kRuleLetters.find(cell) == std::string_view::npos) throw "a letter that is no rule";
      rules[row.source].at(column++) = Rule{cell};
    }
    if (column != kColumnCount) throw "a row with a cell too few";
  }
  return rules;
}();

// The rule for a source, by the tag in its tag word, and a column of targets.
constexpr Rule RuleFor(uint16_t sourceTagWord, Column target) noexcept {
  return kRules[TagIndex(sourceTagWord)][target];
}
