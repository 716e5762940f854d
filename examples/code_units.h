// The library's 16-bit text in the terms of the languages: literals for C and C++, W("text") and W('c'), and for C++
// the standard library's texts of such units.

#ifndef EXAMPLES_CODE_UNITS_H
#define EXAMPLES_CODE_UNITS_H

#include <zrcore/base.h>

// The prefix decides about the type of a literal. On Windows that is wchar_t, as everywhere there.
#if defined(_WIN32)
#define W_(literal) L##literal
#else
#define W_(literal) u##literal
#endif
#define W(literal) W_(literal)

#ifdef __cplusplus
#include <string>
#include <string_view>

using WideText = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;
#endif

#endif
