// Helpers of the fuzz targets: claims that abort the process if they fail, and texts of exactly the input's size.

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

// Aborts if a check returns a difference from the model and not an empty string.
inline void FuzzRequire(const std::string& difference) {
  if (difference.empty()) return;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}

// The input's bytes as 16-bit units. An odd byte at the end is dropped.
inline std::basic_string<WCHAR> FuzzUnits(const uint8_t* data, size_t size) {
  std::basic_string<WCHAR> units(size / sizeof(WCHAR), WCHAR{0});
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * sizeof(WCHAR));
  return units;
}
