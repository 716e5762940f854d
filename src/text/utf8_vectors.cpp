// The conversions between UTF-8 and 16-bit text in AVX2: the same steps for any mixture of characters.
//
// Decoding computes a unit at every byte, as if a character ended there, and then drops those where none does. Encoding
// computes three bytes for every unit, and then drops those that shorter characters don't have. Tables of shuffles do
// the dropping. So neither looks for where characters begin, and no step waits for the one before.

#include "text/utf8_vectors.h"

#include "platform/unicode_forms.h"

#if defined(__GNUC__) && defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>

#define ZR_AVX2 __attribute__((target("avx2,popcnt")))

bool DetectAvx2() noexcept {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("popcnt") != 0;
}

ZR_AVX2 static __m256i Load(const void* at) noexcept { return _mm256_loadu_si256(static_cast<const __m256i*>(at)); }
ZR_AVX2 static __m128i LoadHalf(const void* at) noexcept { return _mm_loadu_si128(static_cast<const __m128i*>(at)); }
ZR_AVX2 static void Store(void* at, __m256i vector) noexcept { _mm256_storeu_si256(static_cast<__m256i*>(at), vector); }
ZR_AVX2 static void StoreHalf(void* at, __m128i vector) noexcept {
  _mm_storeu_si128(static_cast<__m128i*>(at), vector);
}

ZR_AVX2 static __m256i EachByte(int byte) noexcept { return _mm256_set1_epi8(static_cast<char>(byte)); }
ZR_AVX2 static __m256i EachUnit(int unit) noexcept { return _mm256_set1_epi16(static_cast<int16_t>(unit)); }

ZR_AVX2 static unsigned TopBits(__m256i bytes) noexcept { return static_cast<unsigned>(_mm256_movemask_epi8(bytes)); }
ZR_AVX2 static unsigned TopBits(__m128i bytes) noexcept { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }
ZR_AVX2 static std::size_t CountBits(unsigned bits) noexcept { return static_cast<std::size_t>(_mm_popcnt_u32(bits)); }

// The units of the vector that are `tag` under `mask`.
ZR_AVX2 static __m256i IsTagged(__m256i units, int mask, int tag) noexcept {
  return _mm256_cmpeq_epi16(_mm256_and_si256(units, EachUnit(mask)), EachUnit(tag));
}

// For each set of bytes to keep, by its key, the shuffle that moves them to the front; what is behind becomes zero.
using Shuffles = std::array<std::array<uint8_t, 16>, 256>;

template <class IsKept>
static constexpr Shuffles MakeShuffles(IsKept isKept) {
  Shuffles shuffles{};
  for (unsigned key = 0; key < 256; ++key) {
    std::size_t kept = 0;
    for (unsigned byte = 0; byte < 16; ++byte) {
      if (isKept(key, byte)) shuffles[key][kept++] = static_cast<uint8_t>(byte);
    }
    while (kept < 16) shuffles[key][kept++] = 0x80;
  }
  return shuffles;
}

// ---- UTF-8 to 16-bit text ------------------------------------------------------------------------------------------

// The vector that ends `back` bytes before `bytes`, in front of which stands nothing.
template <int back>
ZR_AVX2 static __m256i FromFront(__m256i bytes) noexcept {
  return _mm256_alignr_epi8(bytes, _mm256_permute2x128_si256(bytes, bytes, 0x08), 16 - back);
}

// Counts the units of 32 bytes without the first `skipped` of them. A byte has to be a continuation byte if the byte
// before it leads two or more, the one before that three or more, or the third four, and else must not be one; the
// others are gathered in `bad`. A good text has a unit for each byte that is no continuation byte, and one more for
// each that leads four.
ZR_AVX2 static std::size_t CountUnits32(const unsigned char* at, bool isFront, unsigned skipped,
                                        __m256i& bad) noexcept {
  const __m256i bytes = Load(at);
  const __m256i before1 = isFront ? FromFront<1>(bytes) : Load(at - 1);
  const __m256i before2 = isFront ? FromFront<2>(bytes) : Load(at - 2);
  const __m256i before3 = isFront ? FromFront<3>(bytes) : Load(at - 3);
  const __m256i asked = _mm256_or_si256(
      _mm256_subs_epu8(before1, EachByte(0xBF)),
      _mm256_or_si256(_mm256_subs_epu8(before2, EachByte(0xDF)), _mm256_subs_epu8(before3, EachByte(0xEF))));
  const __m256i isNotAsked = _mm256_cmpeq_epi8(asked, _mm256_setzero_si256());
  const __m256i isTail = _mm256_cmpgt_epi8(EachByte(0xC0), bytes);  // as signed bytes those from 0x80 to 0xBF
  bad = _mm256_or_si256(bad, _mm256_cmpeq_epi8(isNotAsked, isTail));
  const __m256i leadsFour = _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, EachByte(0xF0)), bytes);
  return CountBits(~TopBits(isTail) >> skipped) + CountBits(TopBits(leadsFour) >> skipped);
}

