// Conversion between UTF-16 and UTF-8 for calls of POSIX systems: strict for file names, lossy for text that a person
// reads. (The exported conversions are in src/text, and have other rules.)

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// One character of UTF-16.
struct CUtf16Character {
  char32_t codePoint;  // U+FFFD for a lone surrogate
  std::size_t units;   // 1, or 2 for a surrogate pair
  bool isWellFormed;   // false for a lone surrogate
};

// Returns the character that begins with `unit`. `next` is the unit after it, or 0 at the end of the text.
[[nodiscard]] CUtf16Character ReadUtf16Character(char16_t unit, char16_t next) noexcept;

// Returns null if the text contains a lone surrogate: no file has such a name.
[[nodiscard]] std::optional<std::string> ToUtf8(std::u16string_view text);

// Replaces each lone surrogate by U+FFFD.
[[nodiscard]] std::string ToUtf8Lossy(std::u16string_view text);

// Replaces each byte that is not part of a well-formed sequence by U+FFFD.
[[nodiscard]] std::u16string FromUtf8Lossy(std::string_view bytes);
