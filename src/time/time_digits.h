// What the texts of date and time and of time spans have in common: numbers at fixed places.
//
// ReadPlace reads one number, digit by digit. CFourPlaces reads four digits at once, in the four 16-bit lanes of one
// 64-bit number. CPlainTime reads a whole time of day by CFourPlaces.

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "text/counted_string.h"
#include "text/number_text.h"

// Reads a place that isn't filled with digits: white space, a sign, then digits up to the first other unit, the end of
// the place or the end of the text. A place without a number is 0.
[[nodiscard]] int32_t ReadIrregularPlace(CTextView text, std::size_t at, std::size_t width) noexcept;

// Reads the number in the `width` units from `at`, which must not be greater than the length of the text.
//
// The result always fits the field that it is for: two units fit 8 bits, four fit 16 bits, seven fit 32 bits, with or
// without a sign. The loop collects in `isIrregular` whether any unit isn't a digit, so that it has no early exit.
template <std::size_t width>
inline int32_t ReadPlace(CTextView text, std::size_t at) noexcept {
  static_assert(width <= 7);
  if (width > text.size() - at) return ReadIrregularPlace(text, at, width);
  uint32_t value = 0, isIrregular = 0;
  for (std::size_t place = at; place < at + width; ++place) {
    const uint32_t digit = uint32_t{text[place]} - '0';
    isIrregular |= digit > 9 ? 1 : 0;
    value = value * 10 + digit;
  }
  return isIrregular == 0 ? static_cast<int32_t>(value) : ReadIrregularPlace(text, at, width);
}

// Four places at once: a number of four digits, or two numbers of two digits. Each place is a lane of 16 bits in a
// 64-bit number, the first place in the lowest lane, from which '0' is subtracted:
//
//     text "2012"  ->  lanes, highest first:  0002 0001 0000 0002
class CFourPlaces {
 public:
  explicit CFourPlaces(const WCHAR* four) noexcept : CFourPlaces(four, four + 2) {}
  // A unit below '0' becomes a huge number and borrows 1 from the next lane. The borrow does no harm, because
  // AreDigits is false then anyway.
  CFourPlaces(const WCHAR* pair, const WCHAR* otherPair) noexcept
      : lanes_((uint64_t{TwoUnits(otherPair)} << 32 | TwoUnits(pair)) - 0x0030003000300030) {}

  // In each lane, a digit plus 0x76 stays below 0x80, and 10 or more sets one of the bits 7 to 15. `| lanes_` catches
  // lanes so large that the sum overflows them.
  bool AreDigits() const noexcept { return (((lanes_ + 0x0076007600760076) | lanes_) & 0xFF80FF80FF80FF80) == 0; }

  // The product of lanes and weights has in its highest lane the sum of lane 0 times weight 3, lane 1 times weight 2,
  // lane 2 times weight 1 and lane 3 times weight 0. With the weights 1000, 100, 10 and 1 this is the number. No lane
  // exceeds 9999, so none carries into the next. With 10 and 1 alone, lane 1 is the first pair and lane 3 the second.
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

  // The highest lane of the product.
  int32_t Highest(uint64_t weights) const noexcept { return static_cast<int32_t>(lanes_ * weights >> 48); }

  uint64_t lanes_;
};

// A time as it is written, "05:06:07.1234567", which is what nearly all callers pass: a digit in every place, and any
// characters between the places. The numbers are valid only if IsPlain.
//
// The seven digits of the ticks are read as the digits 1 to 4 and 4 to 7, and the second reading drops its first digit.
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
