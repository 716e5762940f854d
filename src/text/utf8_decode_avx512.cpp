// UTF-8 to 16-bit text in AVX-512: counting the units of a text, and decoding it.

#include "text/utf8_vectors.h"

#if defined(__GNUC__) && defined(__x86_64__)

#include <algorithm>
#include <cstdint>

#include "platform/unicode_forms.h"
#include "text/counted_string.h"
#include "text/utf8_vector_steps.h"
#include "text/utf8_vectors_avx512.h"

// Checks 64 bytes and returns which are continuation bytes. `before1` to `before3` contain the bytes one to three
// places before each byte. Only the bytes of the mask `inText` belong to the text; all others are zero. A byte that
// breaks the rule for continuation bytes sets a bit of `bad`, which collects over all calls.
ZR_AVX512 static inline uint64_t CheckTails(__m512i bytes, __m512i before1, __m512i before2, __m512i before3,
                                            uint64_t inText, __mmask64& bad) noexcept {
  // A saturating subtraction leaves a byte above 0 only where it exceeds the limit. So `required` is above 0 where a
  // continuation byte must be.
  const __m512i required =
      _mm512_or_si512(_mm512_subs_epu8(before1, Each8(0xBF)),
                      _mm512_or_si512(_mm512_subs_epu8(before2, Each8(0xDF)), _mm512_subs_epu8(before3, Each8(0xEF))));
  const __mmask64 isTail = _mm512_cmplt_epi8_mask(bytes, Each8(0xC0));  // as signed, only 80 to BF are below C0
  bad = _kor_mask64(bad, _kxor_mask64(isTail, _mm512_mask_test_epi8_mask(inText, required, required)));
  return isTail;
}

// Checks 64 bytes and counts the units that they yield.
ZR_AVX512 static inline std::size_t CountUnits64(__m512i bytes, __m512i before1, __m512i before2, __m512i before3,
                                                 uint64_t inText, __mmask64& bad) noexcept {
  const uint64_t isTail = CheckTails(bytes, before1, before2, before3, inText, bad);
  return CountBits(inText & ~isTail) + CountBits(_mm512_cmpge_epu8_mask(bytes, Each8(0xF0)));
}

// The same for up to 64 bytes at the beginning or the end of a text. Nothing precedes the beginning. Nothing is checked
// after the last byte: a text that ends inside a sequence is good.
ZR_AVX512 static std::size_t CountUnitsAtEdge(const unsigned char* at, std::size_t size, bool isAtStart,
                                              __mmask64& bad) noexcept {
  const uint64_t inText = First64(size);
  return CountUnits64(_mm512_maskz_loadu_epi8(inText, at),
                      _mm512_maskz_loadu_epi8(isAtStart ? inText << 1 : inText, at - 1),
                      _mm512_maskz_loadu_epi8(isAtStart ? inText << 2 : inText, at - 2),
                      _mm512_maskz_loadu_epi8(isAtStart ? inText << 3 : inText, at - 3), inText, bad);
}

// Skips ASCII text from `at` on. Returns the beginning of the first vector that isn't all ASCII or isn't complete. Each
// skipped byte is one unit.
ZR_AVX512 static std::size_t SkipAscii(const unsigned char* text, std::size_t at, std::size_t size) noexcept {
  while (size - at >= 128 && AreAscii(_mm512_or_si512(Load(text + at), Load(text + at + 64)))) at += 128;
  if (size - at >= 64 && AreAscii(Load(text + at))) at += 64;
  return at;
}

// Only a vector of ASCII is a hint of an ASCII run, so other text doesn't pay for the attempt to skip one. The skipped
// bytes need no check: CountUnits64 has already checked the ASCII byte before them, so nothing requires a continuation
// byte there.
ZR_AVX512 std::size_t CountUnitsAvx512(const unsigned char* text, std::size_t size) noexcept {
  __mmask64 bad = 0;
  std::size_t at = SkipAscii(text, 0, size), units = at;
  if (at == 0) {
    units = CountUnitsAtEdge(text, size, true, bad);
    at = std::min<std::size_t>(size, 64);
  }
  while (size - at >= 64) {
    const unsigned char* const from = text + at;
    const __m512i bytes = Load(from);
    units += CountUnits64(bytes, Load(from - 1), Load(from - 2), Load(from - 3), ~uint64_t{0}, bad);
    at += 64;
    if (AreAscii(bytes)) {
      const std::size_t afterAscii = SkipAscii(text, at, size);
      units += afterAscii - at;
      at = afterAscii;
    }
  }
  if (at < size) units += CountUnitsAtEdge(text + at, size - at, false, bad);
  return bad == 0 ? units : kNotCounted;
}

