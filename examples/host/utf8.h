// The way between a terminal's or a file's UTF-8 and the 16-bit text of the library.

#ifndef EXAMPLES_HOST_UTF8_H
#define EXAMPLES_HOST_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

#include "owners.h"

/// FaultInUtf8 is the place of the first byte that begins no UTF-8; npos if all is well. It is strict: no overlong
/// forms, no surrogates, nothing beyond U+10FFFF, no character that breaks off.
std::size_t FaultInUtf8(std::string_view bytes);

/// FromUtf8 makes a string of UTF-8 without a fault. The library's own check is loose, so check strictly before.
///
/// Throws std::bad_alloc, also for a text that a string has no room for.
StringOwner FromUtf8(const std::string& bytes);

/// ToUtf8 writes an unpaired surrogate as U+FFFD, since no UTF-8 exists for it. A zero unit ends the text.
std::string ToUtf8(ZRSTR string);

#endif
