// What the texts of date and time and of time spans have in common: numbers at fixed places, and strings from a few
// units.

#pragma once

#include <cstdint>

#include "text/counted_string.h"
#include "text/number_text.h"

// The tolerant reading of a place: the number that its units begin with, cut short where the text ends.
[[nodiscard]] int32_t ReadOddPlace(CTextView text, std::size_t at, std::size_t width) noexcept;

// The number in the `width` units from `at`, which is not behind the end of the text. Few units can't hold a number too
// large for the field it is for: two fit 8 bits, four 16 bits, seven 32 bits, each with or without a sign.
template <std::size_t width>
inline int32_t ReadPlace(CTextView text, std::size_t at) noexcept {
  static_assert(width <= 7);
  if (width > text.size() - at) return ReadOddPlace(text, at, width);
  uint32_t value = 0, isOdd = 0;
  for (std::size_t place = at; place < at + width; ++place) {
    const uint32_t digit = uint32_t{text[place]} - '0';
    isOdd |= digit > 9 ? 1 : 0;
    value = value * 10 + digit;
  }
  return isOdd == 0 ? static_cast<int32_t>(value) : ReadOddPlace(text, at, width);
}

inline CTextView TextOf(ZRSTR string) noexcept { return {string, StringLen(string)}; }

// A string for `units` units, its terminator in place; null when memory is exhausted.
[[nodiscard]] inline ZRSTR AllocateUnits(std::size_t units) noexcept {
  ZRSTR string = AllocateString((units + 1) * sizeof(WCHAR));
  if (string != nullptr) string[units] = 0;
  return string;
}

// A new string of the units from `begin` to `end`; null when memory is exhausted.
[[nodiscard]] ZRSTR NewString(const WCHAR* begin, const WCHAR* end) noexcept;