ZR_AVX512 static inline void StoreWide(__m512i bytes, WCHAR* to) noexcept {
  Store(to, _mm512_cvtepu8_epi16(LowHalf(bytes)));
  Store(to + 32, _mm512_cvtepu8_epi16(HighHalf(bytes)));
}

// Converts vectors that are all ASCII, as long as they come. A shorter first step stores whole vectors, too; the next
// step writes over the excess.
ZR_AVX512 static void WidenAscii(const unsigned char*& at, const unsigned char* end, WCHAR*& to,
                                 const WCHAR* toEnd) noexcept {
  for (std::size_t step = FirstStep(static_cast<std::size_t>(end - at), to); end - at >= 64 && toEnd - to >= 64;) {
    const __m512i bytes = Load(at);
    if (!AreAscii(bytes)) break;
    StoreWide(bytes, to);
    at += step;
    to += step;
    step = 64;
  }
}

// The same for a whole text that is known to be ASCII.
ZR_AVX512 static void WidenAll(const unsigned char* at, std::size_t size, WCHAR* to) noexcept {
  for (std::size_t step = FirstStep(size, to); size >= 64; step = 64) {
    StoreWide(Load(at), to);
    at += step;
    to += step;
    size -= step;
  }
  if (size == 0) return;
  const __m512i bytes = _mm512_maskz_loadu_epi8(First64(size), at);
  StoreFirst(to, _mm512_cvtepu8_epi16(LowHalf(bytes)), std::min<std::size_t>(size, 32));
  if (size > 32) StoreFirst(to + 32, _mm512_cvtepu8_epi16(HighHalf(bytes)), size - 32);
}

// Returns the end of the last whole character. The text is good, but its last character may lack bytes.
static const unsigned char* EndOfLastWhole(const unsigned char* text, const unsigned char* end) noexcept {
  for (std::ptrdiff_t back = 1; back <= 3 && back <= end - text; ++back) {
    const unsigned char byte = end[-back];
    if (byte < 0x80) break;
    if (byte >= 0xC0) return static_cast<std::ptrdiff_t>(TailBytes(byte)) >= back ? end - back : end;
  }
  return end;
}

// Which bytes a decoding step loads, with one bit per lane. A step decodes 32 bytes. For each of them it also loads the
// byte after it (`next`) and those one to three places before it. A bit is set if its byte belongs to the text.
struct DecodingMasks {
  uint32_t text, next, before1, before2, before3;
};
static constexpr uint32_t kAll = ~uint32_t{0};
static constexpr DecodingMasks kInside{kAll, kAll, kAll, kAll, kAll};

ZR_AVX512 static DecodingMasks MasksAtEdge(std::size_t size, bool isAtStart) noexcept {
  const uint32_t text = First32(size), next = First32(size - 1);
  return isAtStart ? DecodingMasks{text, next, text << 1, text << 2, text << 3}
                   : DecodingMasks{text, next, text, text, text};
}

// Decoding has one lane of 16 bits per byte:
//
//     last                  the byte itself, of which the step assumes that it is the last byte of a character
//     before1 to before3    the bytes one to three places before it
//     decoded               the unit of the character that ends at this byte; garbage if none ends here
//
// `kept` has the lanes whose units are stored. The text is known to be good. A lead byte in `before2` or `before3`
// therefore shows that the bytes after it belong to its character.

// The bytes of a mask as units.
ZR_AVX512 static inline __m512i LoadWide(uint32_t mask, const unsigned char* at) noexcept {
  return _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(mask, at));
}

// Decodes characters of one and two bytes. `isTail` has the continuation bytes.
//
// 110aaaaa << 6 plus 10bbbbbb is the unit of a character of two bytes, except for the marks of the two bytes. They
// don't overlap with the bits of the unit, so one subtraction removes both: C0 << 6 plus 80 is 0x3080.
ZR_AVX512 ZR_INLINE __m512i DecodeUpToTwo(__m512i last, __m512i before1, uint32_t isTail) noexcept {
  const __m512i added = _mm512_sub_epi16(_mm512_slli_epi16(before1, 6), Each16(0x3080));
  return _mm512_mask_add_epi16(last, isTail, last, added);
}