// Where a run of ASCII from `at` on ends, to within a vector.
ZR_AVX2 static std::size_t SkipAscii(const unsigned char* text, std::size_t at, std::size_t size) noexcept {
  for (; size - at >= 128; at += 128) {
    const __m256i all = _mm256_or_si256(_mm256_or_si256(Load(text + at), Load(text + at + 32)),
                                        _mm256_or_si256(Load(text + at + 64), Load(text + at + 96)));
    if (TopBits(all) != 0) break;
  }
  while (size - at >= 32 && TopBits(Load(text + at)) == 0) at += 32;
  return at;
}

ZR_AVX2 std::size_t CountUnitsAvx2(const unsigned char* text, std::size_t size) noexcept {
  std::size_t at = SkipAscii(text, 0, size), units = at;
  __m256i bad = _mm256_setzero_si256();
  while (size - at >= 32) {
    const std::size_t next = at + std::min<std::size_t>(size - at, 128) / 32 * 32;
    for (; at < next; at += 32) units += CountUnits32(text + at, at == 0, 0, bad);
    if (text[at - 1] < 0x80) {
      const std::size_t behind = SkipAscii(text, at, size);
      units += behind - at;
      at = behind;
    }
  }
  // The last vector ends with the text, and begins among what is counted.
  if (at < size) units += CountUnits32(text + size - 32, false, static_cast<unsigned>(32 - (size - at)), bad);
  return TopBits(bad) == 0 ? units : kNotCounted;
}

// By a bit for each of eight units.
static constexpr Shuffles kKeepUnits =
    MakeShuffles([](unsigned key, unsigned byte) { return (key >> byte / 2 & 1) != 0; });

// Sixteen bytes as units of sixteen bits.
ZR_AVX2 static __m256i Widen(__m128i bytes) noexcept { return _mm256_cvtepu8_epi16(bytes); }

ZR_AVX2 static void WidenAscii(const unsigned char*& at, const unsigned char* end, WCHAR*& to,
                               const WCHAR* toEnd) noexcept {
  while (end - at >= 32 && toEnd - to >= 32 && TopBits(Load(at)) == 0) {
    Store(to, Widen(LoadHalf(at)));
    Store(to + 16, Widen(LoadHalf(at + 16)));
    at += 32;
    to += 32;
  }
}

