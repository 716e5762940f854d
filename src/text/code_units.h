// Code units: literals of them, and scans over them.

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "zrcore/base.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Code units that somebody else owns.
using CTextView = std::basic_string_view<WCHAR>;

// An ASCII literal as code units, terminator included. (A u"" literal has the wrong type where WCHAR is wchar_t.)
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

// A scan in steps of an aligned vector reads beside the text, though never into another page. The sanitizers would call
// that an error, and rightly so anywhere else.
#if defined(__GNUC__)
#define ZR_READS_WHOLE_VECTORS __attribute__((no_sanitize("address", "thread")))
#else
#define ZR_READS_WHOLE_VECTORS
#endif

// The number of units in front of the first zero unit.
#if defined(__SSE2__)
ZR_READS_WHOLE_VECTORS inline std::size_t TerminatedLength(const WCHAR* text) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(text);
  if (address % sizeof(WCHAR) != 0) {  // a vector boundary would cut its units in two
    const char* bytes = reinterpret_cast<const char*>(text);
    for (std::size_t length = 0;; ++length) {
      WCHAR unit;
      std::memcpy(&unit, bytes + length * sizeof unit, sizeof unit);
      if (unit == 0) return length;
    }
  }
  const __m128i zero = _mm_setzero_si128();
  const std::size_t before = address % 16;
  auto vector = reinterpret_cast<const __m128i*>(reinterpret_cast<const char*>(text) - before);
  // Two bits a unit; those of the units in front of the text are dropped.
  auto zeros = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_load_si128(vector), zero))) >> before;
  if (zeros != 0) return static_cast<std::size_t>(std::countr_zero(zeros)) / sizeof(WCHAR);
  do {
    zeros = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_load_si128(++vector), zero)));
  } while (zeros == 0);
  const std::size_t bytes =
      reinterpret_cast<std::uintptr_t>(vector) - address + static_cast<std::size_t>(std::countr_zero(zeros));
  return bytes / sizeof(WCHAR);
}
#else
inline std::size_t TerminatedLength(const WCHAR* text) noexcept {
  std::size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}
#endif