// Completes `decoded`, the result of DecodeUpToTwo, and `kept` for text with longer characters. Sets `isFourth` to the
// lanes that end a character of four bytes. Returns false if a character needs other treatment.
ZR_AVX512 ZR_INLINE bool DecodeLonger(__m512i last, __m512i before1, __m512i before2, __m512i before3, __m512i& decoded,
                                      uint32_t& kept, uint32_t& isFourth) noexcept {
  // For three bytes, the mark of the middle byte is 80 << 6, which is 0x1000 less than what was subtracted. 16 bits cut
  // off the mark of the lead byte.
  const __m512i added = _mm512_add_epi16(_mm512_slli_epi16(before2, 12), Each16(0x1000));
  decoded = _mm512_mask_add_epi16(decoded, _mm512_cmpge_epu16_mask(before2, Each16(0xE0)), decoded, added);

  // A character of four bytes needs two lanes: its third byte yields the high surrogate and its fourth the low one. A
  // continuation byte follows the third, so its lane is added to `kept`.
  const uint32_t isThird = _mm512_cmpge_epu16_mask(before2, Each16(0xF0));
  isFourth = _mm512_cmpge_epu16_mask(before3, Each16(0xF0));
  if ((isThird | isFourth) == 0) return true;

  // In the lane of the third byte, `above` is the code point without its low ten bits, lead << 8 | second << 2 |
  // third >> 4. The high surrogate is 0xD800 + ((codePoint - 0x10000) >> 10), that is above + 0xD800 - 0x40.
  const __m512i low6 = _mm512_and_si512(last, Each16(0x3F)), mid6 = _mm512_and_si512(before1, Each16(0x3F));
  const __m512i lead = _mm512_slli_epi16(_mm512_and_si512(before2, Each16(7)), 8);
  const __m512i above = _mm512_or_si512(_mm512_or_si512(lead, _mm512_slli_epi16(mid6, 2)), _mm512_srli_epi16(low6, 4));
  // A code point below 0x10000 in four bytes (an overlong form) is accepted, but it is one unit, not the two that were
  // counted. The caller's loop decodes it.
  if (_mm512_mask_cmplt_epu16_mask(isThird, above, Each16(0x40)) != 0) return false;
  const __m512i low10 = _mm512_and_si512(_mm512_or_si512(_mm512_slli_epi16(mid6, 6), low6), Each16(0x3FF));
  decoded = _mm512_mask_add_epi16(decoded, isThird, above, Each16(0xD800 - 0x40));
  decoded = _mm512_mask_add_epi16(decoded, isFourth, low10, Each16(0xDC00));
  kept |= isThird;
  return true;
}

// What a step hands over to the next one.
struct StepBefore {
  bool hadThree = false;      // a byte led three or more; text without such bytes needs neither `before2` nor `before3`
  bool endsWithFour = false;  // the last byte ends a character of four bytes
};

// Decodes 32 bytes. Returns false, and stores nothing, if the units don't fit or a character needs other treatment.
ZR_AVX512 ZR_INLINE bool Decode32(const unsigned char* at, const DecodingMasks& masks, StepBefore& before, WCHAR*& to,
                                  const WCHAR* toEnd) noexcept {
  const __m256i bytes = _mm256_maskz_loadu_epi8(masks.text, at), next = _mm256_maskz_loadu_epi8(masks.next, at + 1);
  const __mmask32 isTail = _mm256_cmplt_epi8_mask(bytes, _mm256_set1_epi8(static_cast<char>(0xC0)));
  uint32_t kept = _mm256_mask_cmpgt_epi8_mask(masks.text, next, _mm256_set1_epi8(static_cast<char>(0xBF)));
  const bool hasThree = _mm256_cmpge_epu8_mask(bytes, _mm256_set1_epi8(static_cast<char>(0xE0))) != 0;

  const __m512i last = _mm512_cvtepu8_epi16(bytes), before1 = LoadWide(masks.before1, at - 1);
  __m512i decoded = DecodeUpToTwo(last, before1, isTail);
  uint32_t isFourth = 0;
  if ((hasThree || before.hadThree) && !DecodeLonger(last, before1, LoadWide(masks.before2, at - 2),
                                                     LoadWide(masks.before3, at - 3), decoded, kept, isFourth)) {
    return false;
  }
  before = {hasThree, isFourth >> 31 != 0};

  const std::size_t count = CountBits(kept);
  const auto space = static_cast<std::size_t>(toEnd - to);
  const __m512i units = _mm512_maskz_compress_epi16(kept, decoded);
  if (space >= 32) [[likely]] {
    Store(to, units);  // the next step, or the caller's fill, writes over the excess
  } else {
    if (space < count) return false;
    StoreFirst(to, units, count);
  }
  to += count;
  return true;
}

