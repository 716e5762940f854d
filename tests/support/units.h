// Texts that nobody has to give up: in 16-bit code units, in bytes, and from one to the other. Literals of units, from
// ASCII ones or others, are W("text"), W("some " "more").

#pragma once

#include <cstdio>
#include <string>

#include "zrcore/base.h"

#if defined(_WIN32)
#define WIDE_(text) L##text
#else
#define WIDE_(text) u##text
#endif
#define W(text) WIDE_(text)

using Units = std::basic_string<WCHAR>;

inline Units Widened(const std::string& ascii) { return Units(ascii.begin(), ascii.end()); }

// For readers of bytes. What isn't ASCII ends every number, and so does the byte that stands for it here.
inline std::string Narrowed(const Units& units) {
  std::string bytes;
  for (WCHAR unit : units) bytes += unit < 0x80 ? static_cast<char>(unit) : '\x7f';
  return bytes;
}

template <class... Arguments>
std::string Format(const char* format, Arguments... arguments) {
  char text[400];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}
