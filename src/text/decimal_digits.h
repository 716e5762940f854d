// Decimal digits straight into their final place: how many a number has, and writing them two at a time.

#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "text/digit_pairs.h"
#include "zrcore/base.h"

// For a number of n significant bits, the n-th entry added to it gives its count of digits in the upper half: the count
// for the smallest such number, and a carry into it from the power of ten on that lies among them.
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

// 1 to 10.
constexpr std::size_t CountDecimalDigits(uint32_t value) noexcept {
  return static_cast<std::size_t>((value + kDigitCounts[static_cast<std::size_t>(std::bit_width(value))]) >> 32);
}
static_assert(CountDecimalDigits(0) == 1 && CountDecimalDigits(9) == 1 && CountDecimalDigits(10) == 2);
static_assert(CountDecimalDigits(999'999'999) == 9 && CountDecimalDigits(1'000'000'000) == 10);
static_assert(CountDecimalDigits(0xFFFFFFFF) == 10);

// 1 to 20.
constexpr std::size_t CountLongDecimalDigits(uint64_t value) noexcept {
  constexpr uint64_t kBillion = 1'000'000'000;
  std::size_t below = 0;
  for (; value > 0xFFFFFFFF; value /= kBillion) below += 9;
  return below + CountDecimalDigits(static_cast<uint32_t>(value));
}
static_assert(CountLongDecimalDigits(0) == 1 && CountLongDecimalDigits(0x100000000) == 10);
static_assert(CountLongDecimalDigits(999'999'999'999'999'999) == 18 && CountLongDecimalDigits(~uint64_t{0}) == 20);

// Writes `value`, which has `digits` digits, and answers the place behind them.
inline WCHAR* WriteDecimalDigits(WCHAR* at, uint32_t value, std::size_t digits) noexcept {
  WCHAR* const end = at + digits;
  WCHAR* place = end;
  for (; value >= 100; value /= 100) {
    place -= 2;
    WriteTwoDigits(place, value % 100);
  }
  if (value >= 10) {
    WriteTwoDigits(place - 2, value);
  } else {
    place[-1] = static_cast<WCHAR>('0' + value);
  }
  return end;
}

// Writes the digits of `value` in front of `end` and answers the first.
inline WCHAR* WriteDecimalBackwards(WCHAR* end, uint64_t value) noexcept {
  for (; value >= 100; value /= 100) WriteTwoDigits(end -= 2, static_cast<uint32_t>(value % 100));
  if (value < 10) {
    *--end = static_cast<WCHAR>('0' + value);
  } else {
    WriteTwoDigits(end -= 2, static_cast<uint32_t>(value));
  }
  return end;
}
