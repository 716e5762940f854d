// The conversions of Unicode once more, slow and obvious: one character at a time, by division and whole vectors. Tests
// and fuzz targets compare the library with them, on buffers of exactly the size that each contract names. Each check
// answers null, or the claim that doesn't hold.

#pragma once

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/units.h"
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
    if (units.empty()) return {ZR_R_INVALID_ARGUMENTS, outcome.units};
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

// ---- Writers: the size that they tell, and what they leave ----------------------------------------------------------

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

// ---- The library beside the model, for one text in each form -------------------------------------------------------

#define UNICODE_CLAIM(claim) \
  if (!(claim)) return #claim

inline const char* FirstOf(std::initializer_list<const char*> claims) {
  for (const char* claim : claims) {
    if (claim != nullptr) return claim;
  }
  return nullptr;
}

// The text by its length, and up to its first zero unit. The unit behind is there only if the contract reads it.
template <class T>
const char* CheckCreator(ZRRESULT (*create)(const T*, int32_t, ZRSTR*), const std::vector<T>& text, T behind,
                         model::Outcome<WCHAR> (*expect)(const std::vector<T>&, size_t)) {
  for (const bool isTerminated : {false, true}) {
    std::vector<T> given(text.begin(), isTerminated ? std::find(text.begin(), text.end(), T{}) : text.end());
    const auto length = static_cast<int32_t>(given.size());
    if (length == 0 && !isTerminated) continue;
    given.push_back(isTerminated ? T{} : behind);
    const auto expected = expect(given, given.size() - 1);
    if (!isTerminated && !expected.readsBehind) given = std::vector<T>(text);
    Owned string;
    UNICODE_CLAIM(create(given.data(), isTerminated ? -1 : length, &string.string) == expected.result);
    UNICODE_CLAIM(model::String<WCHAR>(string, ZrStringLen(string) + 1) == expected.units + WCHAR{0});
    UNICODE_CLAIM((ZrStringRefCount(string) == 1) == (length != 0));  // else it is the shared empty string
  }
  return nullptr;
}

inline const char* CheckFromUtf8(const std::vector<uint8_t>& bytes, uint8_t behind) {
  const std::vector<char> text(bytes.begin(), bytes.end());
  return FirstOf({CheckCreator(ZrUTF8toZRSTR, text, static_cast<char>(behind), model::StringFromUtf8),
                  CheckCreator(ZrCreateZRSTRfromUTF8, text, static_cast<char>(behind), model::StringFromUtf8)});
}

inline const char* CheckFromUtf32(const std::vector<char32_t>& points) {
  return CheckCreator(ZrCreateZRSTRfromUTF32, points, U'x', model::StringFromUtf32);
}

// Asks for the size, then writes with a capacity near that or far from it. One unit behind has to stay as it is.
template <class T>
const char* CheckWriter(ZRRESULT (*write)(ZRSTR, int32_t, T*, int32_t*), ZRSTR string, int32_t length, int32_t stray,
                        const std::vector<WCHAR>& text, size_t size,
                        ZRRESULT (*expect)(const std::vector<WCHAR>&, size_t, std::vector<T>&)) {
  const auto needed = static_cast<int32_t>(size);
  int32_t asked = -1;
  UNICODE_CLAIM(write(string, length, nullptr, &asked) == ZR_R_OK && asked == needed);
  for (const int32_t capacity : {0, 1, needed - 1, needed, needed + 1, stray}) {
    if (capacity < 0) continue;
    const auto room = static_cast<size_t>(capacity);
    std::vector<T> buffer((room == 0 ? text.size() : room) + 1, T(0xA5)), expected = buffer;  // 0 may mean: all of it
    const ZRRESULT result = expect(text, room, expected);
    int32_t kept = capacity;
    UNICODE_CLAIM(write(string, length, buffer.data(), &kept) == result && kept == capacity);
    UNICODE_CLAIM(buffer == expected);
  }
  return nullptr;
}

// All writers, over the first `length` units or, if that is -1, the whole.
inline const char* CheckWriters(const std::vector<WCHAR>& text, int32_t length, int32_t stray) {
  const Owned string(Units(text.begin(), text.end()));
  std::vector<WCHAR> longer = text, range;
  longer.push_back(0);
  if (length >= 0) longer.resize(static_cast<size_t>(length) + 1);
  range.assign(longer.begin(), longer.end() - 1);
  const size_t size32 = model::CountedPoints(longer).size();
  const size_t size8 = model::Encoded(model::CountedPoints(range)).size() + 1;
  const char* claim = FirstOf(
      {CheckWriter<WCHAR>(ZrCreateWCHARfromZRSTR, string, length, stray, range, longer.size(), model::WriteUtf16),
       CheckWriter<WCHAR>(ZrCreateUTF16fromZRSTR, string, length, stray, range, longer.size(), model::WriteUtf16),
       CheckWriter<char32_t>(ZrCreateUTF32fomZRSTR, string, length, stray, longer, size32, model::WriteUtf32),
       CheckWriter<char>(ZrCreateUTF8fromZRSTR, string, length, stray, range, size8, model::WriteUtf8)});
  longer.assign(text.begin(), std::find(text.begin(), text.end(), 0));
  const std::string wellFormed = model::Encoded(model::Points(longer, U"\xFFFD")) + '\0';
  std::vector<char> buffer(wellFormed.size());
  const auto size = static_cast<int32_t>(buffer.size());
  UNICODE_CLAIM(ZrZRSTRtoUTF8(string, nullptr, 0) == size);
  UNICODE_CLAIM(size == 1 || ZrZRSTRtoUTF8(string, buffer.data(), size - 1) == 0);
  UNICODE_CLAIM(ZrZRSTRtoUTF8(string, buffer.data(), size) == size &&
                wellFormed == std::string(buffer.data(), buffer.size()));
  return claim;
}

// The buffer has `most` units for each of the range, and the terminator.
template <class From, class To>
const char* CheckRange(ZRRESULT (*convert)(const From*, const From*, uint8_t, To**), const std::vector<From>& from,
                       size_t most, model::String<To> (*step)(const std::vector<From>&, size_t)) {
  for (const uint8_t stop : {uint8_t{0}, uint8_t{1}, uint8_t{0x80}}) {
    To* buffer = nullptr;
    model::Outcome<To> expected = model::Range(from, stop != 0, step);
    expected.units.resize(from.size() * most + 1);
    UNICODE_CLAIM(convert(from.data(), from.data() + from.size(), stop, &buffer) == expected.result);
    UNICODE_CLAIM(std::equal(expected.units.begin(), expected.units.end(), buffer));
    std::free(buffer);
  }
  return nullptr;
}

inline const char* CheckRanges(const std::vector<char>& bytes, const std::vector<WCHAR>& units,
                               const std::vector<char32_t>& points) {
  return FirstOf({CheckRange(ZrUTF8toUTF32, bytes, 1, model::ToPoint<char>),
                  CheckRange(ZrUTF16toUTF32, units, 1, model::ToPoint<WCHAR>),
                  CheckRange(ZrUTF32toUTF16, points, 2, model::ToUnits),
                  CheckRange(ZrUTF32toUTF8, points, 4, model::ToSequence)});
}
