// Conversion between UTF-8, in files and on terminals, and the library's 16-bit strings.

#ifndef EXAMPLES_HOST_UTF8_H
#define EXAMPLES_HOST_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

#include "owners.h"

/// FindInvalidUtf8 returns the position of the first byte that doesn't begin a valid character; npos if all bytes are
/// valid. It is strict: overlong forms, surrogates, values above U+10FFFF and incomplete characters are invalid.
std::size_t FindInvalidUtf8(std::string_view bytes);

/// FromUtf8 converts valid UTF-8 to a string. Call FindInvalidUtf8 first: the library accepts some invalid sequences.
///
/// Throws std::bad_alloc when out of memory, or if the text is too long for a string.
StringOwner FromUtf8(const std::string& bytes);

/// ToUtf8 converts a string to UTF-8. An unpaired surrogate, which UTF-8 can't represent, becomes U+FFFD. The result
/// ends before the first zero unit.
std::string ToUtf8(ZRSTR string);

#endif
