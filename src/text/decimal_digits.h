// Decimal digits in 16-bit text: how many a number has, and writing them straight into their final place.
//
// Digits are written two at a time from a table, because a division by 100 costs as much as one by 10. A caller counts
// the digits, allocates a string of exactly that length and writes into it, without a buffer.

#pragma once

#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zrcore/base.h"

// ---- Fixed widths, padded with zeros -------------------------------------------------------------------------------

// "00" to "99".
inline constexpr std::array<std::array<WCHAR, 2>, 100> kDigitPairs = [] {
  std::array<std::array<WCHAR, 2>, 100> pairs{};
  for (unsigned value = 0; value < 100; ++value) {
    pairs[value] = {static_cast<WCHAR>('0' + value / 10), static_cast<WCHAR>('0' + value % 10)};
  }
  return pairs;
}();

// `value` is below 100.
inline void WriteTwoDigits(WCHAR* at, uint32_t value) noexcept {
  std::memcpy(at, kDigitPairs[value].data(), sizeof kDigitPairs[value]);
}

// `value` is below 1000.
inline void WriteThreeDigits(WCHAR* at, uint32_t value) noexcept {
  at[0] = static_cast<WCHAR>('0' + value / 100);
  WriteTwoDigits(at + 1, value % 100);
}

// `value` is below 10000.
inline void WriteFourDigits(WCHAR* at, uint32_t value) noexcept {
  WriteTwoDigits(at, value / 100);
  WriteTwoDigits(at + 2, value % 100);
}

// `value` is below 10000000.
inline void WriteSevenDigits(WCHAR* at, uint32_t value) noexcept {
  WriteThreeDigits(at, value / 10000);
  WriteFourDigits(at + 3, value % 10000);
}

// ---- Counting ------------------------------------------------------------------------------------------------------

// Entry n is for the numbers of n significant bits. The upper half of number + entry is the number's count of digits.
//
// At most one power of ten lies among these numbers. If none does, they all have the same count, and the entry is
// count << 32. Otherwise the entry is ((count + 1) << 32) - power: from the power of ten on, the sum reaches
// (count + 1) << 32, and below it stays under. For four bits, 8 to 15, the entry is (2 << 32) - 10:
//
//     9 + entry  = (2 << 32) - 1  -> 1 digit
//     10 + entry = (2 << 32)      -> 2 digits
inline constexpr std::array<uint64_t, 33> kDigitCounts = [] {
  std::array<uint64_t, 33> counts{};
  uint64_t digits = 1, powerOfTen = 10;  // of the smallest number, and the first power above it
  for (std::size_t bits = 0; bits < counts.size(); ++bits) {
    const uint64_t smallest = bits == 0 ? 0 : uint64_t{1} << (bits - 1);
    const uint64_t largest = (uint64_t{1} << bits) - 1;
    while (smallest >= powerOfTen) {
      ++digits;
      powerOfTen *= 10;
    }
    counts[bits] = largest < powerOfTen ? digits << 32 : ((digits + 1) << 32) - powerOfTen;
  }
  return counts;
}();

// Returns 1 to 10.
constexpr std::size_t CountDecimalDigits(uint32_t value) noexcept {
  return static_cast<std::size_t>((value + kDigitCounts[static_cast<std::size_t>(std::bit_width(value))]) >> 32);
}
static_assert(CountDecimalDigits(0) == 1 && CountDecimalDigits(9) == 1 && CountDecimalDigits(10) == 2);
static_assert(CountDecimalDigits(999'999'999) == 9 && CountDecimalDigits(1'000'000'000) == 10);
static_assert(CountDecimalDigits(0xFFFFFFFF) == 10);

// Returns 1 to 20. Each division by 10^9 removes nine digits, until the rest fits 32 bits.
constexpr std::size_t CountLongDecimalDigits(uint64_t value) noexcept {
  constexpr uint64_t kBillion = 1'000'000'000;
  std::size_t below = 0;
  for (; value > 0xFFFFFFFF; value /= kBillion) below += 9;
  return below + CountDecimalDigits(static_cast<uint32_t>(value));
}
static_assert(CountLongDecimalDigits(0) == 1 && CountLongDecimalDigits(0x100000000) == 10);
static_assert(CountLongDecimalDigits(999'999'999'999'999'999) == 18 && CountLongDecimalDigits(~uint64_t{0}) == 20);

// ---- As many digits as the number has ------------------------------------------------------------------------------

// Writes the digits of `value` so that the last one is at end[-1]. Returns the place of the first.
template <std::unsigned_integral Number>
inline WCHAR* WriteDecimalBackwards(WCHAR* end, Number value) noexcept {
  for (; value >= 100; value /= 100) WriteTwoDigits(end -= 2, static_cast<uint32_t>(value % 100));
  if (value < 10) {
    *--end = static_cast<WCHAR>('0' + value);
  } else {
    WriteTwoDigits(end -= 2, static_cast<uint32_t>(value));
  }
  return end;
}

// Writes `value`, which has `digits` digits, and returns the place after them.
inline WCHAR* WriteDecimalDigits(WCHAR* at, uint32_t value, std::size_t digits) noexcept {
  (void)WriteDecimalBackwards(at + digits, value);
  return at + digits;
}

enum class Pad : char { Blanks = ' ', Zeros = '0' };

// Writes `value` as printf does for "%*d" (blanks) or "%0*d" (zeros): at least `width` units, the sign included. The
// sign comes before padding zeros and after padding blanks: -7 in four units is "-007" or "  -7". Returns the place
// after the last unit; writes at most max(width, 20) units.
//
// The negation is unsigned, because -2^63 has no positive counterpart: 0 - 2^63 is 2^63 modulo 2^64.
inline WCHAR* WritePadded(WCHAR* at, int64_t value, std::size_t width, Pad pad) noexcept {
  const uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  const std::size_t digits = CountLongDecimalDigits(magnitude);
  std::size_t length = digits + (value < 0 ? 1 : 0);
  if (value < 0 && pad == Pad::Zeros) *at++ = '-';
  for (; length < width; ++length) *at++ = static_cast<WCHAR>(pad);
  if (value < 0 && pad == Pad::Blanks) *at++ = '-';
  (void)WriteDecimalBackwards(at + digits, magnitude);
  return at + digits;
}
