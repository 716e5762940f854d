// 16-bit text to UTF-8 in AVX-512: counting the bytes of a text, and encoding it.

#include "text/utf8_vectors.h"

#if defined(__GNUC__) && defined(__x86_64__)

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/unicode_forms.h"
#include "text/utf8_vectors_avx512.h"

// The units that are surrogates.
ZR_AVX512 static inline __mmask32 SurrogatesOf(__m512i units) noexcept {
  return _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, Each16(0xF800)), Each16(0xD800));
}

// What CountUtf8Avx512 collects over all vectors.
struct Utf8Count {
  std::size_t bytes = 0;
  uint32_t bad = 0;
  uint32_t isHighBefore = 0;  // 1 if the last unit of the vector before is a high surrogate, else 0

  std::size_t Result() const noexcept { return (bad | isHighBefore) == 0 ? bytes : kNotCounted; }
};

// Checks 32 units and counts the bytes that they yield, except the first byte of each.
//
// A unit yields a second byte from 0x80 up and a third from 0x800 up. A surrogate pair yields four bytes rather than
// six. All surrogates are in pairs if the low ones are exactly where the high ones are, one unit further on.
ZR_AVX512 static inline void AddUnits(__m512i units, Utf8Count& count) noexcept {
  count.bytes += CountBits(_mm512_cmpge_epu16_mask(units, Each16(0x80))) +
                 CountBits(_mm512_cmpge_epu16_mask(units, Each16(0x800)));
  const __mmask32 isSurrogate = SurrogatesOf(units);
  if ((isSurrogate | count.isHighBefore) == 0) return;
  const uint32_t isLow = _mm512_mask_test_epi16_mask(isSurrogate, units, Each16(0x400));
  const uint32_t isHigh = isSurrogate & ~isLow;
  count.bad |= (isHigh << 1 | count.isHighBefore) ^ isLow;
  count.isHighBefore = isHigh >> 31;
  count.bytes -= 2 * CountBits(isLow);
}

// Skips ASCII text from `at` on. Returns the beginning of the first vector that isn't all ASCII or isn't complete. Each
// skipped unit is one byte.
ZR_AVX512 static std::size_t SkipAscii(const WCHAR* text, std::size_t at, std::size_t length) noexcept {
  for (std::size_t step = FirstStep(length - at, text + at); length - at >= 64; step = 64) {
    if (!AreUnitsAscii(_mm512_or_si512(Load(text + at), Load(text + at + 32)))) break;
    at += step;
  }
  if (length - at >= 32 && AreUnitsAscii(Load(text + at))) at += 32;
  return at;
}

// A text of up to 64 units, and zeros after it.
struct ShortText {
  __m512i low, high;
};
ZR_AVX512 static inline ShortText LoadShort(const WCHAR* text, std::size_t length) noexcept {
  const uint64_t inText = FirstOf64(length);
  ShortText units{_mm512_maskz_loadu_epi16(static_cast<__mmask32>(inText), text), _mm512_setzero_si512()};
  if (length > 32) units.high = _mm512_maskz_loadu_epi16(static_cast<__mmask32>(inText >> 32), text + 32);
  return units;
}
ZR_AVX512 static inline bool AreUnitsAscii(const ShortText& text) noexcept {
  return AreUnitsAscii(_mm512_or_si512(text.low, text.high));
}

// Only a vector of ASCII is a hint of an ASCII run, so other text doesn't pay for the attempt to skip one.
ZR_AVX512 std::size_t CountUtf8Avx512(const WCHAR* text, std::size_t length) noexcept {
  Utf8Count count{length};
  if (length <= 64) {
    const ShortText units = LoadShort(text, length);
    if (AreUnitsAscii(units)) return length;
    AddUnits(units.low, count);
    if (length > 32) AddUnits(units.high, count);
    return count.Result();
  }
  std::size_t at = SkipAscii(text, 0, length);
  while (length - at >= 32) {
    const __m512i units = Load(text + at);
    AddUnits(units, count);
    at += 32;
    if (AreUnitsAscii(units)) at = SkipAscii(text, at, length);
  }
  if (at < length) AddUnits(_mm512_maskz_loadu_epi16(First32(length - at), text + at), count);
  return count.Result();
}

