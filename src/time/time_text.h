// What the texts of date and time and of time spans have in common: numbers at fixed places, and strings from
// a few units.

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

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

// Four places at once, one a lane of 16 bits, the first in the lowest: a number of four digits or two of two.
class CFourPlaces {
 public:
  explicit CFourPlaces(const WCHAR* four) noexcept : CFourPlaces(four, four + 2) {}
  // What is below a zero becomes huge; that it borrows from its neighbour changes nothing then.
  CFourPlaces(const WCHAR* pair, const WCHAR* otherPair) noexcept
      : lanes_((uint64_t{TwoUnits(otherPair)} << 32 | TwoUnits(pair)) - 0x0030003000300030) {}

  bool AreDigits() const noexcept { return (((lanes_ + 0x0076007600760076) | lanes_) & 0xFF80FF80FF80FF80) == 0; }

  // Weighted, the digits gather in the highest lane, and pairs in every other one. No lane overflows.
  int32_t Number() const noexcept { return Highest(uint64_t{1000} << 48 | uint64_t{100} << 32 | 10 << 16 | 1); }
  int32_t LastThree() const noexcept { return Highest(uint64_t{100} << 32 | 10 << 16 | 1); }
  int32_t Pair() const noexcept { return static_cast<int32_t>(lanes_ * (10 << 16 | 1) >> 16 & 0xFFFF); }
  int32_t OtherPair() const noexcept { return Highest(10 << 16 | 1); }

 private:
  static uint32_t TwoUnits(const WCHAR* units) noexcept {
    static_assert(std::endian::native == std::endian::little);
    uint32_t two;
    std::memcpy(&two, units, sizeof two);
    return two;
  }

  int32_t Highest(uint64_t weights) const noexcept { return static_cast<int32_t>(lanes_ * weights >> 48); }

  uint64_t lanes_;
};

// The way that times nearly always come: "05:06:07.1234567", all digits there, whatever stands between.
class CPlainTime {
 public:
  static constexpr std::size_t kLength = 16;

  explicit CPlainTime(const WCHAR* text) noexcept
      : hourAndMinute_(text, text + 3), second_(text + 6, text + 6), ticks_(text + 9), lastTicks_(text + 12) {}

  bool IsPlain() const noexcept {
    return hourAndMinute_.AreDigits() && second_.AreDigits() && ticks_.AreDigits() && lastTicks_.AreDigits();
  }
  int32_t Hour() const noexcept { return hourAndMinute_.Pair(); }
  int32_t Minute() const noexcept { return hourAndMinute_.OtherPair(); }
  int32_t Second() const noexcept { return second_.Pair(); }
  int32_t Ticks() const noexcept { return ticks_.Number() * 1000 + lastTicks_.LastThree(); }

 private:
  CFourPlaces hourAndMinute_, second_, ticks_, lastTicks_;
};

// A new string of the units from `begin` to `end`; null when memory is exhausted.
[[nodiscard]] ZRSTR NewString(const WCHAR* begin, const WCHAR* end) noexcept;
