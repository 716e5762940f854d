// What the system knows about text: letter case in the user's locale, the decimal point, and well-formed UTF-8.

#pragma once

#include <array>
#include <cstdint>

#include "zrcore/base.h"

// The process's default locale for characters, which the user's environment names, whatever locale the program has set.
// Null means that it couldn't be opened; the functions below accept it.
using CharacterLocale = void*;

// Opens the default locale, or the C locale if the system doesn't have the one that the environment names. Returns null
// when out of memory.
[[nodiscard]] CharacterLocale PlatformOpenCharacterLocale() noexcept;

// Null is ignored.
void PlatformCloseCharacterLocale(CharacterLocale locale) noexcept;

// Return a unit in lower or upper case, or the unit itself if it has no such form. In a null locale only ASCII letters
// have case.
[[nodiscard]] WCHAR PlatformToLower(CharacterLocale locale, WCHAR unit) noexcept;
[[nodiscard]] WCHAR PlatformToUpper(CharacterLocale locale, WCHAR unit) noexcept;

// The decimal point of the calling thread's current locale for numbers: as a unit, and in the bytes that the C library
// uses, which can be several. The unit is '.' if the locale's own point isn't exactly one unit.
struct CDecimalPoint {
  WCHAR unit;
  std::array<char, 8> bytes;  // zero-terminated
};
[[nodiscard]] CDecimalPoint PlatformDecimalPoint() noexcept;

// Writes a zero-terminated text and its terminator as UTF-8, with U+FFFD for each lone surrogate. Returns the number of
// bytes written, or the number of bytes needed if `size` is 0; `buffer` is ignored then.
//
// Returns 0 if `size` is negative, if the buffer is too small, if `size` isn't 0 and `buffer` is null or has the
// address of the text, or if more than 0x7FFFFFFF bytes are needed.
[[nodiscard]] int32_t PlatformTextToUtf8(const WCHAR* text, char* buffer, int32_t size) noexcept;