// The rest of the text and of the buffer. The functions with loops take and return it by value. Through a reference,
// the compiler would have to assume that each store of bytes changes the cursors, and would load them again.
struct Encoding {
  const WCHAR* at;
  const WCHAR* end;
  unsigned char* to;
  const unsigned char* toEnd;

  std::size_t UnitsLeft() const noexcept { return static_cast<std::size_t>(end - at); }
  std::size_t Space() const noexcept { return static_cast<std::size_t>(toEnd - to); }

  // Whether a step may take 32 units and store `bytes` bytes, of which at most 32 don't count. These are overwritten
  // later: more than 32 units follow, and each yields at least one byte, except the last unit of the text, which may be
  // a lone surrogate.
  bool IsInside(std::size_t bytes) const noexcept { return UnitsLeft() > 32 + 32 && Space() >= bytes; }
};

// Encodes ASCII, as long as it comes in vectors.
ZR_AVX512 static Encoding EncodeAscii(Encoding run) noexcept {
  while (run.UnitsLeft() >= 64 && run.Space() >= 64) {
    const __m512i first = Load(run.at), second = Load(run.at + 32);
    if (!AreUnitsAscii(_mm512_or_si512(first, second))) break;
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(run.to), _mm512_cvtepi16_epi8(first));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(run.to + 32), _mm512_cvtepi16_epi8(second));
    run.at += 64;
    run.to += 64;
  }
  return run;
}

// The bytes of 32 units below 0x800. Each has two bytes in its lane, the first in the low byte: 110aaaaa 10bbbbbb of a
// unit aaaaabbbbbb, or ASCII and a zero. `isTwo` has the units that aren't ASCII.
ZR_AVX512 static inline __m512i BytesUpToTwo(__m512i units, __mmask32 isTwo) noexcept {
  const __m512i tails = _mm512_and_si512(_mm512_slli_epi16(units, 8), Each16(0x3F00));
  const __m512i leads = _mm512_or_si512(_mm512_srli_epi16(units, 6), Each16(0x80C0));
  return _mm512_mask_mov_epi16(units, isTwo, _mm512_or_si512(leads, tails));
}
static constexpr uint64_t kFirstOfTwo = 0x5555555555555555;  // is kept always; the second is kept if its top bit is set

// Encodes vectors of units below 0x800, as long as they come. Stops at a vector of ASCII, too.
ZR_AVX512 static Encoding EncodeUpToTwo(Encoding run) noexcept {
  while (run.IsInside(64)) {
    const __m512i units = Load(run.at);
    const __mmask32 isTwo = _mm512_cmpge_epu16_mask(units, Each16(0x80));
    if (isTwo == 0 || _mm512_test_epi16_mask(units, Each16(0xF800)) != 0) break;
    const __m512i bytes = BytesUpToTwo(units, isTwo);
    const uint64_t kept = kFirstOfTwo | _mm512_movepi8_mask(bytes);
    Store(run.to, _mm512_maskz_compress_epi8(kept, bytes));
    run.at += 32;
    run.to += CountBits(kept);
  }
  return run;
}

