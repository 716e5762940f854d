// The one rule by which a number of one type becomes a number of another. Single variants use StoreNumber, and the
// loops for arrays of numbers use the same bounds and CutNumber, so both convert alike.
//
// A number is compared with the target's bounds in binary64, before it is cut to the target type:
//
//     R8 127.5        -> I1   refused: the fraction takes part in the comparison, and 127.5 > 127
//     R8 -0.5         -> I1   0: within the range, then truncated towards zero
//     I4 300          -> UI1  refused
//     NaN, infinity   -> any  refused, ZR_VT_R8 included: no bound admits them
//     UI8 2^63 + 1024 -> I8   accepted with its bits unchanged: it rounds to 2^63, which is the upper bound in binary64

#pragma once

#include <concepts>
#include <cstdint>
#include <limits>

#include "zrcore/base.h"

// The bounds of a target type, inclusive, in binary64.
//
// The maxima of the 64-bit types, 2^63 - 1 and 2^64 - 1, are not binary64 numbers: the cast rounds them up to 2^63 and
// 2^64, which the types cannot represent. A value that rounds to such a bound is in range. An exact comparison of
// integers would refuse it, and callers rely on it being accepted.
template <class Target>
inline constexpr double kLowerBound = static_cast<double>(std::numeric_limits<Target>::lowest());
template <class Target>
inline constexpr double kUpperBound = static_cast<double>(std::numeric_limits<Target>::max());
static_assert(kUpperBound<int64_t> == 0x1p63 && kUpperBound<uint64_t> == 0x1p64);
static_assert(kUpperBound<float> == 3.4028234663852886e38 && kUpperBound<double> == 1.7976931348623157e308);

// Truncates towards zero. A value that does not fit, NaN included, becomes the smallest number, 0x8000000000000000. A
// plain cast would be undefined behaviour then, and would differ between processors. The comparison is negated so that
// it is true for NaN as well.
constexpr int64_t TruncateToInt64(double value) noexcept {
  if (!(value >= -0x1p63 && value < 0x1p63)) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(value);
}

// Truncates a value from 0 to 2^64 inclusive. The bound 2^64 does not fit, so a plain cast would be undefined
// behaviour; it becomes 2^63, which callers rely on.
//
// Values from 2^63 on are split: value = 2^63 + rest. The subtraction is exact, and rest < 2^63 unless value is 2^64.
constexpr uint64_t TruncateToUint64(double value) noexcept {
  constexpr uint64_t kTopBit = uint64_t{1} << 63;
  if (value < 0x1p63) return static_cast<uint64_t>(value);
  const double rest = value - 0x1p63;
  return rest < 0x1p63 ? kTopBit + static_cast<uint64_t>(rest) : kTopBit;
}

// The number as the target type represents it, for a number whose range has been checked. Integers keep their low bits,
// fractions are truncated towards zero for integers, and a double is rounded to the nearest float. From floating point
// the 64-bit targets need more than a cast: their upper bound is a value that the type cannot represent.
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

// Stores the number if it is in the range of the target, and returns whether it is. Both comparisons must be true to
// accept a number. All comparisons with NaN are false, so NaN is refused; a test for "too small or too large" would
// accept it.
template <class Target, class Source>
[[nodiscard]] constexpr bool StoreNumber(Source source, Target& target) noexcept {
  const auto value = static_cast<double>(source);
  if (!(value >= kLowerBound<Target> && kUpperBound<Target> >= value)) return false;
  target = CutNumber<Target>(source);
  return true;
}
