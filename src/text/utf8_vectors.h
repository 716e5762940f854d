// UTF-8 and 16-bit text in vectors of 32 bytes, for processors that have them. Whether this one does is found out once,
// when the library is loaded; without them nothing here is called, and the loops of the conversions do all the work.
//
// What is counted here is counted whole. What is converted here is converted from the front, as far as whole vectors
// fit into both sides and nothing odd turns up: the cursors are moved behind that, and the loops go on from there.

#pragma once

#include <cstddef>
#include <limits>

#include "zrcore/base.h"

extern bool g_hasAvx2;

// By the processor, and by the compiler.
[[nodiscard]] bool DetectAvx2() noexcept;

inline constexpr std::size_t kNotCounted = std::numeric_limits<std::size_t>::max();

// The units that a text of at least kFewestBytes yields, or kNotCounted if it is bad.
inline constexpr std::size_t kFewestBytes = 35;
[[nodiscard]] std::size_t CountUnitsAvx2(const unsigned char* text, std::size_t size) noexcept;

// Decodes from the beginning of a text that was counted and is good. Units beside `to` are not kept, up to `toEnd`.
void DecodeAvx2(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept;

// The bytes that at least kFewestUnits units yield, or kNotCounted if not all surrogates stand in pairs.
inline constexpr std::size_t kFewestUnits = 16;
[[nodiscard]] std::size_t CountUtf8Avx2(const WCHAR* text, std::size_t length) noexcept;

// Encodes from `at`. What it leaves yields enough bytes to cover whatever is stored behind `to`.
void EncodeAvx2(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept;
