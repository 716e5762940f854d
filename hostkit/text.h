// Texts of the kit: counted strings from the UTF-8 of files, and pieces of reasons.

#ifndef HOSTKIT_TEXT_H
#define HOSTKIT_TEXT_H

#include <string>
#include <string_view>

#include "zr/string.hpp"

/// The string of a text in UTF-8. If the text is not UTF-8, as a message of the operating system can be, each byte
/// above 127 becomes U+FFFD.
[[nodiscard]] zr::String TextOf(std::string_view utf8);

/// The beginning of a text from a file, for a reason. Files come from anywhere: without a limit, one long name could be
/// repeated in thousands of reasons.
[[nodiscard]] std::string Shortened(std::string_view utf8);

/// The beginning of a text from a file in quotation marks, for a reason. Control characters are escaped, since they
/// could change what a terminal shows.
[[nodiscard]] std::string Quoted(std::string_view utf8);
[[nodiscard]] std::string Quoted(const zr::String& text);

#endif
