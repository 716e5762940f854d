// Literals of the library's 16-bit text for C and C++: W("text") and W('c').

#ifndef EXAMPLES_CODE_UNITS_H
#define EXAMPLES_CODE_UNITS_H

#include <zrcore/base.h>

// The prefix selects the type of the literal. WCHAR is wchar_t on Windows and char16_t elsewhere.
#if defined(_WIN32)
#define W_(literal) L##literal
#else
#define W_(literal) u##literal
#endif
#define W(literal) W_(literal)

#endif