// The lead bytes of a vector of characters that have four bytes each.
static constexpr uint64_t kLeadsOfFour = 0x1111'1111'1111'1111;

// Decodes up to 16 characters of four bytes each, in the lanes of `isThere`. A lane of 32 bits is one character, its
// lead byte in the low byte. It becomes a surrogate pair, the high surrogate in the low half. Returns false if a
// character needs other treatment.
ZR_AVX512 ZR_INLINE bool DecodeFours(__m512i bytes, __mmask16 isThere, __m512i& pairs) noexcept {
  // Joins the low bits of two bytes each, lead << 6 | second and third << 6 | fourth, and then joins these.
  const __m512i bits = _mm512_and_si512(bytes, Each32(0x3F3F3F07));
  const __m512i points = _mm512_madd_epi16(_mm512_maddubs_epi16(bits, Each16(0x0140)), Each32(0x00011000));
  if (_mm512_mask_cmplt_epu32_mask(isThere, points, Each32(0x10000)) != 0) return false;
  const __m512i high = _mm512_add_epi32(_mm512_srli_epi32(points, 10), Each32(0xD800 - 0x40));
  const __m512i low = _mm512_or_si512(_mm512_and_si512(points, Each32(0x3FF)), Each32(0xDC00));
  pairs = _mm512_or_si512(high, _mm512_slli_epi32(low, 16));
  return true;
}

// Decodes vectors of 16 characters of four bytes, as long as they come. Not inline, so that its constants don't take
// the registers of the caller's loop.
[[gnu::noinline]] ZR_AVX512 static void DecodeRunOfFours(const unsigned char*& at, const unsigned char* end, WCHAR*& to,
                                                         const WCHAR* toEnd) noexcept {
  while (end - at >= 64 && toEnd - to >= 32) {
    const __m512i bytes = Load(at);
    __m512i pairs;
    if (_mm512_cmpge_epu8_mask(bytes, Each8(0xF0)) != kLeadsOfFour || !DecodeFours(bytes, 0xFFFF, pairs)) break;
    Store(to, pairs);
    at += 64;
    to += 32;
  }
}

// Decodes whole steps. A 33rd byte must be there for each: it shows whether the 32nd ends a character. For the first
// step, the caller has checked this. Stops after a step that ends with a character of four bytes, because a run of them
// may follow. Returns false if a step can't be decoded.
ZR_AVX512 ZR_INLINE bool DecodeSteps(const unsigned char*& at, const unsigned char* end, StepBefore& before, WCHAR*& to,
                                     const WCHAR* toEnd) noexcept {
  do {
    const WCHAR* const start = to;
    if (!Decode32(at, kInside, before, to, toEnd)) return false;
    at += 32;
    // As many units as bytes: nothing but ASCII, except perhaps the end of a character that began before. More ASCII
    // may follow.
    if (to - start == 32) WidenAscii(at, end, to, toEnd);
  } while (end - at > 32 && !before.endsWithFour);
  return true;
}

// The first step has no bytes before it, and the last one has none after it, so these two load with masks. The steps
// between them need no masks. A character at the end that lacks bytes is left to the caller.
ZR_AVX512 void DecodeAvx512(const unsigned char*& text, const unsigned char* textEnd, WCHAR*& units,
                            const WCHAR* toEnd) noexcept {
  // Every whole character of several bytes yields fewer units than bytes. So a text that ends with a whole character
  // and yields as many is all ASCII.
  if (toEnd - units == textEnd - text && textEnd[-1] < 0x80) {
    WidenAll(text, static_cast<std::size_t>(textEnd - text), units);
    text = textEnd;
    units += toEnd - units;
    return;
  }
  const unsigned char *at = text, *const end = EndOfLastWhole(text, textEnd);
  WCHAR* to = units;
  StepBefore before;
  WidenAscii(at, end, to, toEnd);
  if (at == text && at < end) {
    const auto left = static_cast<std::size_t>(end - at);
    if (!Decode32(at, MasksAtEdge(left, true), before, to, toEnd)) return;
    at += std::min<std::size_t>(left, 32);
  }
  while (end - at > 32 && DecodeSteps(at, end, before, to, toEnd)) {
    // `before` remains true: the run, too, ends with a character of four bytes.
    if (before.endsWithFour) DecodeRunOfFours(at, end, to, toEnd);
  }
  if (at < end && end - at <= 32) {
    const auto left = static_cast<std::size_t>(end - at);
    if (Decode32(at, MasksAtEdge(left, false), before, to, toEnd)) at = end;
  }
  StepBackToCharacter(text, at, end, to);
  text = at;
  units = to;
}