// Splits each number of 32 bits into parts of six bits, one per byte, the highest part in the first byte. For each
// byte, a multishift takes eight bits of the 64 bits around it, from the bit that `places` names. 64 bits are two
// numbers, so the places for the second number are 32 (0x20) greater. The mask then cuts each part to its bits.
ZR_AVX512 static inline __m512i PartsOfThree(__m512i numbers) noexcept {  // from the bits 12, 6 and 0 up; a zero
  const __m512i places = _mm512_set1_epi64(0x0020262C'0000060C);
  return _mm512_and_si512(_mm512_multishift_epi64_epi8(places, numbers), Each32(0x003F3F0F));
}
ZR_AVX512 static inline __m512i PartsOfFour(__m512i numbers) noexcept {  // from the bits 18, 12, 6 and 0 up
  const __m512i places = _mm512_set1_epi64(0x20262C32'00060C12);
  return _mm512_and_si512(_mm512_multishift_epi64_epi8(places, numbers), Each32(0x3F3F3F07));
}
static constexpr uint32_t kMarksOfTwo = 0x0080C000, kMarksOfThree = 0x008080E0, kMarksOfFour = 0x808080F0;

// Encodes vectors of 16 surrogate pairs, as long as they come. A lane of 32 bits is one pair, the high surrogate in its
// low half. It becomes the four bytes of the character, so all 64 bytes that are stored count, and the text may end
// after them.
ZR_AVX512 static Encoding EncodePairs(Encoding run) noexcept {
  while (run.UnitsLeft() >= 32 && run.Space() >= 64) {
    const __m512i pairs = Load(run.at);
    const __m512i tags = _mm512_and_si512(pairs, Each32(0xFC00FC00));
    if (_mm512_cmpneq_epi32_mask(tags, Each32(0xDC00D800)) != 0) break;
    const __m512i high = _mm512_and_si512(_mm512_slli_epi32(pairs, 10), Each32(0xFFC00));
    const __m512i low = _mm512_and_si512(_mm512_srli_epi32(pairs, 16), Each32(0x3FF));
    const __m512i points = _mm512_add_epi32(_mm512_or_si512(high, low), Each32(0x10000));
    Store(run.to, _mm512_or_si512(PartsOfFour(points), Each32(kMarksOfFour)));
    run.at += 32;
    run.to += 64;
  }
  return run;
}

// Moves the first three bytes of each lane of 32 bits together.
static constexpr auto kThreeOfFour = [] {
  std::array<uint8_t, 64> from{};
  for (std::size_t byte = 0; byte < 48; ++byte) from[byte] = static_cast<uint8_t>(byte / 3 * 4 + byte % 3);
  return from;
}();

// Encodes vectors of units that yield three bytes each, as long as they come. 16 units fill 48 bytes of a vector.
ZR_AVX512 static Encoding EncodeThrees(Encoding run) noexcept {
  const __m512i together = Load(kThreeOfFour.data());
  while (run.IsInside(48 + 64)) {
    const __m512i units = Load(run.at);
    const __mmask32 isShorter = _mm512_cmplt_epu16_mask(units, Each16(0x800));
    if ((isShorter | SurrogatesOf(units)) != 0) break;
    for (const __m256i half : {LowHalf(units), HighHalf(units)}) {
      const __m512i bytes = _mm512_or_si512(PartsOfThree(_mm512_cvtepu16_epi32(half)), Each32(kMarksOfThree));
      Store(run.to, _mm512_permutexvar_epi8(together, bytes));
      run.to += 48;
    }
    run.at += 32;
  }
  return run;
}

// Stores the kept bytes. Returns false, and stores nothing, if they don't fit. Nothing after them is changed: they may
// be the last of the text.
ZR_AVX512 static inline bool StoreKept(__m512i bytes, uint64_t kept, Encoding& step) noexcept {
  const std::size_t count = CountBits(kept);
  if (step.Space() < count) return false;
  _mm512_mask_storeu_epi8(step.to, First64(count), _mm512_maskz_compress_epi8(kept, bytes));
  step.to += count;
  return true;
}

// Encodes up to 16 units of any kind. Returns false, and encodes nothing, if they contain a lone surrogate or if the
// bytes don't fit.
//
// Each unit has four bytes in its lane of 32 bits, the first in the lowest byte. A pair is encoded in the lane of its
// high surrogate; the lane of the low surrogate yields nothing. The last byte of shorter characters is always the
// third, so that they lack the first, or the first two:
//
//     a surrogate pair   11110aaa 10bbbbbb 10cccccc 10dddddd
//     0x800 and above    1110aaaa 10bbbbbb 10cccccc -
//     0x80 to 0x7FF      -        110bbbbb 10cccccc -
//     ASCII              -        -        0ccccccc -
//
// The third byte is kept always, except in the lane of a low surrogate. The others are kept if their top bit is set.
ZR_AVX512 static bool EncodeAny(Encoding& step) noexcept {
  const std::size_t left = step.UnitsLeft();
  std::size_t count = std::min<std::size_t>(left, 16);
  __m512i units = _mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(static_cast<__mmask16>(First32(count)), step.at));
  const __m512i tags = _mm512_and_si512(units, Each32(0xFC00));
  uint32_t isHigh = _mm512_cmpeq_epi32_mask(tags, Each32(0xD800));
  const uint32_t isLow = _mm512_cmpeq_epi32_mask(tags, Each32(0xDC00));
  if (isHigh >> 15 != 0) {  // a high surrogate in the last lane waits for the next step
    count = 15;
    isHigh &= 0x7FFF;
    units = _mm512_maskz_mov_epi32(0x7FFF, units);
  }
  if (isHigh << 1 != isLow) return false;

  const __mmask16 isTwo = _mm512_cmpge_epu32_mask(units, Each32(0x80));
  const __mmask16 isThree = _mm512_cmpge_epu32_mask(units, Each32(0x800));
  const __m512i marks = _mm512_mask_mov_epi32(Each32(kMarksOfTwo), isThree, Each32(kMarksOfThree));
  __m512i bytes = _mm512_mask_or_epi32(_mm512_slli_epi32(units, 16), isTwo, PartsOfThree(units), marks);
  if (isHigh != 0) {
    // high << 10 plus the next unit is the code point, except for the marks of both and for the 0x10000 that a pair
    // leaves out.
    const auto inNext = static_cast<__mmask16>(First32(left - 1));
    const __m512i next = _mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(inNext, step.at + 1));
    const __m512i points = _mm512_add_epi32(_mm512_add_epi32(_mm512_slli_epi32(units, 10), next),
                                            Each32(0x10000u - (0xD800u << 10) - 0xDC00u));
    bytes = _mm512_mask_or_epi32(bytes, static_cast<__mmask16>(isHigh), PartsOfFour(points), Each32(kMarksOfFour));
    bytes = _mm512_mask_mov_epi32(bytes, static_cast<__mmask16>(isLow), _mm512_setzero_si512());
  }
  const uint64_t thirds = _pdep_u64(First32(count) & ~isLow, 0x4444444444444444);
  if (!StoreKept(bytes, thirds | _mm512_movepi8_mask(bytes), step)) return false;
  step.at += count;
  return true;
}

