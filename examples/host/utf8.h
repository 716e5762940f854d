// The way between a terminal's or a file's UTF-8 and the 16-bit text of the library.

#ifndef EXAMPLES_HOST_UTF8_H
#define EXAMPLES_HOST_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

/// Utf16Text is what FromUtf8 made. If `faultAt` is below the length of the input, that byte begins what is no UTF-8,
/// and `units` ends there.
struct Utf16Text {
  std::u16string units;
  std::size_t faultAt = std::string_view::npos;

  bool IsWhole() const { return faultAt == std::string_view::npos; }
};

/// FromUtf8 is strict: no overlong forms, no surrogates, nothing beyond U+10FFFF, no character that breaks off.
Utf16Text FromUtf8(std::string_view bytes);

/// ToUtf8 writes an unpaired surrogate as U+FFFD, since no UTF-8 exists for it.
std::string ToUtf8(std::u16string_view units);

#endif
