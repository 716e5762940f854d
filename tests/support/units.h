// Texts as 16-bit code units, as bytes and as strings of the library. W("text") and W("some " "more") are literals of
// 16-bit units. This header does not need GoogleTest, so fuzz targets can use it.

#pragma once

#include <cstdio>
#include <string>
#include <utility>

#include "zrcore/string.h"

#if defined(_WIN32)
#define WIDE_(text) L##text
#else
#define WIDE_(text) u##text
#endif
#define W(text) WIDE_(text)

using Units = std::basic_string<WCHAR>;

inline Units Widened(const std::string& ascii) { return Units(ascii.begin(), ascii.end()); }

// For parsers of bytes. A unit that is not ASCII becomes one byte that, like the unit, ends every number.
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

// Owns one reference to a string.
struct Owned {
  ZRSTR string = nullptr;
  Owned() = default;
  explicit Owned(ZRSTR taken) : string(taken) {}
  Owned(const Units& units)
      : string(ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR)))) {}
  Owned(const Owned& other) : string(other.string ? ZrCopyString(other.string) : nullptr) {}
  Owned(Owned&& other) noexcept : string(std::exchange(other.string, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept { return std::swap(string, other.string), *this; }
  ~Owned() { ZrDestroyString(string); }
  operator ZRSTR() const { return string; }
};
