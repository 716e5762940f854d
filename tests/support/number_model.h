// Numbers out of texts as the C library reads them, and numbers into texts: the slow way, for tests and fuzzing.

#pragma once

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "zrcore/zrcore.h"

struct ModelNumber {
  ZRRESULT result = ZR_R_FAILED;
  uint64_t word = 0;  // all of Value

  template <class Number>
  void Store(Number number) {
    word = 0;
    std::memcpy(&word, &number, sizeof number);
  }
};

// Bytes for the C library. What isn't ASCII ends every number, and so does the byte that stands for it here.
inline std::string Narrowed(const std::basic_string<WCHAR>& units) {
  std::string bytes;
  for (WCHAR unit : units) bytes += unit < 0x80 ? static_cast<char>(unit) : '\x7f';
  return bytes;
}

// What "%f" prints. C libraries differ in how they spell what is no number.
inline std::string PrintedReal(double real) {
  if (std::isnan(real)) return std::signbit(real) ? "-nan" : "nan";
  char text[400];
  return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%f", real))};
}

inline void StoreAs(uint16_t tag, int64_t number, ModelNumber& model) {
  switch (tag) {
    case ZR_VT_BOOL:
    case ZR_VT_UI1:
    case ZR_VT_BYTE:
    case ZR_VT_I1:
      return model.Store(static_cast<uint8_t>(number));
    case ZR_VT_I2:
    case ZR_VT_UI2:
    case ZR_VT_WORD:
      return model.Store(static_cast<uint16_t>(number));
    case ZR_VT_I4:
    case ZR_VT_UI4:
    case ZR_VT_DWORD:
      return model.Store(static_cast<uint32_t>(number));
    case ZR_VT_R4:
      return model.Store(static_cast<float>(number));
    case ZR_VT_R8:
      return model.Store(static_cast<double>(number));
    default:
      return model.Store(number);
  }
}

// What text becomes under a numeric tag. The process has to be in the C locale.
inline ModelNumber ModelOfText(const std::basic_string<WCHAR>& units, uint16_t tag) {
  static constexpr struct {
    uint16_t tag;
    int64_t least, most;
  } kRanges[] = {
      {ZR_VT_BOOL, 0, 255},
      {ZR_VT_I1, -128, 127},
      {ZR_VT_UI1, 0, 255},
      {ZR_VT_BYTE, 0, 255},
      {ZR_VT_I2, -32768, 32767},
      {ZR_VT_UI2, 0, 65535},
      {ZR_VT_WORD, 0, 65535},
      {ZR_VT_I4, -2147483648, 2147483647},
      {ZR_VT_UI4, 0, 4294967295},
      {ZR_VT_DWORD, 0, 4294967295},
      {ZR_VT_R4, -2147483648, 2147483647},
  };
  const std::string narrow = Narrowed(units);
  const char* text = narrow.c_str();
  char* end = nullptr;
  const bool isHexadecimal = narrow.size() >= 3 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const bool isReal = (tag == ZR_VT_R4 || tag == ZR_VT_R8) && !isHexadecimal;
  ModelNumber model;
  bool triesWordsOnly = false, isClamped = false;
  if (isReal) {
    double real = std::strtod(text, &end);
    if (end == text) real = 0;  // and not below it, where a C library keeps the sign in front of no number
    if (tag == ZR_VT_R8) model.Store(real);
    if (tag == ZR_VT_R4) model.Store(static_cast<float>(real));
  } else if (tag == ZR_VT_UI8 || tag == ZR_VT_QWORD) {
    triesWordsOnly = std::strtod(text, nullptr) < 0.0;
    if (!triesWordsOnly) model.Store(std::strtoull(text, &end, isHexadecimal ? 16 : 10));
  } else {
    int64_t number = std::strtoll(text, &end, isHexadecimal ? 16 : 10);
    for (const auto& range : kRanges) {
      if (range.tag != tag) continue;
      isClamped = number < range.least || number > range.most;
      number = std::clamp(number, range.least, range.most);
    }
    StoreAs(tag, number, model);
  }
  if (!triesWordsOnly && std::strchr(isReal ? "fF" : "dD", *end) != nullptr) {  // the zero behind these counts too
    model.result = isClamped ? ZR_R_FAILED : ZR_R_OK;
  } else {
    const bool isTrue = strcasecmp(text, "TRUE") == 0 || strcasecmp(text, "ZR_TRUE") == 0;
    if (isTrue || strcasecmp(text, "FALSE") == 0 || strcasecmp(text, "ZR_FALSE") == 0) {
      StoreAs(tag, isTrue, model);
      model.result = ZR_R_OK;
    }
  }
  if (tag == ZR_VT_BOOL && ZR_SUCCEEDED(model.result)) model.word = model.word != 0;
  return model;
}
