// Parses integers in 16-bit text, for all families. (text/decimal_digits.h writes them.)
//
// It accepts what the C library's conversions accept in the C locale, on every system: leading white space, an optional
// sign, then digits up to the first other unit. Nothing fails: a number that is too large saturates, and a text without
// a number is 0.
//
//     " -12abc"   -> -12, end 4          "99999999999999999999"  -> the largest value, end 20
//     "abc", "-"  -> 0, end 0            "0x" in base 16         -> 0, end 1: the 0 counts, although the C libraries of
//                                                                   some systems find no number here

#pragma once

#include <concepts>
#include <cstdint>
#include <limits>

#include "text/code_units.h"

// Blank, tab, newline, vertical tab, form feed, carriage return.
constexpr bool IsSpace(WCHAR unit) noexcept { return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D); }

template <class Integer>
struct CReadInteger {
  Integer value;
  std::size_t end;  // after the last digit; 0 if there is no number
};

// Reads an integer in base 10 or 16. In base 16, "0x" may precede the digits.
//
// As an unsigned integer, a negative number wraps: "-1" is the largest value. But digits that don't fit saturate first
// and ignore the sign, as strtoull does: "-99999999999999999999" is the largest value, too.
template <class Integer, unsigned base>
requires std::same_as<Integer, int64_t> || std::same_as<Integer, uint64_t>
constexpr CReadInteger<Integer> ReadIntegerIn(CTextView text) noexcept {
  constexpr bool kIsSigned = std::same_as<Integer, int64_t>;
  const auto digitAt = [text](std::size_t at) -> unsigned {
    if (at >= text.size()) return base;
    const unsigned unit = text[at];
    if (unit - '0' < 10) return unit - '0';
    const unsigned letter = (unit | 0x20) - 'a';
    return base == 16 && letter < 6 ? letter + 10 : base;
  };

  std::size_t at = 0;
  while (at < text.size() && IsSpace(text[at])) ++at;
  const bool isNegative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  if (base == 16 && at + 1 < text.size() && text[at] == '0' && (text[at + 1] | 0x20) == 'x' && digitAt(at + 2) < base) {
    at += 2;
  }
  if (digitAt(at) == base) return {0, 0};

  constexpr uint64_t kMost = std::numeric_limits<Integer>::max();
  const uint64_t limit = kIsSigned && isNegative ? kMost + 1 : kMost;  // of the magnitude
  constexpr uint64_t kSafe = kMost / base - 1;  // any digit still fits: kSafe * base + (base - 1) < kMost
  uint64_t magnitude = 0;
  bool isSaturated = false;
  unsigned digit = digitAt(at);
  for (; digit != base && magnitude <= kSafe; digit = digitAt(++at)) magnitude = magnitude * base + digit;
  // Checked, without overflow in the check: magnitude * base + digit > limit. A saturated number still takes all of its
  // digits, so that `end` is after them.
  for (; digit != base; digit = digitAt(++at)) {
    isSaturated = isSaturated || magnitude > (limit - digit) / base;
    if (!isSaturated) magnitude = magnitude * base + digit;
  }
  if (isSaturated) return {static_cast<Integer>(limit), at};
  return {static_cast<Integer>(isNegative ? 0 - magnitude : magnitude), at};
}

template <class Integer>
constexpr CReadInteger<Integer> ReadInteger(CTextView text, unsigned base = 10) noexcept {
  return base == 16 ? ReadIntegerIn<Integer, 16>(text) : ReadIntegerIn<Integer, 10>(text);
}

// Whether the number that ends at `end` is the whole text: the text ends there, or a zero unit or the suffix follows.
// `suffix` is a lower-case letter; it is accepted in both cases. The bit 0x20 makes an ASCII letter lower case.
constexpr bool EndsAt(CTextView text, std::size_t end, char suffix) noexcept {
  return end == text.size() || text[end] == 0 || (text[end] | 0x20) == suffix;
}
