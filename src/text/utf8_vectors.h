// Conversions between UTF-8 and 16-bit text that exist in one form per set of vector instructions:
//
//     utf8_vectors_avx2.cpp     AVX2, which only some x86-64 processors have
//     utf8_vectors_neon.cpp     NEON, which every arm64 processor has
//
// The library chooses the best form for its processor when it is loaded. To add a form, write its file and its function
// below, and add it to Utf8VectorForms.
//
// The callers are the loops in unicode_to_string.cpp and unicode_to_buffer.cpp. They do all the work where there is no
// form, and they handle what a form leaves to them:
//
//   - A counting function counts the whole text, or returns kNotCounted for text that it doesn't handle.
//   - A converting function converts from the beginning of the text. It stops where less than a vector is left on
//     either side, or at a character that needs other treatment. It moves both cursors past what it has converted, and
//     the caller's loop continues there.

#pragma once

#include <array>
#include <cstddef>
#include <limits>

#include "zrcore/base.h"

inline constexpr std::size_t kNotCounted = std::numeric_limits<std::size_t>::max();

// One form. A counting function is null if the form can't count faster than the callers' own vectors (vectors.h).
struct Utf8Vectors {
  const char* name;
  std::size_t fewestBytes;     // countUnits and decode must not be called for fewer
  std::ptrdiff_t fewestUnits;  // countUtf8 must not be called for fewer; encode takes any number

  // Returns the number of units that the UTF-8 text yields. Returns kNotCounted for bad text: a lead byte that lacks a
  // continuation byte, unless the text ends first, or a continuation byte without a lead byte.
  std::size_t (*countUnits)(const unsigned char* text, std::size_t size) noexcept;

  // Decodes from the beginning of a text that is known to be good. `at` ends on the first byte of a character. Units
  // between the final `to` and `toEnd` are overwritten with garbage.
  void (*decode)(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept;

  // Returns the number of bytes of UTF-8 that the units yield, or kNotCounted if the text contains a lone surrogate.
  std::size_t (*countUtf8)(const WCHAR* text, std::size_t length) noexcept;

  // Encodes from `at`. Bytes after the final `to` may be overwritten with garbage. The units left, without the very
  // last, yield at least as many bytes as were overwritten, so the caller's loop writes over all of them.
  void (*encode)(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept;
};

// Each returns its form, or null if this processor can't run it or the library was built for another kind of processor.
[[nodiscard]] const Utf8Vectors* Utf8VectorsAvx2() noexcept;
[[nodiscard]] const Utf8Vectors* Utf8VectorsNeon() noexcept;

// Returns the results of all of them, the best form first. The last element is null: the callers' loops need no form.
[[nodiscard]] std::array<const Utf8Vectors*, 3> Utf8VectorForms() noexcept;

// The form that the library uses, null for none. Set once, when the library is loaded, to the best that isn't null.
extern const Utf8Vectors* g_utf8Vectors;
[[nodiscard]] const Utf8Vectors* BestUtf8Vectors() noexcept;
