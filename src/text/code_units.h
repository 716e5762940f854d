// Code units, the 16-bit elements of text: how to write them as literals, and how to find the end of a text.
//
// WCHAR is char16_t on POSIX systems and wchar_t on Windows, so neither u"" nor L"" literals have the right type on
// both. WideLiteral converts an ASCII literal at compile time:
//
//     static constexpr auto kNil = WideLiteral("0.0");   // an array of four units, the last one 0
//     if (text == ViewOf(kNil)) ...                      // a view of three units

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "text/vectors.h"
#include "zrcore/base.h"

// A view of code units. It doesn't own them and need not end with a zero unit.
using CTextView = std::basic_string_view<WCHAR>;

// An ASCII literal as code units, terminator included.
template <std::size_t size>
consteval std::array<WCHAR, size> WideLiteral(const char (&literal)[size]) {
  std::array<WCHAR, size> units{};
  for (std::size_t at = 0; at < size; ++at) {
    if (static_cast<unsigned char>(literal[at]) > 0x7F) throw "only ASCII is the same in both";  // stops the build
    units[at] = static_cast<WCHAR>(literal[at]);
  }
  return units;
}

// The units of such a literal, without its terminator.
template <std::size_t size>
constexpr CTextView ViewOf(const std::array<WCHAR, size>& literal) noexcept {
  return {literal.data(), size - 1};
}

// For a function that reads whole vectors and so reads past the ends of a text. The processor allows it as long as a
// vector doesn't reach into another page of memory. The sanitizers report such a read as an error, so they must not
// check the function. Nothing else may use this.
#if defined(__GNUC__)
#define ZR_READS_WHOLE_VECTORS __attribute__((no_sanitize("address", "thread")))
#else
#define ZR_READS_WHOLE_VECTORS
#endif

// Returns the number of units before the first zero unit.
//
// It reads vectors at addresses that are multiples of 16, which never cross the end of a page. The first vector may
// begin before the text and the last may end after it. No unit after the terminator's vector is read.
#if defined(ZR_HAS_VECTORS)
ZR_READS_WHOLE_VECTORS inline std::size_t TerminatedLength(const WCHAR* text) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(text);
  // At an odd address, units would lie across the boundaries of aligned vectors, and a comparison by units would never
  // see them whole. The copy avoids a misaligned read of a WCHAR, which is undefined behaviour.
  if (address % sizeof(WCHAR) != 0) {
    const char* bytes = reinterpret_cast<const char*>(text);
    for (std::size_t length = 0;; ++length) {
      WCHAR unit;
      std::memcpy(&unit, bytes + length * sizeof unit, sizeof unit);
      if (unit == 0) return length;
    }
  }
  const std::size_t before = address % 16;
  const char* vector = reinterpret_cast<const char*>(text) - before;
  // TopBits returns two bits per unit, set for a zero unit. The shift drops the bits of what precedes the text.
  UnitVector isZero = IsEqual(LoadAlignedUnits(vector), EachUnit(0));
  if (const unsigned zeros = TopBits(isZero) >> before; zeros != 0) {
    return static_cast<std::size_t>(std::countr_zero(zeros)) / sizeof(WCHAR);
  }
  do {
    vector += 16;
    isZero = IsEqual(LoadAlignedUnits(vector), EachUnit(0));
  } while (!HasTopBit(isZero));
  const std::size_t bytes =
      reinterpret_cast<std::uintptr_t>(vector) - address + static_cast<std::size_t>(std::countr_zero(TopBits(isZero)));
  return bytes / sizeof(WCHAR);
}
#else
inline std::size_t TerminatedLength(const WCHAR* text) noexcept {
  std::size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}
#endif
