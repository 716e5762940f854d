// The one rule by which a number of one type becomes a number of another: for one variant, and for arrays of numbers.

#pragma once

#include <concepts>
#include <cstdint>
#include <limits>

#include "zrcore/base.h"

// Inclusive, in binary64. The upper bounds of 64 bits round up to a power of two that the type can't hold, so a value
// that rounds to the bound passes; callers rely on it.
template <class Target>
inline constexpr double kLowerBound = static_cast<double>(std::numeric_limits<Target>::lowest());
template <class Target>
inline constexpr double kUpperBound = static_cast<double>(std::numeric_limits<Target>::max());
static_assert(kUpperBound<int64_t> == 0x1p63 && kUpperBound<uint64_t> == 0x1p64);
static_assert(kUpperBound<float> == 3.4028234663852886e38 && kUpperBound<double> == 1.7976931348623157e308);

// Towards zero; what doesn't fit, NaN too, becomes the smallest number.
constexpr int64_t TruncateToInt64(double value) noexcept {
  if (!(value >= -0x1p63 && value < 0x1p63)) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(value);
}

// For 0 to 2^64, the end included, which becomes 2^63.
constexpr uint64_t TruncateToUint64(double value) noexcept {
  constexpr uint64_t kTopBit = uint64_t{1} << 63;
  if (value < 0x1p63) return static_cast<uint64_t>(value);
  const double rest = value - 0x1p63;
  return rest < 0x1p63 ? kTopBit + static_cast<uint64_t>(rest) : kTopBit;
}

// The number as the target type has it, without a check: integers are cut to the width, fractions towards zero.
template <class Target, class Source>
constexpr Target CutNumber(Source source) noexcept {
  if constexpr (std::floating_point<Source> && std::same_as<Target, int64_t>) {
    return TruncateToInt64(source);
  } else if constexpr (std::floating_point<Source> && std::same_as<Target, uint64_t>) {
    return TruncateToUint64(source);
  } else {
    return static_cast<Target>(source);
  }
}

// Stores the number if it is in the range of the target, checked in binary64 before anything is cut. NaN is in none.
template <class Target, class Source>
[[nodiscard]] constexpr bool StoreNumber(Source source, Target& target) noexcept {
  const auto value = static_cast<double>(source);
  if (!(value >= kLowerBound<Target> && kUpperBound<Target> >= value)) return false;
  target = CutNumber<Target>(source);
  return true;
}
