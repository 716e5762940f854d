// Integers in 16-bit text: the one reader that all families share. (text/decimal_digits.h writes them.)
//
// The reader takes what the C library's conversions take in the C locale, on every system: leading white space, an
// optional sign, digits of the base up to the first other unit. Nothing fails; what doesn't fit saturates. (Of a "0x"
// without a digit the 0 is a number, where some systems' own libraries see none.)

#pragma once

#include <concepts>
#include <cstdint>
#include <limits>

#include "text/code_units.h"

// Blank, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool IsSpace(WCHAR unit) noexcept { return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D); }

template <class Integer>
struct CReadInteger {
  Integer value;
  std::size_t end;  // behind the last digit; 0 if no digit stands where one must
};

// Reads an integer in base 10 or 16; in base 16 a "0x" may stand before the digits. A negative number read as an
// unsigned one wraps, unless its digits alone don't fit.
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
  const uint64_t limit = kIsSigned && isNegative ? kMost + 1 : kMost;
  constexpr uint64_t kSafe = kMost / base - 1;  // up to here any digit still fits
  uint64_t magnitude = 0;
  bool isSaturated = false;
  unsigned digit = digitAt(at);
  for (; digit != base && magnitude <= kSafe; digit = digitAt(++at)) magnitude = magnitude * base + digit;
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

// Whether a number that ends here is accepted: at a zero unit, or at the suffix, a small letter, in either case.
constexpr bool EndsAt(CTextView text, std::size_t end, char suffix) noexcept {
  return end == text.size() || text[end] == 0 || (text[end] | 0x20) == suffix;
}
