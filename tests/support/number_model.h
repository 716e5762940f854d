// Numbers out of texts as the C library reads them, and numbers into texts: the slow way, for tests and fuzzing.

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

// Wide enough to hold any 64-bit integer and any double as they are.
using Exact = long double;
static_assert(std::numeric_limits<Exact>::digits >= 64);

// All of Value for a number under a numeric tag: cut off towards zero, and cut to the width.
inline uint64_t WordOf(uint16_t tag, Exact number) {
  if (tag == ZR_VT_R4) return std::bit_cast<uint32_t>(static_cast<float>(number));
  if (tag == ZR_VT_R8) return std::bit_cast<uint64_t>(static_cast<double>(number));
  if (!(number > -0x1p64L && number < 0x1p64L)) return uint64_t{1} << 63;
  const auto magnitude = static_cast<uint64_t>(std::fabs(number));
  const std::size_t unused = 64 - 8 * NameOf(tag)->width;
  return (number < 0 ? 0 - magnitude : magnitude) << unused >> unused;
}

// What "%f" prints. C libraries differ in how they spell what is no number.
inline std::string PrintedReal(double real) {
  if (std::isnan(real)) return std::signbit(real) ? "-nan" : "nan";
  return Format("%f", real);
}

struct ModelNumber {
  ZRRESULT result = ZR_R_FAILED;
  uint64_t word = 0;  // all of Value
};

// What text becomes under a numeric tag or as a ZR_VT_CY. The process has to be in the C locale.
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
    model.word = WordOf(tag, end == text ? 0 : real);  // and not below it, where a C library keeps the sign of nothing
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
  const bool isWhole = end != nullptr && std::strchr(isReal ? "fF" : "dD", *end) != nullptr;  // the zero counts too
  const bool isTrue = strcasecmp(text, "TRUE") == 0 || strcasecmp(text, "ZR_TRUE") == 0;
  const bool isFalse = strcasecmp(text, "FALSE") == 0 || strcasecmp(text, "ZR_FALSE") == 0;
  if (isWhole) model.result = isClamped ? ZR_R_FAILED : ZR_R_OK;
  if (!isWhole && tag != ZR_VT_CY && (isTrue || isFalse)) model = {ZR_R_OK, WordOf(tag, isTrue)};
  if (tag == ZR_VT_BOOL && ZR_SUCCEEDED(model.result)) model.word = model.word != 0;
  return model;
}
