// Literals of 16-bit code units, from ASCII ones or others: W("text"), W("some " "more").

#pragma once

#if defined(_WIN32)
#define WIDE_(text) L##text
#else
#define WIDE_(text) u##text
#endif
#define W(text) WIDE_(text)
