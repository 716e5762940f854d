// Conversions between UTF-8 and 16-bit text in vectors of 32 bytes, for processors with the AVX2 instructions.
//
// The callers are the loops in unicode_to_string.cpp and unicode_to_buffer.cpp. They do all the work on other
// processors, and they handle what the functions below leave to them:
//
//   - A counting function counts the whole text, or returns kNotCounted for text that it doesn't handle.
//   - A converting function converts from the beginning of the text. It stops where less than a vector is left on
//     either side, or at a character that needs other treatment. It moves both cursors past what it has converted, and
//     the caller's loop continues there.

#pragma once

#include <cstddef>
#include <limits>

#include "zrcore/base.h"

// Whether this processor can run the functions below; they must not be called otherwise. Set once, when the library is
// loaded, by DetectAvx2.
extern bool g_hasAvx2;

// Returns whether the processor has AVX2 and POPCNT. False if the library was built without code for them.
[[nodiscard]] bool DetectAvx2() noexcept;

inline constexpr std::size_t kNotCounted = std::numeric_limits<std::size_t>::max();

// Returns the number of units that UTF-8 of at least kFewestBytes bytes yields. Returns kNotCounted for bad text: a
// lead byte that lacks a continuation byte, unless the text ends first, or a continuation byte without a lead byte.
inline constexpr std::size_t kFewestBytes = 35;  // the last vector ends with the text and reads three bytes before it
[[nodiscard]] std::size_t CountUnitsAvx2(const unsigned char* text, std::size_t size) noexcept;

// Decodes from the beginning of a text that CountUnitsAvx2 has found good. `at` ends on the first byte of a character.
// Units between the final `to` and `toEnd` are overwritten with garbage.
void DecodeAvx2(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept;

// Returns the number of bytes of UTF-8 that at least kFewestUnits units yield, or kNotCounted if the text contains a
// lone surrogate.
inline constexpr std::size_t kFewestUnits = 16;  // one vector
[[nodiscard]] std::size_t CountUtf8Avx2(const WCHAR* text, std::size_t length) noexcept;

// Encodes from `at`. Bytes after the final `to` may be overwritten with garbage. The units left, without the very last,
// yield at least as many bytes as were overwritten, so the caller's loop writes over all of them.
void EncodeAvx2(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept;