ZR_AVX2 void DecodeAvx2(const unsigned char*& text, const unsigned char* end, WCHAR*& units,
                        const WCHAR* toEnd) noexcept {
  const unsigned char* at = text;
  WCHAR* to = units;
  WidenAscii(at, end, to, toEnd);
  while (end - at > 16) {  // one more byte than is taken tells whether the last one ends a character
    const __m128i bytes = LoadHalf(at);
    const bool isFront = at == text;
    const __m256i last = Widen(bytes);
    const __m256i before1 = Widen(isFront ? _mm_slli_si128(bytes, 1) : LoadHalf(at - 1));
    const __m256i before2 = Widen(isFront ? _mm_slli_si128(bytes, 2) : LoadHalf(at - 2));
    const __m256i before3 = Widen(isFront ? _mm_slli_si128(bytes, 3) : LoadHalf(at - 3));

    // As if a character of two or three bytes ended here, then one of one.
    const __m256i low6 = _mm256_and_si256(last, EachUnit(0x3F)), mid6 = _mm256_and_si256(before1, EachUnit(0x3F));
    const __m256i low12 = _mm256_or_si256(low6, _mm256_slli_epi16(mid6, 6));
    const __m256i top4 = _mm256_and_si256(_mm256_cmpgt_epi16(before2, EachUnit(0xDF)), _mm256_slli_epi16(before2, 12));
    __m256i decoded = _mm256_blendv_epi8(_mm256_or_si256(low12, top4), last, _mm256_cmpgt_epi16(EachUnit(0x80), last));
    unsigned kept = TopBits(_mm_cmpgt_epi8(LoadHalf(at + 1), _mm_set1_epi8(static_cast<char>(0xBF))));

    // Of a character of four, the third byte yields the high surrogate and the fourth the low one.
    const __m256i isThird = _mm256_cmpgt_epi16(before2, EachUnit(0xEF));
    const __m256i isFourth = _mm256_cmpgt_epi16(before3, EachUnit(0xEF));
    if (const __m256i isOfFour = _mm256_or_si256(isThird, isFourth); _mm256_testz_si256(isOfFour, isOfFour) == 0) {
      const __m256i above = _mm256_or_si256(
          _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(before2, EachUnit(7)), 8), _mm256_slli_epi16(mid6, 2)),
          _mm256_srli_epi16(low6, 4));
      // Too long a form of a lower code point is one unit only, which the counting doesn't know.
      if (_mm256_testz_si256(isThird, _mm256_cmpgt_epi16(EachUnit(0x40), above)) == 0) break;
      const __m256i high = _mm256_add_epi16(above, EachUnit(0xD800 - 0x40));
      const __m256i low = _mm256_or_si256(_mm256_and_si256(low12, EachUnit(0x3FF)), EachUnit(0xDC00));
      decoded = _mm256_blendv_epi8(_mm256_blendv_epi8(decoded, high, isThird), low, isFourth);
      kept |= TopBits(_mm_packs_epi16(_mm256_castsi256_si128(isThird), _mm256_extracti128_si256(isThird, 1)));
    }

    const std::size_t first = CountBits(kept & 0xFF), second = CountBits(kept >> 8);
    if (static_cast<std::size_t>(toEnd - to) < first + 8) break;
    StoreHalf(to, _mm_shuffle_epi8(_mm256_castsi256_si128(decoded), LoadHalf(&kKeepUnits[kept & 0xFF])));
    StoreHalf(to + first, _mm_shuffle_epi8(_mm256_extracti128_si256(decoded, 1), LoadHalf(&kKeepUnits[kept >> 8])));
    at += 16;
    to += first + second;
    WidenAscii(at, end, to, toEnd);
  }
  std::size_t inside = 0;  // a character whose end was not reached is given back
  for (; at != text && at != end && (*at & 0xC0) == 0x80; --at) ++inside;
  text = at;
  units = inside == 3 ? to - 1 : to;  // with its high surrogate
}

// ---- 16-bit text to UTF-8 ------------------------------------------------------------------------------------------

// The bytes of sixteen units; those that `isCounted` masks out count as one byte each. Three bytes a unit, less one
// below 0x800, less one more below 0x80; and a pair has two less. Each low surrogate has to follow a high one, and each
// high one to be followed: the others are gathered in `bad`.
ZR_AVX2 static std::size_t CountBytes16(__m256i units, __m256i before, __m256i isCounted, __m256i& bad) noexcept {
  units = _mm256_and_si256(units, isCounted);
  before = _mm256_and_si256(before, isCounted);
  const __m256i isLow = IsTagged(units, 0xFC00, 0xDC00);
  bad = _mm256_or_si256(bad, _mm256_xor_si256(isLow, IsTagged(before, 0xFC00, 0xD800)));
  const __m256i isBelow = _mm256_packs_epi16(IsTagged(units, 0xF800, 0), IsTagged(units, 0xFF80, 0));
  return 48 - CountBits(TopBits(isBelow)) - CountBits(TopBits(isLow));
}

// Read from the n-th unit on, it masks out all but the last n.
static constexpr auto kLastUnits = [] {
  std::array<uint16_t, 32> masks{};
  for (std::size_t unit = 16; unit < 32; ++unit) masks[unit] = 0xFFFF;
  return masks;
}();

ZR_AVX2 static std::size_t SkipAscii(const WCHAR* text, std::size_t at, std::size_t length) noexcept {
  for (; length - at >= 64; at += 64) {
    const __m256i any = _mm256_or_si256(_mm256_or_si256(Load(text + at), Load(text + at + 16)),
                                        _mm256_or_si256(Load(text + at + 32), Load(text + at + 48)));
    if (_mm256_testz_si256(any, EachUnit(0xFF80)) == 0) break;
  }
  while (length - at >= 16 && _mm256_testz_si256(Load(text + at), EachUnit(0xFF80)) != 0) at += 16;
  return at;
}

