// A slow and obvious model of the Unicode conversions: it converts one character at a time, by division. Tests and fuzz
// targets compare the library with it, on buffers of exactly the size that each contract requires. Each check returns
// an empty string, or a description of the call that differs from the model: its input, its result and the expected
// result.

#pragma once

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/result_names.h"
#include "tests/support/units.h"
#include "zrcore/zrcore.h"

namespace model {

template <class T>
using String = std::basic_string<T>;

template <class T>
struct Outcome {
  ZRRESULT result = ZR_R_OK;
  String<T> units = {};
  bool readsPastEnd = false;
};

inline bool IsSurrogate(WCHAR unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
inline bool IsPair(const std::vector<WCHAR>& text, size_t at) {
  return at + 1 < text.size() && text[at] / 0x400 == 0xD800 / 0x400 && text[at + 1] / 0x400 == 0xDC00 / 0x400;
}
inline bool IsWhole(const std::vector<WCHAR>& text, size_t at) { return IsPair(text, at) || !IsSurrogate(text[at]); }

// Tails returns how many units follow the first unit of a character. Value decodes the character, valid or not.
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

// ---- Creators: the input has `size` units and one unit after them --------------------------------------------------

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
    outcome.readsPastEnd = at + Tails(bytes[at]) == size;
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

// ---- Range converters: a step converts one character, or returns nothing if the character is rejected ---------------

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
inline std::string ToSequence(const std::vector<char32_t>& points, size_t at) {  // the library's limits are one too low
  return points[at] < 0x1FFFFF ? Sequence(points[at], SequenceSize(points[at] + 1)) : std::string();
}

// ---- Writers: the size that they report, and what they write --------------------------------------------------------

// The code points of a text, with a replacement for each lone surrogate.
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

// The code points that a query for the size counts: none if the text ends with a lone surrogate.
inline std::u32string CountedPoints(const std::vector<WCHAR>& text) {
  return Points(text, U"\xD800").ends_with(0xD800) ? std::u32string() : Points(text, U"");
}

// Zeros fill the buffer after the units.
inline ZRRESULT WriteUtf16(const std::vector<WCHAR>& text, size_t capacity, std::vector<WCHAR>& buffer) {
  std::fill_n(buffer.begin(), capacity, WCHAR{0});
  std::copy_n(text.begin(), std::min(text.size(), capacity), buffer.begin());
  return ZR_R_OK;
}

// `text` is the range and the unit after it.
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

// ---- As text, for a failure ----------------------------------------------------------------------------------------

// Printable ASCII is unchanged, all else is escaped: \xE9 for a byte, \u00E9 for a 16-bit unit, \U000000E9 for a code
// point.
template <class Text>
std::string Escaped(const Text& text) {
  std::string escaped = "\"";
  for (const auto unit : text) {
    const auto value = static_cast<uint32_t>(static_cast<std::make_unsigned_t<std::decay_t<decltype(unit)>>>(unit));
    const bool isPlain = value >= 0x20 && value < 0x7F && value != '"' && value != '\\';
    escaped += isPlain            ? std::string(1, static_cast<char>(value))
               : sizeof unit == 1 ? Format("\\x%02X", value)
               : sizeof unit == 2 ? Format("\\u%04X", value)
                                  : Format("\\U%08X", value);
  }
  return escaped + "\"";
}

// Describes the first difference between two texts, with some units of both before and after it.
template <class Found, class Expected>
std::string DescribeDifference(const Found& found, const Expected& expected) {
  const std::size_t common = std::min(found.size(), expected.size());
  const auto end = found.begin() + static_cast<std::ptrdiff_t>(common);
  const auto at = static_cast<std::size_t>(std::mismatch(found.begin(), end, expected.begin()).first - found.begin());
  const std::size_t first = at - std::min<std::size_t>(at, 8);
  const auto around = [first, at](const auto& text) {
    const auto from = text.begin() + static_cast<std::ptrdiff_t>(first);
    const auto count = static_cast<std::ptrdiff_t>(std::min(text.size(), at + 8) - first);
    return (first != 0 ? "..." : "") + Escaped(model::String<typename Found::value_type>(from, from + count)) +
           (first + static_cast<std::size_t>(count) < text.size() ? "..." : "");
  };
  return "found    " + std::to_string(found.size()) + " units: " + around(found) + "\n  expected " +
         std::to_string(expected.size()) + " units: " + around(expected) + "\n  first difference at unit " +
         std::to_string(at);
}

inline std::string DescribeResult(ZRRESULT returned, ZRRESULT expected) {
  return "returned " + ResultName(returned) + ", expected " + ResultName(expected);
}

// ---- Comparisons of the library with the model ----------------------------------------------------------------------

// Returns the call and the difference from the enclosing check if the claim is false. Otherwise formats no text.
#define UNICODE_CLAIM(claim, call, difference) \
  if (!(claim)) return (call) + "\n  " + (difference)

inline std::string FirstDifference(std::initializer_list<std::string> differences) {
  for (const std::string& difference : differences) {
    if (!difference.empty()) return difference;
  }
  return "";
}

// The name of a library function, and the function.
#define NAMED(function) #function, function

// Passes the text with its length, and as a zero-terminated text. The buffer has a unit after the text only if the
// contract says that the function reads it.
template <class T>
std::string CheckCreator(const char* name, ZRRESULT (*create)(const T*, int32_t, ZRSTR*), const std::vector<T>& text,
                         T after, model::Outcome<WCHAR> (*expect)(const std::vector<T>&, size_t)) {
  for (const bool isTerminated : {false, true}) {
    std::vector<T> given(text.begin(), isTerminated ? std::find(text.begin(), text.end(), T{}) : text.end());
    const auto length = static_cast<int32_t>(given.size());
    if (length == 0 && !isTerminated) continue;
    given.push_back(isTerminated ? T{} : after);
    const auto expected = expect(given, given.size() - 1);
    if (!isTerminated && !expected.readsPastEnd) given = std::vector<T>(text);
    const auto call = [&] {
      return name + ("(" + Escaped(given)) + ", " + std::to_string(isTerminated ? -1 : length) + ")";
    };
    Owned string;
    const ZRRESULT result = create(given.data(), isTerminated ? -1 : length, &string.string);
    UNICODE_CLAIM(result == expected.result, call(), DescribeResult(result, expected.result));
    UNICODE_CLAIM(string.string != nullptr, call(), "returned no string");
    const model::String<WCHAR> found(string, ZrStringLen(string) + 1), terminated = expected.units + WCHAR{0};
    UNICODE_CLAIM(found == terminated, call(), DescribeDifference(found, terminated));
    // An empty text returns the shared empty string.
    const uint32_t owners = ZrStringRefCount(string);
    UNICODE_CLAIM((owners == 1) == (length != 0), call(),
                  "returned a string with " + std::to_string(owners) + " references, expected " +
                      (length != 0 ? "one" : "the shared empty string"));
  }
  return "";
}

inline std::string CheckFromUtf8(const std::vector<uint8_t>& bytes, uint8_t after) {
  const std::vector<char> text(bytes.begin(), bytes.end());
  return FirstDifference(
      {CheckCreator(NAMED(ZrUTF8toZRSTR), text, static_cast<char>(after), model::StringFromUtf8),
       CheckCreator(NAMED(ZrCreateZRSTRfromUTF8), text, static_cast<char>(after), model::StringFromUtf8)});
}

inline std::string CheckFromUtf32(const std::vector<char32_t>& points) {
  return CheckCreator(NAMED(ZrCreateZRSTRfromUTF32), points, U'x', model::StringFromUtf32);
}

// Queries the size, then writes with capacities near that size and with `stray`. The unit past the end must not change.
template <class T>
std::string CheckWriter(const char* name, ZRRESULT (*write)(ZRSTR, int32_t, T*, int32_t*), ZRSTR string, int32_t length,
                        int32_t stray, const std::vector<WCHAR>& text, size_t size,
                        ZRRESULT (*expect)(const std::vector<WCHAR>&, size_t, std::vector<T>&)) {
  const auto needed = static_cast<int32_t>(size);
  const auto call = [&](const std::string& capacity) {
    const model::String<WCHAR> whole(string, ZrStringLen(string));
    return name + ("(" + Escaped(whole)) + ", " + std::to_string(length) + ", " + capacity + ")";
  };
  int32_t reported = -1;
  const ZRRESULT queried = write(string, length, nullptr, &reported);
  UNICODE_CLAIM(queried == ZR_R_OK, call("null"), DescribeResult(queried, ZR_R_OK));
  UNICODE_CLAIM(reported == needed, call("null"),
                "reports a size of " + std::to_string(reported) + " units, expected " + std::to_string(needed));
  for (const int32_t capacity : {0, 1, needed - 1, needed, needed + 1, stray}) {
    if (capacity < 0) continue;
    const auto units = static_cast<size_t>(capacity);
    // Some writers take a capacity of 0 for unlimited.
    std::vector<T> buffer((units == 0 ? text.size() : units) + 1, T(0xA5)), expected = buffer;
    const ZRRESULT expectedResult = expect(text, units, expected);
    int32_t kept = capacity;
    const ZRRESULT result = write(string, length, buffer.data(), &kept);
    const auto withCapacity = [&] { return call("capacity " + std::to_string(capacity)); };
    UNICODE_CLAIM(result == expectedResult, withCapacity(), DescribeResult(result, expectedResult));
    UNICODE_CLAIM(kept == capacity, withCapacity(), "changed the capacity to " + std::to_string(kept));
    UNICODE_CLAIM(buffer == expected, withCapacity(), DescribeDifference(buffer, expected));
  }
  return "";
}

inline std::string CheckWellFormedWriter(ZRSTR string, const std::vector<WCHAR>& terminated) {
  const std::string expected = model::Encoded(model::Points(terminated, U"\xFFFD")) + '\0';
  std::string buffer(expected.size(), 0);
  const auto size = static_cast<int32_t>(buffer.size());
  for (const int32_t capacity : {0, size - 1, size}) {
    const bool isQuery = capacity == 0;
    const int32_t expectedSize = isQuery || capacity == size ? size : 0;
    const int32_t returned = ZrZRSTRtoUTF8(string, isQuery ? nullptr : buffer.data(), capacity);
    const auto call = [&] {
      return "ZrZRSTRtoUTF8(" + Escaped(terminated) + ", " + (isQuery ? "null, " : "buffer, ") +
             std::to_string(capacity) + ")";
    };
    UNICODE_CLAIM(returned == expectedSize, call(),
                  "returned " + std::to_string(returned) + ", expected " + std::to_string(expectedSize));
    UNICODE_CLAIM(capacity != size || buffer == expected, call(), DescribeDifference(buffer, expected));
  }
  return "";
}

// Checks all writers on the first `length` units, or on the whole text if `length` is -1.
inline std::string CheckWriters(const std::vector<WCHAR>& text, int32_t length, int32_t stray) {
  const Owned string(Units(text.begin(), text.end()));
  std::vector<WCHAR> longer = text, range;
  longer.push_back(0);
  if (length >= 0) longer.resize(static_cast<size_t>(length) + 1);
  range.assign(longer.begin(), longer.end() - 1);
  const size_t size16 = longer.size(), size32 = model::CountedPoints(longer).size();
  const size_t size8 = model::Encoded(model::CountedPoints(range)).size() + 1;
  const std::vector<WCHAR> terminated(text.begin(), std::find(text.begin(), text.end(), 0));
  return FirstDifference(
      {CheckWriter<WCHAR>(NAMED(ZrCreateWCHARfromZRSTR), string, length, stray, range, size16, model::WriteUtf16),
       CheckWriter<WCHAR>(NAMED(ZrCreateUTF16fromZRSTR), string, length, stray, range, size16, model::WriteUtf16),
       CheckWriter<char32_t>(NAMED(ZrCreateUTF32fomZRSTR), string, length, stray, longer, size32, model::WriteUtf32),
       CheckWriter<char>(NAMED(ZrCreateUTF8fromZRSTR), string, length, stray, range, size8, model::WriteUtf8),
       CheckWellFormedWriter(string, terminated)});
}

// The buffer must have `most` units for each unit of the range, and the terminator.
template <class From, class To>
std::string CheckRange(const char* name, ZRRESULT (*convert)(const From*, const From*, uint8_t, To**),
                       const std::vector<From>& from, size_t most,
                       model::String<To> (*step)(const std::vector<From>&, size_t)) {
  for (const uint8_t stop : {uint8_t{0}, uint8_t{1}, uint8_t{0x80}}) {
    model::Outcome<To> expected = model::Range(from, stop != 0, step);
    expected.units.resize(from.size() * most + 1);
    To* buffer = nullptr;
    const ZRRESULT result = convert(from.data(), from.data() + from.size(), stop, &buffer);
    const auto call = [&] { return name + ("(" + Escaped(from)) + ", stop " + std::to_string(stop) + ")"; };
    UNICODE_CLAIM(result == expected.result, call(), DescribeResult(result, expected.result));
    const bool isEqual = buffer != nullptr && std::equal(expected.units.begin(), expected.units.end(), buffer);
    UNICODE_CLAIM(isEqual, call(),
                  buffer == nullptr
                      ? "returned no buffer"
                      : DescribeDifference(model::String<To>(buffer, expected.units.size()), expected.units));
    std::free(buffer);
  }
  return "";
}

inline std::string CheckRanges(const std::vector<char>& bytes, const std::vector<WCHAR>& units,
                               const std::vector<char32_t>& points) {
  return FirstDifference({CheckRange(NAMED(ZrUTF8toUTF32), bytes, 1, model::ToPoint<char>),
                          CheckRange(NAMED(ZrUTF16toUTF32), units, 1, model::ToPoint<WCHAR>),
                          CheckRange(NAMED(ZrUTF32toUTF16), points, 2, model::ToUnits),
                          CheckRange(NAMED(ZrUTF32toUTF8), points, 4, model::ToSequence)});
}
