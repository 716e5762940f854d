// The conversions once more, slow and obvious: one unit at a time, nothing shared between the layers. Tests and fuzz
// targets compare the library with them, on buffers of exactly the size that each contract names.

#pragma once

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "zrcore/zrcore.h"

namespace model {

template <class T>
struct Outcome {
  ZRRESULT result;
  std::vector<T> units;  // what the buffer or the string holds in the end
  bool readsBehind = false;
  bool operator==(const Outcome& other) const { return result == other.result && units == other.units; }
};

inline bool InRange(uint32_t value, uint32_t first, uint32_t last) { return value >= first && value <= last; }
inline uint32_t Merged(uint32_t first, uint32_t second) { return first * 1024 + second - 56613888; }

inline void PutUnits(std::vector<WCHAR>& to, uint32_t value) {
  if (value <= 0xFFFF) return to.push_back(static_cast<WCHAR>(value));
  to.push_back(static_cast<WCHAR>(((value - 0x10000) >> 10) + 0xD800));
  to.push_back(static_cast<WCHAR>(0xDC00 + ((value - 0x10000) & 0x3FF)));
}

// How many bytes follow a lead byte, and the bits that it has of the value.
inline std::pair<size_t, uint32_t> Lead(uint8_t byte) {
  if (byte < 0xC0) return {0, byte};
  return byte < 0xE0 ? std::pair(1, byte - 0xC0u) : byte < 0xF0 ? std::pair(2, byte - 0xE0u) : std::pair(3, byte % 8u);
}

// `size` bytes and one behind.
inline Outcome<WCHAR> StringFromUtf8(const std::vector<uint8_t>& bytes, size_t size) {
  Outcome<WCHAR> outcome{ZR_R_OK, {}};
  size_t count = 0, need = 0;
  for (size_t at = 0; at < size; ++at) {
    const uint8_t byte = bytes[at];
    if (need != 0) {
      if (byte < 0x80 || byte >= 0xC0) return outcome;
      --need;
    } else if (byte < 0x80) {
      count += 1;
    } else if (byte < 0xC0) {
      return outcome;
    } else {
      count += byte < 0xF0 ? 1 : 2;
      need = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
    }
  }
  for (size_t at = 0; at < size && outcome.units.size() < count;) {
    const uint8_t byte = bytes[at];
    auto [tails, value] = Lead(byte);
    if (at + tails > size) break;
    for (size_t tail = 1; tail <= tails; ++tail) value = value * 64 + bytes[at + tail] % 64;
    outcome.readsBehind = outcome.readsBehind || at + tails == size;
    PutUnits(outcome.units, value);
    at += tails + 1;
  }
  if (outcome.units.size() != count) outcome.result = ZR_R_FAILED;
  outcome.units.resize(count);
  return outcome;
}

inline std::vector<WCHAR> StringFromUtf32(const std::vector<char32_t>& points) {
  std::vector<WCHAR> units;
  for (char32_t point : points) PutUnits(units, point);
  return units;
}

// `text` is the range with, for UTF-32, the unit behind it.
inline int32_t SizeOfUtf32(const std::vector<WCHAR>& text) {
  int32_t count = 0;
  for (size_t at = 0; at < text.size(); ++at) {
    const bool isLast = at + 1 == text.size();
    if (!InRange(text[at], 0xD800, 0xDFFF)) {
      ++count;
    } else if (isLast) {
      return 0;
    } else if (text[at] < 0xDC00 && InRange(text[at + 1], 0xDC00, 0xDFFF)) {
      ++count;
      ++at;
    }
  }
  return count;
}

inline Outcome<char32_t> WriteUtf32(const std::vector<WCHAR>& text, size_t capacity, std::vector<char32_t> buffer) {
  size_t steps = 0, to = 0;
  for (size_t at = 0; at < text.size();) {
    if (!InRange(text[at], 0xD800, 0xDFFF)) {
      buffer.at(to++) = text[at];
      at += 1;
    } else if (at + 1 == text.size()) {
      return {capacity == 0 ? ZR_R_OK : ZR_R_FAILED, buffer};
    } else {
      if (text[at] < 0xDC00 && InRange(text[at + 1], 0xDC00, 0xDFFF)) buffer.at(to++) = Merged(text[at], text[at + 1]);
      at += 2;
    }
    steps += 1;
    if (steps == capacity) break;
  }
  return {steps == capacity ? ZR_R_OK : ZR_R_FAILED, buffer};
}

inline int32_t SizeOfUtf8(const std::vector<WCHAR>& text) {
  int32_t sum = 0;
  for (size_t at = 0; at < text.size(); ++at) {
    if (!InRange(text[at], 0xD800, 0xDFFF)) {
      sum += text[at] < 0x80 ? 1 : text[at] < 0x800 ? 2 : 3;
    } else if (at + 1 == text.size()) {
      return 1;
    } else if (text[at] < 0xDC00 && InRange(text[at + 1], 0xDC00, 0xDFFF)) {
      sum += 4;
      ++at;
    }
  }
  return sum + 1;
}

inline std::vector<char> Sequence(uint32_t value, size_t size) {
  std::vector<char> bytes(size);
  for (size_t at = size; at-- > 1; value /= 64) bytes[at] = static_cast<char>(0x80 + value % 64);
  static constexpr uint32_t kMarks[] = {0, 0xC0, 0xE0, 0xF0}, kLimits[] = {0x80, 0x20, 0x10, 0x08};
  bytes[0] = static_cast<char>(kMarks[size - 1] + value % kLimits[size - 1]);
  return bytes;
}

inline Outcome<char> WriteUtf8(const std::vector<WCHAR>& text, std::vector<char> buffer) {
  if (buffer.empty()) return {ZR_R_FAILED, buffer};
  const size_t limit = buffer.size() - 1;
  size_t to = 0;
  for (size_t at = 0; at < text.size() && to < limit; ++at) {
    uint32_t value = text[at];
    if (InRange(value, 0xD800, 0xDFFF)) {
      if (at + 1 == text.size()) {
        to = 0;
        break;
      }
      value = Merged(value, text[++at]);
    }
    const size_t size = value <= 0x7F ? 1 : value <= 0x7FF ? 2 : value < 0x10000 ? 3 : 4;
    for (char byte : Sequence(value, size)) {
      if (to < limit) buffer[to++] = byte;
    }
  }
  if (to != limit) return {ZR_R_FAILED, buffer};
  buffer[to] = 0;
  return {ZR_R_OK, buffer};
}

// A terminated text as well-formed UTF-8, with its terminator.
inline std::vector<char> WellFormedUtf8(const std::vector<WCHAR>& text) {
  std::vector<char> bytes;
  for (size_t at = 0; at < text.size() && text[at] != 0; ++at) {
    uint32_t value = text[at];
    const bool isPair = at + 1 < text.size() && InRange(value, 0xD800, 0xDBFF) && InRange(text[at + 1], 0xDC00, 0xDFFF);
    if (isPair) value = Merged(value, text[++at]);
    if (!isPair && InRange(value, 0xD800, 0xDFFF)) value = 0xFFFD;
    for (char byte : Sequence(value, value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4))
      bytes.push_back(byte);
  }
  bytes.push_back(0);
  return bytes;
}

// ---- Range converters: the buffer whole, zero units behind the text -------------------------------------------------

inline Outcome<char32_t> RangeUtf16To32(const std::vector<WCHAR>& from, bool stop) {
  Outcome<char32_t> outcome{ZR_R_OK, {}};
  for (size_t at = 0; at < from.size() && !(stop && from[at] == 0); ++at) {
    uint32_t value = from[at];
    if (InRange(value, 0xD800, 0xDFFF)) {
      if (at + 1 == from.size()) {
        outcome.result = ZR_R_INVALID_ARGUMENTS;
        break;
      }
      value = Merged(value, from[++at]);
    }
    outcome.units.push_back(value);
  }
  outcome.units.resize(from.size() + 1);
  return outcome;
}

inline Outcome<char32_t> RangeUtf8To32(const std::vector<char>& from, bool stop) {
  Outcome<char32_t> outcome{ZR_R_OK, {}};
  for (size_t at = 0; at < from.size() && !(stop && from[at] == 0); ++at) {
    auto [tails, value] = Lead(static_cast<uint8_t>(from[at]));
    if (at + tails >= from.size()) {
      outcome.result = ZR_R_INVALID_ARGUMENTS;
      break;
    }
    for (size_t tail = 0; tail < tails; ++tail) value = value * 64 + static_cast<uint8_t>(from[++at]) % 64;
    outcome.units.push_back(value);
  }
  outcome.units.resize(from.size() + 1);
  return outcome;
}

inline Outcome<WCHAR> RangeUtf32To16(const std::vector<char32_t>& from, bool stop) {
  Outcome<WCHAR> outcome{ZR_R_OK, {}};
  for (char32_t point : from) {
    if (stop && point == 0) break;
    if (point == 0xFFFF || point > 0x10FFFE) {
      outcome.result = ZR_R_INVALID_ARGUMENTS;
      break;
    }
    PutUnits(outcome.units, point);
  }
  outcome.units.resize(from.size() * 2 + 1);
  return outcome;
}

inline Outcome<char> RangeUtf32To8(const std::vector<char32_t>& from, bool stop) {
  Outcome<char> outcome{ZR_R_OK, {}};
  for (char32_t point : from) {
    if (stop && point == 0) break;
    if (point >= 0x1FFFFF) {
      outcome.result = ZR_R_INVALID_ARGUMENTS;
      break;
    }
    for (char byte : Sequence(point, point < 0x7F ? 1 : point < 0x7FF ? 2 : point < 0xFFFF ? 3 : 4)) {
      outcome.units.push_back(byte);
    }
  }
  outcome.units.resize(from.size() * 4 + 1);
  return outcome;
}

}  // namespace model
