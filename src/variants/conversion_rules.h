// The decision table of conversions: for a source and a target, the rule by which the value gets across.
//
// Sources that have the target's tag never come here, nor do arrays and by-reference records.

#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "variants/variant_tags.h"

// The letters are upper case. The tests' table of conversions uses the same letters with the same meanings.
enum class Rule : char {
  NotSupported = 'X',    // refused with ZR_R_NOT_SUPPORTED
  Invalid = 'A',         // refused with ZR_R_INVALID_ARGUMENTS: the source is a variant by value
  Range = 'N',           // the number if it is in the target's range
  RawByte = 'Y',         // the byte of a boolean, unchanged
  FirstBytes = 'L',      // the first bytes of a blob, as many as the target has
  Parse = 'P',           // the number at the beginning of a text, or a word for a number
  ParseDecimal = 'D',    // the same in base 10, without words
  FirstCodePoint = 'C',  // of a text
  ParseTime = 'T',       // the date and time in a text
  Word = 'W',            // the 64 bits, unchanged
  WordBehind = 'I',      // the 64 bits at the address that the payload is taken for
  Truncate = 'Q',        // the number, truncated towards zero without a range check
  Text = 'S',            // the value as text
  Bytes = 'E',           // a new blob of the value's bytes
  Uuid = 'U',            // read from a text, or made of a blob's first bytes
  Ref = 'F',             // read from a text, or the REF of an SREF
  Sref = 'G',            // made of a text or of a REF
  Same = '=',            // source and target have the same tag: no conversion
};
inline constexpr std::string_view kRuleLetters = "XANYLPDCTWIQSEUFG=";

// Narrow is up to 32 bits, booleans among them.
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

inline constexpr auto kRules = [] {
  std::array<std::array<Rule, kColumnCount>, kTagCount> rules{};
  for (auto& row : rules) row.fill(Rule::NotSupported);  // what no row names converts to nothing
  for (const CRuleRow& row : kRuleRows) {
    std::size_t column = 0;
    for (const char cell : row.cells) {
      if (cell == ' ') continue;
      if (kRuleLetters.find(cell) == std::string_view::npos) throw "a letter that is no rule";  // stops the build
      rules[row.source].at(column++) = Rule{cell};
    }
    if (column != kColumnCount) throw "a row with a cell too few";
  }
  return rules;
}();

constexpr Rule RuleFor(uint16_t sourceTagWord, Column target) noexcept {
  return kRules[TagIndex(sourceTagWord)][target];
}
