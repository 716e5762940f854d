// What the system knows of text: case in the user's locale, and UTF-8 that is always well-formed.

#pragma once

#include <array>
#include <cstdint>

#include "zrcore/base.h"

// The process's default locale for characters, as the user's environment names it. Never null.
using CharacterLocale = void*;

// Should the environment name a locale that is not there, the C locale stands in. Null if there is no memory for it.
[[nodiscard]] CharacterLocale PlatformOpenCharacterLocale() noexcept;

// Null is ignored.
void PlatformCloseCharacterLocale(CharacterLocale locale) noexcept;

// One unit in the other case; itself if it has none. In a null locale only ASCII letters have case.
[[nodiscard]] WCHAR PlatformToLower(CharacterLocale locale, WCHAR unit) noexcept;
[[nodiscard]] WCHAR PlatformToUpper(CharacterLocale locale, WCHAR unit) noexcept;

// The decimal point of the calling thread's current locale for numbers, as a unit and as the C library spells it.
struct CDecimalPoint {
  WCHAR unit;
  std::array<char, 8> bytes;  // zero-terminated
};
[[nodiscard]] CDecimalPoint PlatformDecimalPoint() noexcept;

// Writes a zero-terminated text and its terminator as UTF-8; U+FFFD stands for each lone surrogate. Returns the number
// of bytes written. If `size` is 0, returns the number of bytes needed, and `buffer` is ignored. Otherwise returns 0 if
// `size` is negative, `buffer` is null or the text itself, the buffer is too small, or the number doesn't fit 31 bits.
[[nodiscard]] int32_t PlatformTextToUtf8(const WCHAR* text, char* buffer, int32_t size) noexcept;