// ---- Short texts ---------------------------------------------------------------------------------------------------

// The units of up to 64 bytes, before a string exists for them. The two vectors have up to 32 each.
struct ShortUnits {
  __m512i low, high;
  std::size_t lowCount, highCount;
};

// Decodes half of a short text and moves its units to the front of `units`. See Decode32.
ZR_AVX512 ZR_INLINE bool DecodeHalf(__m256i bytes, __m256i before1, __m256i before2, __m256i before3, bool hasThree,
                                    uint32_t isTail, uint32_t kept, __m512i& units, std::size_t& count) noexcept {
  const __m512i last = _mm512_cvtepu8_epi16(bytes), wide1 = _mm512_cvtepu8_epi16(before1);
  __m512i decoded = DecodeUpToTwo(last, wide1, isTail);
  uint32_t isFourth = 0;
  if (hasThree && !DecodeLonger(last, wide1, _mm512_cvtepu8_epi16(before2), _mm512_cvtepu8_epi16(before3), decoded,
                                kept, isFourth)) {
    return false;
  }
  units = _mm512_maskz_compress_epi16(kept, decoded);
  count = CountBits(kept);
  return true;
}

// Checks and decodes a text of up to 64 bytes. Returns false if it is bad or ends inside a character, or if a character
// needs other treatment.
ZR_AVX512 ZR_INLINE bool DecodeShort(const unsigned char* text, std::size_t size, ShortUnits& units) noexcept {
  const uint64_t inText = FirstOf64(size);
  const __m512i bytes = _mm512_maskz_loadu_epi8(inText, text);
  if (AreAscii(bytes)) {
    units.low = _mm512_cvtepu8_epi16(LowHalf(bytes));
    units.high = _mm512_cvtepu8_epi16(HighHalf(bytes));
    units.lowCount = std::min<std::size_t>(size, 32);
    units.highCount = size - units.lowCount;
    return true;
  }
  if (EndOfLastWhole(text, text + size) != text + size) return false;

  const bool hasThree = _mm512_cmpge_epu8_mask(bytes, Each8(0xE0)) != 0;
  const __m512i before1 = _mm512_maskz_loadu_epi8(inText << 1, text - 1);
  __m512i before2 = _mm512_setzero_si512(), before3 = before2;
  uint64_t isTail = 0;
  __mmask64 bad = 0;
  if (hasThree) {
    before2 = _mm512_maskz_loadu_epi8(inText << 2, text - 2);
    before3 = _mm512_maskz_loadu_epi8(inText << 3, text - 3);
    isTail = CheckTails(bytes, before1, before2, before3, inText, bad);
  } else {  // continuation bytes must be exactly where the byte before leads
    isTail = _mm512_cmplt_epi8_mask(bytes, Each8(0xC0));
    bad = _kxor_mask64(isTail, _mm512_mask_cmpge_epu8_mask(inText, before1, Each8(0xC0)));
  }
  if (bad != 0) return false;

  if (hasThree && _mm512_cmpge_epu8_mask(bytes, Each8(0xF0)) == (inText & kLeadsOfFour)) {
    units.lowCount = size / 2;
    units.highCount = 0;
    units.high = bytes;  // isn't stored
    return DecodeFours(bytes, static_cast<__mmask16>(FirstOf64(size / 4)), units.low);
  }
  const uint64_t kept = inText & ~(isTail >> 1);
  return DecodeHalf(LowHalf(bytes), LowHalf(before1), LowHalf(before2), LowHalf(before3), hasThree,
                    static_cast<uint32_t>(isTail), static_cast<uint32_t>(kept), units.low, units.lowCount) &&
         DecodeHalf(HighHalf(bytes), HighHalf(before1), HighHalf(before2), HighHalf(before3), hasThree,
                    static_cast<uint32_t>(isTail >> 32), static_cast<uint32_t>(kept >> 32), units.high,
                    units.highCount);
}

// The units are decoded before the string is allocated, because only then is their number known. So the text is loaded
// and examined only once.
ZR_AVX512 bool CreateShortAvx512(const unsigned char* text, std::size_t size, ZRSTR& string) noexcept {
  ShortUnits units;
  if (!DecodeShort(text, size, units)) return false;
  string = AllocateText(units.lowCount + units.highCount);
  if (string == nullptr) return true;
  StoreFirst(string, units.low, units.lowCount);
  if (units.highCount != 0) StoreFirst(string + units.lowCount, units.high, units.highCount);
  return true;
}

#endif