// Encodes up to 32 units below 0x800 that no run has taken: near the end of the text or the buffer, or ASCII that is
// shorter than the steps of EncodeAscii. Returns false, and encodes nothing, if others are among them or if the bytes
// don't fit.
ZR_AVX512 static bool EncodeUpToTwoOnce(Encoding& step) noexcept {
  const uint32_t inText = First32(step.UnitsLeft());
  const __m512i units = _mm512_maskz_loadu_epi16(inText, step.at);
  if (_mm512_test_epi16_mask(units, Each16(0xF800)) != 0) return false;
  const __m512i bytes = BytesUpToTwo(units, _mm512_cmpge_epu16_mask(units, Each16(0x80)));
  if (!StoreKept(bytes, _pdep_u64(inText, kFirstOfTwo) | _mm512_movepi8_mask(bytes), step)) return false;
  step.at += std::min<std::size_t>(step.UnitsLeft(), 32);
  return true;
}

// Each turn encodes the runs of one kind of character that begin at the next unit, or 16 or 32 units of a mixture.
ZR_AVX512 void EncodeAvx512(const WCHAR*& text, const WCHAR* end, unsigned char*& buffer,
                            const unsigned char* toEnd) noexcept {
  Encoding rest{text, end, buffer, toEnd};
  while (rest.at < end) {
    const WCHAR* const start = rest.at;
    if (IsSurrogate(*start)) {
      rest = EncodePairs(rest);
    } else if (rest.UnitsLeft() >= 64) {
      if (*start < 0x80) rest = EncodeAscii(rest);
      if (rest.at != start) continue;
      rest = *start < 0x800 ? EncodeUpToTwo(rest) : EncodeThrees(rest);
    }
    if (rest.at != start) continue;
    if ((*start >= 0x800 || !EncodeUpToTwoOnce(rest)) && !EncodeAny(rest)) break;
  }
  text = rest.at;
  buffer = rest.to;
}

ZR_AVX512 bool EncodeShortAvx512(const WCHAR* text, std::size_t length, unsigned char* buffer) noexcept {
  const ShortText units = LoadShort(text, length);
  if (!AreUnitsAscii(units)) return false;
  const __m512i bytes =
      _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(units.low)), _mm512_cvtepi16_epi8(units.high), 1);
  _mm512_mask_storeu_epi8(buffer, FirstOf64(length), bytes);
  return true;
}

#endif
