// The conversions once more, slow and obvious: one character at a time, by division and whole vectors. Tests and fuzz
// targets compare the library with them, on buffers of exactly the size that each contract names.

#pragma once

#include <algorithm>
#include <bit>
#include <string>
#include <vector>

#include "zrcore/zrcore.h"

namespace model {

template <class T>
using String = std::basic_string<T>;

template <class T>
struct Outcome {
  ZRRESULT result = ZR_R_OK;
  String<T> units = {};
  bool readsBehind = false;
};

inline bool IsSurrogate(WCHAR unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
inline bool IsPair(const std::vector<WCHAR>& text, size_t at) {
  return at + 1 < text.size() && text[at] / 0x400 == 0xD800 / 0x400 && text[at + 1] / 0x400 == 0xDC00 / 0x400;
}
inline bool IsWhole(const std::vector<WCHAR>& text, size_t at) { return IsPair(text, at) || !IsSurrogate(text[at]); }

// How many units a character takes along, by its first one, and the value that it has with them, whatever they are.
inline size_t Tails(WCHAR unit) { return IsSurrogate(unit) ? 1 : 0; }
inline size_t Tails(char32_t) { return 0; }
inline size_t Tails(char byte) {
  return static_cast<size_t>(std::clamp(std::countl_one(static_cast<uint8_t>(byte)), 1, 4)) - 1;
}
inline uint32_t Value(const std::vector<WCHAR>& text, size_t at) {
  return Tails(text[at]) == 0 ? text[at] : text[at] * 1024u + text[at + 1] - 56613888;
}
inline uint32_t Value(const std::vector<char>& bytes, size_t at) {
  size_t tails = Tails(bytes[at]);
  uint32_t value = static_cast<uint8_t>(bytes[at]) % (tails == 0 ? 0x100u : 0x40u >> tails);
  for (; tails != 0; --tails) value = value * 64 + static_cast<uint8_t>(bytes[++at]) % 64;
  return value;
}

inline String<WCHAR> Units(uint32_t value) {
  if (value <= 0xFFFF) return {static_cast<WCHAR>(value)};
  value -= 0x10000;
  return {static_cast<WCHAR>(0xD800 + value / 0x400), static_cast<WCHAR>(0xDC00 + value % 0x400)};
}

inline size_t SequenceSize(uint32_t value) { return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4; }
inline std::string Sequence(uint32_t value, size_t size) {
  static constexpr uint32_t kMarks[] = {0, 0xC0, 0xE0, 0xF0}, kLimits[] = {0x80, 0x20, 0x10, 0x08};
  std::string bytes(size, 0);
  for (size_t at = size; at-- > 1; value /= 64) bytes[at] = static_cast<char>(0x80 + value % 64);
  bytes[0] = static_cast<char>(kMarks[size - 1] + value % kLimits[size - 1]);
  return bytes;
}

// ---- Creators: `size` units, and one behind ------------------------------------------------------------------------

inline Outcome<WCHAR> StringFromUtf8(const std::vector<char>& bytes, size_t size) {
  Outcome<WCHAR> outcome;
  size_t count = 0, needed = 0;
  for (size_t at = 0; at < size; ++at) {
    const bool isTail = static_cast<uint8_t>(bytes[at]) / 64 == 2;
    if (isTail != (needed != 0)) return outcome;
    needed = isTail ? needed - 1 : Tails(bytes[at]);
    if (!isTail) count += needed < 3 ? 1 : 2;
  }
  for (size_t at = 0; at < size && at + Tails(bytes[at]) <= size; at += 1 + Tails(bytes[at])) {
    outcome.units += Units(Value(bytes, at));
    outcome.readsBehind = at + Tails(bytes[at]) == size;
  }
  if (outcome.units.size() != count) outcome.result = ZR_R_FAILED;
  outcome.units.resize(count);
  return outcome;
}

inline Outcome<WCHAR> StringFromUtf32(const std::vector<char32_t>& points, size_t size) {
  Outcome<WCHAR> outcome;
  for (size_t at = 0; at < size; ++at) outcome.units += Units(points[at]);
  return outcome;
}

// ---- Range converters: a step converts one character, or gives nothing for what is refused -------------------------

template <class From, class To>
Outcome<To> Range(const std::vector<From>& from, bool stop, String<To> (*step)(const std::vector<From>&, size_t)) {
  Outcome<To> outcome;
  for (size_t at = 0; at < from.size() && !(stop && from[at] == 0); at += 1 + Tails(from[at])) {
    const String<To> units = step(from, at);
    if (units.empty()) {
      outcome.result = ZR_R_INVALID_ARGUMENTS;
      break;
    }
    outcome.units += units;
  }
  return outcome;
}

template <class From>
std::u32string ToPoint(const std::vector<From>& from, size_t at) {
  return at + Tails(from[at]) < from.size() ? std::u32string(1, Value(from, at)) : std::u32string();
}
inline String<WCHAR> ToUnits(const std::vector<char32_t>& points, size_t at) {
  return points[at] == 0xFFFF || points[at] > 0x10FFFE ? String<WCHAR>() : Units(points[at]);
}
inline std::string ToSequence(const std::vector<char32_t>& points, size_t at) {  // whose limits are one short
  return points[at] < 0x1FFFFF ? Sequence(points[at], SequenceSize(points[at] + 1)) : std::string();
}

// ---- Writers: the size that they tell, and what they leave ---------------------------------------------

// The code points, with something else in place of each lone surrogate.
inline std::u32string Points(const std::vector<WCHAR>& text, const std::u32string& replacement) {
  std::u32string points;
  for (size_t at = 0; at < text.size(); at += IsPair(text, at) ? 2 : 1) {
    points += IsWhole(text, at) ? std::u32string(1, Value(text, at)) : replacement;
  }
  return points;
}

inline std::string Encoded(const std::u32string& points) {
  std::string bytes;
  for (const char32_t point : points) bytes += Sequence(point, SequenceSize(point));
  return bytes;
}

// Those that are counted when the size is asked for: none, if a lone surrogate stands in the last place.
inline std::u32string CountedPoints(const std::vector<WCHAR>& text) {
  return Points(text, U"\xD800").ends_with(0xD800) ? std::u32string() : Points(text, U"");
}

// The units are followed by zeros, if there is room.
inline ZRRESULT WriteUtf16(const std::vector<WCHAR>& text, size_t capacity, std::vector<WCHAR>& buffer) {
  std::fill_n(buffer.begin(), capacity, WCHAR{0});
  std::copy_n(text.begin(), std::min(text.size(), capacity), buffer.begin());
  return ZR_R_OK;
}

// `text` is the range and the unit behind it.
inline ZRRESULT WriteUtf32(const std::vector<WCHAR>& text, size_t capacity, std::vector<char32_t>& buffer) {
  size_t steps = 0, to = 0;
  for (size_t at = 0; at < text.size() && (steps == 0 || steps != capacity); ++steps) {
    if (IsSurrogate(text[at]) && at + 1 == text.size()) return capacity == 0 ? ZR_R_OK : ZR_R_FAILED;
    if (IsWhole(text, at)) buffer.at(to++) = Value(text, at);
    at += 1 + Tails(text[at]);
  }
  return steps == capacity ? ZR_R_OK : ZR_R_FAILED;
}

inline ZRRESULT WriteUtf8(const std::vector<WCHAR>& text, size_t capacity, std::vector<char>& buffer) {
  const std::string bytes = Encoded(Range(text, false, ToPoint<WCHAR>).units);
  if (capacity == 0) return ZR_R_FAILED;
  std::copy_n(bytes.begin(), std::min(bytes.size(), capacity - 1), buffer.begin());
  if (bytes.size() < capacity - 1) return ZR_R_FAILED;
  buffer[capacity - 1] = 0;
  return ZR_R_OK;
}

}  // namespace model
