// The number of columns that a terminal uses for a character. Terminals follow these widths whatever the font.

#ifndef EXAMPLES_HOST_DISPLAY_WIDTH_H
#define EXAMPLES_HOST_DISPLAY_WIDTH_H

/// DisplayWidth returns 0 for a combining mark or an invisible control, 2 for a wide character, otherwise 1. Replace
/// control characters such as newline first: their result is meaningless.
unsigned DisplayWidth(char32_t codePoint);

/// IsRightToLeft returns whether the character belongs to a script that is written from right to left.
bool IsRightToLeft(char32_t codePoint);

#endif
