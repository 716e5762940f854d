// A slow model of parsing numbers and formatting them as text, made of the C library's functions. Tests and fuzz
// targets compare the library with it.

#pragma once

#include <strings.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "tests/support/tag_names.h"
#include "tests/support/units.h"

// Represents every 64-bit integer and every double exactly.
using Exact = long double;
static_assert(std::numeric_limits<Exact>::digits >= 64);

// The 64 bits of Value for a number with a numeric tag: truncated towards zero, and reduced to the width of the type.
inline uint64_t WordOf(uint16_t tag, Exact number) {
  if (tag == ZR_VT_R4) return std::bit_cast<uint32_t>(static_cast<float>(number));
  if (tag == ZR_VT_R8) return std::bit_cast<uint64_t>(static_cast<double>(number));
  if (!(number > -0x1p64L && number < 0x1p64L)) return uint64_t{1} << 63;
  const auto magnitude = static_cast<uint64_t>(std::fabs(number));
  const std::size_t unused = 64 - 8 * NameOf(tag)->width;
  return (number < 0 ? 0 - magnitude : magnitude) << unused >> unused;
}

// What "%f" prints. C libraries differ in how they spell NaN.
inline std::string PrintedReal(double real) {
  if (std::isnan(real)) return std::signbit(real) ? "-nan" : "nan";
  return Format("%f", real);
}

struct ModelNumber {
  ZRRESULT result = ZR_R_FAILED;
  uint64_t word = 0;  // the 64 bits of Value
};

// The model of converting text to a numeric tag or to ZR_VT_CY. The process must be in the C locale.
inline ModelNumber ModelOfText(const Units& units, uint16_t tag) {
  const std::string narrow = Narrowed(units);
  const char* text = narrow.c_str();
  char* end = nullptr;
  const bool hasPrefix = narrow.size() >= 3 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const int base = hasPrefix && tag != ZR_VT_CY ? 16 : 10;
  const bool isReal = IsReal(tag) && base == 10;
  ModelNumber model;
  bool isClamped = false;
  if (isReal) {
    const double real = std::strtod(text, &end);
    model.word = WordOf(tag, end == text ? 0 : real);  // some C libraries return -0.0 when nothing parses
  } else if (tag == ZR_VT_UI8 || tag == ZR_VT_QWORD) {
    if (!(std::strtod(text, nullptr) < 0.0)) model.word = std::strtoull(text, &end, base);
  } else {
    const int64_t number = std::strtoll(text, &end, base);
    int64_t clamped = number;
    if (const TagName& as = *NameOf(tag == ZR_VT_R4 ? ZR_VT_I4 : tag); as.width < 8) {
      const int64_t values = int64_t{1} << 8 * as.width, least = as.isSigned ? -values / 2 : 0;
      clamped = std::clamp(number, least, least + values - 1);
    }
    isClamped = clamped != number;
    model.word = WordOf(tag, static_cast<Exact>(clamped));
  }
  // strchr finds the terminator, too.
  const bool isWhole = end != nullptr && std::strchr(isReal ? "fF" : "dD", *end) != nullptr;
  const bool isTrue = strcasecmp(text, "TRUE") == 0 || strcasecmp(text, "ZR_TRUE") == 0;
  const bool isFalse = strcasecmp(text, "FALSE") == 0 || strcasecmp(text, "ZR_FALSE") == 0;
  if (isWhole) model.result = isClamped ? ZR_R_FAILED : ZR_R_OK;
  if (!isWhole && tag != ZR_VT_CY && (isTrue || isFalse)) model = {ZR_R_OK, WordOf(tag, isTrue)};
  if (tag == ZR_VT_BOOL && ZR_SUCCEEDED(model.result)) model.word = model.word != 0;
  return model;
}
