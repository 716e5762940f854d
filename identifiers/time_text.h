// What the texts of date and time and of time spans have in common: numbers at fixed places, and strings from a few
// units.

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "text/counted_string.h"
#include "text/number_text.h"

// The tolerant reading of a place: the number that its units begin with, cut short where the text ends.
[[nodiscard]] int32_t ReadOddPlace(CTextView text, std::size_t at, std::size_t width) noexcept;

// Four units at once, one a lane of 16 bits, the first in the lowest.
class CFourPlaces {
 public:
  explicit CFourPlaces(const WCHAR* units) noexcept {
    static_assert(std::endian::native == std::endian::little);
    std::memcpy(&digits_, units, sizeof digits_);
    digits_ -= 0x0030003000300030;  // what is below a zero becomes huge; that it borrows from its neighbour changes
                                    // nothing then
  }

  bool AreDigits() const noexcept { return (((digits_ + 0x0076007600760076) | digits_) & 0xFF80FF80FF80FF80) == 0; }

  // The weighted digits gather in the highest lane; no lane reaches 16 bits.
  int32_t AllFour() const noexcept { return Gather(uint64_t{1000} << 48 | uint64_t{100} << 32 | 10 << 16 | 1); }
  int32_t LastThree() const noexcept { return Gather(uint64_t{100} << 32 | 10 << 16 | 1); }

 private:
  int32_t Gather(uint64_t weights) const noexcept { return static_cast<int32_t>(digits_ * weights >> 48); }

  uint64_t digits_;
};

// The number in the `width` units from `at`, which is not behind the end of the text. Few units can't hold a number too
// large for the field it is for: two fit 8 bits, four 16 bits, seven 32 bits, each with or without a sign.
template <std::size_t width>
inline int32_t ReadPlace(CTextView text, std::size_t at) noexcept {
  static_assert(width == 2 || width == 3 || width == 4 || width == 7);
  if (width > text.size() - at) return ReadOddPlace(text, at, width);
  const WCHAR* units = text.data() + at;
  if constexpr (width >= 4) {
    const CFourPlaces first(units), last(units + width - 4);
    if (!first.AreDigits() || !last.AreDigits()) return ReadOddPlace(text, at, width);
    return width == 4 ? first.AllFour() : first.AllFour() * 1000 + last.LastThree();
  } else {
    uint32_t value = 0, isOdd = 0;
    for (std::size_t place = 0; place < width; ++place) {
      const uint32_t digit = uint32_t{units[place]} - '0';
      isOdd |= digit > 9 ? 1 : 0;
      value = value * 10 + digit;
    }
    return isOdd == 0 ? static_cast<int32_t>(value) : ReadOddPlace(text, at, width);
  }
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
