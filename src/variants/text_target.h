// The target function for ZR_VT_STR; see target_function.h for what all target functions share.

#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

#include "text/counted_string.h"
#include "text/decimal_digits.h"
#include "variants/target_function.h"

// Stores a string that the caller owns. Out of memory is a failure only for UUIDs and code points; for all other
// sources the string is null and the result ZR_R_OK. A blob without bytes also becomes a null string.
TargetFunction ToStr;

// The text of an integer: decimal digits, after a minus sign if it is negative. Returns null when out of memory.
//
// The magnitude is computed in unsigned arithmetic, since the smallest number has no positive counterpart: 0 - bits is
// the magnitude modulo 2^64.
template <std::integral Integer>
requires(sizeof(Integer) >= sizeof(uint32_t)) [[nodiscard]] inline ZRSTR NewIntegerText(Integer value) noexcept {
  using Magnitude = std::make_unsigned_t<Integer>;
  const bool isNegative = std::is_signed_v<Integer> && value < Integer{};
  const auto bits = static_cast<Magnitude>(value);
  const Magnitude magnitude = isNegative ? Magnitude{0} - bits : bits;
  const std::size_t length = CountLongDecimalDigits(magnitude) + (isNegative ? 1 : 0);
  ZRSTR string = AllocateText(length);
  if (string == nullptr) return nullptr;
  (void)WriteDecimalBackwards(string + length, magnitude);
  if (isNegative) string[0] = '-';
  return string;
}
