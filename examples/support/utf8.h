// Reading UTF-8 character by character.

#ifndef EXAMPLES_SUPPORT_UTF8_H
#define EXAMPLES_SUPPORT_UTF8_H

#include <cstddef>
#include <string_view>

inline constexpr char32_t kNotUtf8 = 0xFFFFFFFF;

/// TakeCodePoint removes the first character from `text`, which must not be empty, and returns it. If the text doesn't
/// begin with a valid character, one byte is removed and the result is kNotUtf8. Overlong forms, surrogates and values
/// above U+10FFFF are not valid.
inline char32_t TakeCodePoint(std::string_view& text) {
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};  // by length; smaller values are overlong
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned lead = byte(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC0 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF8 ? 4
                                           : 0;
  char32_t codePoint = length == 1 ? lead : lead & 0x7Fu >> length;
  bool isValid = length != 0 && length <= text.size();
  for (std::size_t at = 1; isValid && at < length; ++at) {
    isValid = (byte(at) & 0xC0u) == 0x80u;
    codePoint = codePoint << 6 | (byte(at) & 0x3Fu);
  }
  isValid = isValid && codePoint >= kLeast[length] && codePoint <= 0x10FFFF && (codePoint & 0xFFFFF800) != 0xD800;
  text.remove_prefix(isValid ? length : 1);
  return isValid ? codePoint : kNotUtf8;
}

#endif