ZR_AVX2 std::size_t CountUtf8Avx2(const WCHAR* text, std::size_t length) noexcept {
  if (IsHighSurrogate(text[length - 1])) return kNotCounted;
  std::size_t at = SkipAscii(text, 0, length), bytes = at;
  const __m256i all = EachUnit(0xFFFF);
  __m256i bad = _mm256_setzero_si256();
  while (length - at >= 16) {
    const std::size_t next = at + std::min<std::size_t>(length - at, 64) / 16 * 16;
    for (; at < next; at += 16) {
      const __m256i units = Load(text + at);
      bytes += CountBytes16(units, at == 0 ? FromFront<2>(units) : Load(text + at - 1), all, bad);
    }
    if (text[at - 1] < 0x80) {
      const std::size_t behind = SkipAscii(text, at, length);
      bytes += behind - at;
      at = behind;
    }
  }
  if (const std::size_t rest = length - at; rest != 0) {
    const WCHAR* const last = text + length - 16;
    bytes += CountBytes16(Load(last), Load(last - 1), Load(&kLastUnits[rest]), bad) - (16 - rest);
  }
  return TopBits(bad) == 0 ? bytes : kNotCounted;
}

// By a bit for each of eight units beyond ASCII, which have both of their two bytes, and the others the first.
static constexpr Shuffles kKeepOfTwo =
    MakeShuffles([](unsigned key, unsigned byte) { return byte % 2 == 0 || (key >> byte / 2 & 1) != 0; });

// By a bit for each of four units beyond ASCII, and then one for each from 0x800 up. The others lack the second of
// their three bytes, or the first. Each unit has a fourth, which is never kept.
static constexpr Shuffles kKeepOfThree = MakeShuffles([](unsigned key, unsigned byte) {
  const unsigned isKept[] = {key >> (4 + byte / 4) & 1, key >> byte / 4 & 1, 1, 0};
  return isKept[byte % 4] != 0;
});

// Eight pairs: a vector of them in is a vector of bytes out.
ZR_AVX2 static bool EncodePairs(const WCHAR* at, unsigned char* to) noexcept {
  const __m256i pairs = Load(at);
  const __m256i tags = _mm256_and_si256(pairs, _mm256_set1_epi32(static_cast<int>(0xFC00FC00)));
  if (TopBits(_mm256_cmpeq_epi32(tags, _mm256_set1_epi32(static_cast<int>(0xDC00D800)))) != 0xFFFFFFFF) return false;
  const __m256i high = _mm256_and_si256(pairs, _mm256_set1_epi32(0x3FF));
  const __m256i low = _mm256_and_si256(_mm256_srli_epi32(pairs, 16), _mm256_set1_epi32(0x3FF));
  const __m256i above = _mm256_or_si256(_mm256_slli_epi32(high, 10), low);
  const __m256i codePoints = _mm256_add_epi32(above, _mm256_set1_epi32(0x10000));
  const __m256i tails12 = _mm256_and_si256(_mm256_srli_epi32(codePoints, 4), _mm256_set1_epi32(0x3F00));
  const __m256i tails6 = _mm256_and_si256(_mm256_slli_epi32(codePoints, 10), _mm256_set1_epi32(0x3F0000));
  const __m256i tails0 = _mm256_and_si256(_mm256_slli_epi32(codePoints, 24), _mm256_set1_epi32(0x3F000000));
  const __m256i leads =
      _mm256_or_si256(_mm256_srli_epi32(codePoints, 18), _mm256_set1_epi32(static_cast<int>(0x808080F0)));
  Store(to, _mm256_or_si256(_mm256_or_si256(leads, tails12), _mm256_or_si256(tails6, tails0)));
  return true;
}

// Stores what is kept of both halves: a byte for each of the `units` in a half, and one for each bit of its key. False
// if there is no room for two whole vectors, or if too few units are left behind them: each, but for the last of the
// text, yields a byte at least, and those have to cover what is stored in excess.
ZR_AVX2 static bool StoreKept(__m256i bytes, const Shuffles& shuffles, unsigned firstKey, unsigned secondKey,
                              std::size_t units, std::ptrdiff_t unitsLeft, unsigned char*& to,
                              const unsigned char* toEnd) noexcept {
  const std::size_t first = units + CountBits(firstKey), second = units + CountBits(secondKey);
  if (static_cast<std::size_t>(unitsLeft) <= 16 - second || static_cast<std::size_t>(toEnd - to) < first + 16)
    return false;
  StoreHalf(to, _mm_shuffle_epi8(_mm256_castsi256_si128(bytes), LoadHalf(&shuffles[firstKey])));
  StoreHalf(to + first, _mm_shuffle_epi8(_mm256_extracti128_si256(bytes, 1), LoadHalf(&shuffles[secondKey])));
  to += first + second;
  return true;
}

