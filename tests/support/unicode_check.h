// The library beside the model, for one text in each form. Each check answers null, or the claim that doesn't hold.

#pragma once

#include <algorithm>

#include "tests/support/unicode_model.h"

#define UNICODE_CLAIM(claim) \
  if (!(claim)) return #claim

template <class T>
const char* CheckCreated(ZRSTR string, const std::vector<T>& expected) {
  const std::vector<WCHAR> content(string, string + ZrStringLen(string));
  UNICODE_CLAIM(content == expected);
  UNICODE_CLAIM(string[content.size()] == 0);
  ZrDestroyString(string);
  return nullptr;
}

// `behind` is the byte behind the text, there only if the contract reads it.
inline const char* CheckFromUtf8(std::vector<uint8_t> bytes, uint8_t behind) {
  const size_t size = bytes.size();
  bytes.push_back(behind);
  const auto expected = model::StringFromUtf8(bytes, size);
  ZRSTR string = nullptr;
  if (size != 0) {
    const std::vector<uint8_t> exact(bytes.begin(), bytes.end() - (expected.readsBehind ? 0 : 1));
    UNICODE_CLAIM(ZrUTF8toZRSTR(reinterpret_cast<const char*>(exact.data()), static_cast<int32_t>(size), &string) ==
                  expected.result);
    UNICODE_CLAIM(ZrStringRefCount(string) == 1);
    if (const char* claim = CheckCreated(string, expected.units)) return claim;
  }
  bytes.back() = 0;
  const std::vector<uint8_t> terminated(bytes.begin(), std::find(bytes.begin(), bytes.end(), uint8_t{0}) + 1);
  const auto whole = model::StringFromUtf8(terminated, terminated.size() - 1);
  UNICODE_CLAIM(ZrCreateZRSTRfromUTF8(reinterpret_cast<const char*>(terminated.data()), -1, &string) == whole.result);
  return CheckCreated(string, whole.units);
}

inline const char* CheckFromUtf32(std::vector<char32_t> points) {
  ZRSTR string = nullptr;
  UNICODE_CLAIM(ZrCreateZRSTRfromUTF32(points.data(), static_cast<int32_t>(points.size()), &string) == ZR_R_OK ||
                points.empty());
  if (!points.empty()) {
    if (const char* claim = CheckCreated(string, model::StringFromUtf32(points))) return claim;
  }
  points.push_back(0);
  points.erase(std::find(points.begin(), points.end(), U'\0') + 1, points.end());
  UNICODE_CLAIM(ZrCreateZRSTRfromUTF32(points.data(), -1, &string) == ZR_R_OK);
  points.pop_back();
  return CheckCreated(string, model::StringFromUtf32(points));
}

