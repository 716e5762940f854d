// The library beside the model, for one text in each form. Each check answers null, or the claim that doesn't hold.

#pragma once

#include <cstdlib>
#include <initializer_list>

#include "tests/support/unicode_model.h"

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
    ZRSTR string = nullptr;
    UNICODE_CLAIM(create(given.data(), isTerminated ? -1 : length, &string) == expected.result);
    UNICODE_CLAIM(model::String<WCHAR>(string, ZrStringLen(string) + 1) == expected.units + WCHAR{0});
    UNICODE_CLAIM((ZrStringRefCount(string) == 1) == (length != 0));  // else it is the shared empty string
    ZrDestroyString(string);
  }
  return nullptr;
}

inline const char* CheckFromUtf8(const std::vector<uint8_t>& bytes, uint8_t behind) {
  const std::vector<char> text(bytes.begin(), bytes.end());
  const auto last = static_cast<char>(behind);
  return FirstOf({CheckCreator(ZrUTF8toZRSTR, text, last, model::StringFromUtf8),
                  CheckCreator(ZrCreateZRSTRfromUTF8, text, last, model::StringFromUtf8)});
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
  ZRSTR string = ZrCreateStringByteLen(text.data(), static_cast<uint32_t>(text.size() * sizeof(WCHAR)));
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
  ZrDestroyString(string);
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