ZR_AVX2 static void NarrowAscii(const WCHAR*& at, const WCHAR* end, unsigned char*& to,
                                const unsigned char* toEnd) noexcept {
  while (end - at >= 32 && toEnd - to >= 32) {
    const __m256i first = Load(at), second = Load(at + 16);
    if (_mm256_testz_si256(_mm256_or_si256(first, second), EachUnit(0xFF80)) == 0) break;
    Store(to, _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8));  // each half was packed by itself
    at += 32;
    to += 32;
  }
}

ZR_AVX2 void EncodeAvx2(const WCHAR*& text, const WCHAR* end, unsigned char*& buffer,
                        const unsigned char* toEnd) noexcept {
  const WCHAR* at = text;
  unsigned char* to = buffer;
  NarrowAscii(at, end, to, toEnd);
  for (; end - at >= 8; NarrowAscii(at, end, to, toEnd)) {
    const __m128i narrow = LoadHalf(at);
    const __m128i isSurrogate = _mm_cmpeq_epi16(_mm_and_si128(narrow, _mm_set1_epi16(static_cast<int16_t>(0xF800))),
                                                _mm_set1_epi16(static_cast<int16_t>(0xD800)));
    if (TopBits(isSurrogate) != 0) {
      if (end - at >= 16 && toEnd - to >= 32 && EncodePairs(at, to)) {
        at += 16;
        to += 32;
        continue;
      }
      if (end - at < 10 || toEnd - to < 32) break;
      for (const WCHAR* const next = at + 8; at < next;) at += StoreCharacter(at, to);
      continue;
    }
    if (end - at >= 16) {
      const __m256i units = Load(at);
      if (_mm256_testz_si256(units, EachUnit(0xF800)) != 0) {
        const __m256i isBeyondAscii = _mm256_cmpgt_epi16(units, EachUnit(0x7F));
        const __m256i tails = _mm256_and_si256(_mm256_slli_epi16(units, 8), EachUnit(0x3F00));
        const __m256i leads = _mm256_or_si256(_mm256_srli_epi16(units, 6), EachUnit(0x80C0));
        const __m256i bytes = _mm256_blendv_epi8(units, _mm256_or_si256(leads, tails), isBeyondAscii);
        const unsigned two =
            TopBits(_mm_packs_epi16(_mm256_castsi256_si128(isBeyondAscii), _mm256_extracti128_si256(isBeyondAscii, 1)));
        if (!StoreKept(bytes, kKeepOfTwo, two & 0xFF, two >> 8, 8, end - at - 16, to, toEnd)) break;
        at += 16;
        continue;
      }
    }
    const __m256i units = _mm256_cvtepu16_epi32(narrow);
    const __m256i isBeyondAscii = _mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x7F));
    const __m256i isOfThree = _mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x7FF));
    const __m256i tails6 = _mm256_and_si256(_mm256_slli_epi32(units, 2), _mm256_set1_epi32(0x3F00));
    const __m256i tails0 = _mm256_and_si256(_mm256_slli_epi32(units, 16), _mm256_set1_epi32(0x3F0000));
    const __m256i leads3 = _mm256_or_si256(_mm256_srli_epi32(units, 12), _mm256_set1_epi32(0x8080E0));
    const __m256i leads2 = _mm256_andnot_si256(isOfThree, _mm256_set1_epi32(0x4000));  // makes the second byte a lead
    const __m256i bytes = _mm256_or_si256(_mm256_or_si256(leads3, leads2), _mm256_or_si256(tails6, tails0));
    const __m256i chosen = _mm256_blendv_epi8(_mm256_slli_epi32(units, 16), bytes, isBeyondAscii);
    const auto two = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isBeyondAscii)));
    const auto three = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isOfThree)));
    const unsigned first = (two & 0xF) | (three & 0xF) << 4, second = two >> 4 | (three & 0xF0);
    if (!StoreKept(chosen, kKeepOfThree, first, second, 4, end - at - 8, to, toEnd)) break;
    at += 8;
  }
  text = at;
  buffer = to;
}

#else

bool DetectAvx2() noexcept { return false; }
std::size_t CountUnitsAvx2(const unsigned char*, std::size_t) noexcept { return kNotCounted; }
void DecodeAvx2(const unsigned char*&, const unsigned char*, WCHAR*&, const WCHAR*) noexcept {}
std::size_t CountUtf8Avx2(const WCHAR*, std::size_t) noexcept { return kNotCounted; }
void EncodeAvx2(const WCHAR*&, const WCHAR*, unsigned char*&, const unsigned char*) noexcept {}

#endif