// All writers, over the first `length` units or, if that is -1, the whole, with a capacity near the size needed
// or far from it.
inline const char* CheckWriters(const std::vector<WCHAR>& text, int32_t length, int32_t stray) {
  const auto bytes = static_cast<uint32_t>(text.size() * sizeof(WCHAR));
  ZRSTR string = ZrCreateStringByteLen(text.data(), bytes);
  std::vector<WCHAR> range = text;
  if (length >= 0) range.resize(static_cast<size_t>(length));
  std::vector<WCHAR> longer = range;
  longer.push_back(range.size() < text.size() ? text[range.size()] : WCHAR{0});

  int32_t needed = -1;
  UNICODE_CLAIM(ZrCreateUTF16fromZRSTR(string, length, nullptr, &needed) == ZR_R_OK);
  UNICODE_CLAIM(needed == static_cast<int32_t>(range.size()) + 1);
  for (int32_t capacity : {needed - 1, needed, needed + 1, stray}) {
    const auto room = static_cast<size_t>(capacity);
    std::vector<WCHAR> buffer(room + 1, WCHAR{0xA5A5}), expected(range);
    expected.resize(room);
    expected.push_back(0xA5A5);
    int32_t kept = capacity;
    UNICODE_CLAIM(ZrCreateWCHARfromZRSTR(string, length, buffer.data(), &kept) == ZR_R_OK);
    UNICODE_CLAIM(buffer == expected && kept == capacity);
  }

  needed = -1;
  UNICODE_CLAIM(ZrCreateUTF32fomZRSTR(string, length, nullptr, &needed) == ZR_R_OK);
  UNICODE_CLAIM(needed == model::SizeOfUtf32(longer));
  for (int32_t capacity : {0, 1, needed - 1, needed, needed + 1, stray}) {
    if (capacity < 0) continue;
    std::vector<char32_t> buffer(capacity == 0 ? longer.size() : static_cast<size_t>(capacity), 0xA5A5A5A5);
    const auto expected = model::WriteUtf32(longer, static_cast<size_t>(capacity), buffer);
    UNICODE_CLAIM(ZrCreateUTF32fomZRSTR(string, length, buffer.data(), &capacity) == expected.result);
    UNICODE_CLAIM(buffer == expected.units);
  }

  needed = -1;
  UNICODE_CLAIM(ZrCreateUTF8fromZRSTR(string, length, nullptr, &needed) == ZR_R_OK);
  UNICODE_CLAIM(needed == model::SizeOfUtf8(range));
  for (int32_t capacity : {1, needed - 1, needed, needed + 1, stray}) {
    if (capacity <= 0) continue;
    std::vector<char> buffer(static_cast<size_t>(capacity), '\xA5');
    const auto expected = model::WriteUtf8(range, buffer);
    UNICODE_CLAIM(ZrCreateUTF8fromZRSTR(string, length, buffer.data(), &capacity) == expected.result);
    UNICODE_CLAIM(buffer == expected.units);
  }

  const std::vector<char> wellFormed = model::WellFormedUtf8(text);
  const auto size = static_cast<int32_t>(wellFormed.size());
  UNICODE_CLAIM(ZrZRSTRtoUTF8(string, nullptr, 0) == size);
  std::vector<char> buffer(wellFormed.size());
  UNICODE_CLAIM(ZrZRSTRtoUTF8(string, buffer.data(), size) == size && buffer == wellFormed);
  buffer.resize(buffer.size() - 1);
  buffer.shrink_to_fit();
  UNICODE_CLAIM(buffer.empty() || ZrZRSTRtoUTF8(string, buffer.data(), size - 1) == 0);
  ZrDestroyString(string);
  return nullptr;
}

template <class From, class To>
const char* CheckRange(ZRRESULT (*convert)(const From*, const From*, uint8_t, To**),
                       model::Outcome<To> (*expect)(const std::vector<From>&, bool), const std::vector<From>& from) {
  for (const uint8_t stop : {uint8_t{0}, uint8_t{1}, uint8_t{0x80}}) {
    To* buffer = nullptr;
    const auto expected = expect(from, stop != 0);
    UNICODE_CLAIM(convert(from.data(), from.data() + from.size(), stop, &buffer) == expected.result);
    UNICODE_CLAIM(std::equal(expected.units.begin(), expected.units.end(), buffer));
    std::free(buffer);
  }
  return nullptr;
}

inline const char* CheckRanges(const std::vector<char>& bytes, const std::vector<WCHAR>& units,
                               const std::vector<char32_t>& points) {
  const char* claim = CheckRange<char, char32_t>(ZrUTF8toUTF32, model::RangeUtf8To32, bytes);
  if (claim == nullptr) claim = CheckRange<WCHAR, char32_t>(ZrUTF16toUTF32, model::RangeUtf16To32, units);
  if (claim == nullptr) claim = CheckRange<char32_t, WCHAR>(ZrUTF32toUTF16, model::RangeUtf32To16, points);
  if (claim == nullptr) claim = CheckRange<char32_t, char>(ZrUTF32toUTF8, model::RangeUtf32To8, points);
  return claim;
}
