// What fuzz targets share: claims that end the process, and texts of exactly the input's size.

#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zrcore/base.h"

#define FUZZ_CLAIM(claim)                                              \
  do {                                                                 \
    if (!(claim)) {                                                    \
      std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #claim); \
      std::abort();                                                    \
    }                                                                  \
  } while (false)

// For a check that describes how the library differs from a model, or returns an empty string.
inline void FuzzRequire(const std::string& difference) {
  if (difference.empty()) return;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}

// The input's bytes as 16-bit units; half a unit at the end is dropped.
inline std::basic_string<WCHAR> FuzzUnits(const uint8_t* data, size_t size) {
  std::basic_string<WCHAR> units(size / sizeof(WCHAR), WCHAR{0});
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * sizeof(WCHAR));
  return units;
}
