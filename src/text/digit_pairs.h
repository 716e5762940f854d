// Decimal digits two at a time, for numbers that are known to fill their place. (text/decimal_digits.h finds the place
// of any other; text/number_text.h pads and signs.)

#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "zrcore/base.h"

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
