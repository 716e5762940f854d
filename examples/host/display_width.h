// How many columns of a terminal a character takes. Terminals draw by this rule, whatever the font.

#ifndef EXAMPLES_HOST_DISPLAY_WIDTH_H
#define EXAMPLES_HOST_DISPLAY_WIDTH_H

/// DisplayWidth is 0 for a combining mark, 2 for a wide East Asian character, else 1. Control characters have no width:
/// replace them first.
unsigned DisplayWidth(char32_t codePoint);

/// IsRightToLeft is whether the character belongs to a script that runs from right to left.
bool IsRightToLeft(char32_t codePoint);

#endif
