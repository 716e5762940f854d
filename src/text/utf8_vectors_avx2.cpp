// The conversions between UTF-8 and 16-bit text in AVX2, in vectors of 32 bytes. utf8_vector_steps.h explains the idea.
//
// Most AVX2 instructions treat a register as two separate halves of 16 bytes. Shifts by bytes, packs and shuffles never
// move a byte from one half to the other.

#include "text/utf8_vectors.h"

#if defined(__GNUC__) && defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/unicode_forms.h"
#include "text/utf8_vector_steps.h"

// Allows one function to use the instructions. The build's own options don't, because everything else must run on
// processors without them.
#define ZR_AVX2 __attribute__((target("avx2,popcnt")))

ZR_AVX2 static __m256i Load(const void* at) noexcept { return _mm256_loadu_si256(static_cast<const __m256i*>(at)); }
ZR_AVX2 static __m128i LoadHalf(const void* at) noexcept { return _mm_loadu_si128(static_cast<const __m128i*>(at)); }
ZR_AVX2 static void Store(void* at, __m256i vector) noexcept { _mm256_storeu_si256(static_cast<__m256i*>(at), vector); }
ZR_AVX2 static void StoreHalf(void* at, __m128i vector) noexcept {
  _mm_storeu_si128(static_cast<__m128i*>(at), vector);
}

ZR_AVX2 static __m256i EachByte(int byte) noexcept { return _mm256_set1_epi8(static_cast<char>(byte)); }
ZR_AVX2 static __m256i EachUnit(int unit) noexcept { return _mm256_set1_epi16(static_cast<int16_t>(unit)); }

// One bit per byte: the top bit of the byte. A comparison sets all bits of a lane, so a 16-bit lane has two of them.
ZR_AVX2 static unsigned TopBits(__m256i bytes) noexcept { return static_cast<unsigned>(_mm256_movemask_epi8(bytes)); }
ZR_AVX2 static unsigned TopBits(__m128i bytes) noexcept { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }
ZR_AVX2 static std::size_t CountBits(unsigned bits) noexcept { return static_cast<std::size_t>(_mm_popcnt_u32(bits)); }

// Sets all bits of the units that equal `tag` under `mask`. IsTagged(units, 0xFC00, 0xD800) finds high surrogates.
ZR_AVX2 static __m256i IsTagged(__m256i units, int mask, int tag) noexcept {
  return _mm256_cmpeq_epi16(_mm256_and_si256(units, EachUnit(mask)), EachUnit(tag));
}

// ---- UTF-8 to 16-bit text ------------------------------------------------------------------------------------------

// The bytes `back` places before each of `bytes`, where `bytes` is the beginning of the text. Zeros take the places of
// the missing bytes: PrecedingAtStart<1> of a b c ... is 0 a b ...
//
// The permutation (0x08) returns a zero half and the low half of `bytes`. These are what precedes the two halves of
// `bytes`, from which the alignment then takes the last `back` bytes each.
template <int back>
ZR_AVX2 static __m256i PrecedingAtStart(__m256i bytes) noexcept {
  return _mm256_alignr_epi8(bytes, _mm256_permute2x128_si256(bytes, bytes, 0x08), 16 - back);
}

// Checks 32 bytes and counts the units that they yield, without the first `skipped` bytes. `isAtStart` says that no
// bytes precede them. A byte that breaks the rule for continuation bytes sets its lane of `bad`, which collects over
// all calls.
ZR_AVX2 static std::size_t CountUnits32(const unsigned char* at, bool isAtStart, unsigned skipped,
                                        __m256i& bad) noexcept {
  const __m256i bytes = Load(at);
  const __m256i before1 = isAtStart ? PrecedingAtStart<1>(bytes) : Load(at - 1);
  const __m256i before2 = isAtStart ? PrecedingAtStart<2>(bytes) : Load(at - 2);
  const __m256i before3 = isAtStart ? PrecedingAtStart<3>(bytes) : Load(at - 3);
  // A saturating subtraction leaves a byte above 0 only where it exceeds the limit. So `required` is above 0 where a
  // continuation byte must be.
  const __m256i required = _mm256_or_si256(
      _mm256_subs_epu8(before1, EachByte(0xBF)),
      _mm256_or_si256(_mm256_subs_epu8(before2, EachByte(0xDF)), _mm256_subs_epu8(before3, EachByte(0xEF))));
  const __m256i isNotRequired = _mm256_cmpeq_epi8(required, _mm256_setzero_si256());
  const __m256i isTail = _mm256_cmpgt_epi8(EachByte(0xC0), bytes);  // compared as signed, only 80 to BF are below C0
  bad = _mm256_or_si256(bad, _mm256_cmpeq_epi8(isNotRequired, isTail));
  const __m256i leadsFour = _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, EachByte(0xF0)), bytes);  // bytes >= F0, unsigned
  return CountBits(~TopBits(isTail) >> skipped) + CountBits(TopBits(leadsFour) >> skipped);
}

// Skips ASCII text from `at` on. Returns the beginning of the first vector that isn't all ASCII or isn't complete. Each
// skipped byte is one unit.
ZR_AVX2 static std::size_t SkipAscii(const unsigned char* text, std::size_t at, std::size_t size) noexcept {
  for (; size - at >= 128; at += 128) {
    const __m256i all = _mm256_or_si256(_mm256_or_si256(Load(text + at), Load(text + at + 32)),
                                        _mm256_or_si256(Load(text + at + 64), Load(text + at + 96)));
    if (TopBits(all) != 0) break;
  }
  while (size - at >= 32 && TopBits(Load(text + at)) == 0) at += 32;
  return at;
}

// Counts in blocks of up to four vectors. Only a block that ends in ASCII is a hint of an ASCII run, so text without
// such runs doesn't pay for the attempt to skip one. The skipped bytes need no check: no byte before them can require a
// continuation byte, because CountUnits32 has already checked the ASCII byte that ends the block.
ZR_AVX2 std::size_t CountUnitsAvx2(const unsigned char* text, std::size_t size) noexcept {
  std::size_t at = SkipAscii(text, 0, size), units = at;
  __m256i bad = _mm256_setzero_si256();
  while (size - at >= 32) {
    const std::size_t next = at + std::min<std::size_t>(size - at, 128) / 32 * 32;
    for (; at < next; at += 32) units += CountUnits32(text + at, at == 0, 0, bad);
    if (text[at - 1] < 0x80) {
      const std::size_t afterAscii = SkipAscii(text, at, size);
      units += afterAscii - at;
      at = afterAscii;
    }
  }
  // The last vector ends with the text. It overlaps with bytes that are already counted and skips these. Nothing is
  // checked after its last byte: a text that ends inside a sequence is good.
  if (at < size) units += CountUnits32(text + size - 32, false, static_cast<unsigned>(32 - (size - at)), bad);
  return TopBits(bad) == 0 ? units : kNotCounted;
}

// Sixteen bytes as units of sixteen bits.
ZR_AVX2 static __m256i Widen(__m128i bytes) noexcept { return _mm256_cvtepu8_epi16(bytes); }

// Converts vectors that are all ASCII, as long as they come.
ZR_AVX2 static void WidenAscii(const unsigned char*& at, const unsigned char* end, WCHAR*& to,
                               const WCHAR* toEnd) noexcept {
  while (end - at >= 32 && toEnd - to >= 32 && TopBits(Load(at)) == 0) {
    Store(to, Widen(LoadHalf(at)));
    Store(to + 16, Widen(LoadHalf(at + 16)));
    at += 32;
    to += 32;
  }
}

// Decodes sixteen bytes per step. Every register of sixteen lanes has one lane of 16 bits per byte of the step:
//
//     last                  the byte itself, of which the step assumes that it is the last byte of a character
//     before1 to before3    the bytes one to three places before it
//     decoded               the unit of the character that ends at this byte; garbage if none ends here
//
// The bit of a lane in `kept` says that its unit is stored. The text is known to be good. A lead byte in `before2` or
// `before3` therefore shows that the bytes after it belong to its character.
ZR_AVX2 void DecodeAvx2(const unsigned char*& text, const unsigned char* end, WCHAR*& units,
                        const WCHAR* toEnd) noexcept {
  const unsigned char* at = text;
  WCHAR* to = units;
  WidenAscii(at, end, to, toEnd);
  while (end - at > 16) {  // a 17th byte must be there: it shows whether the 16th ends a character
    const __m128i bytes = LoadHalf(at);
    const bool isAtStart = at == text;
    const __m256i last = Widen(bytes);
    const __m256i before1 = Widen(isAtStart ? _mm_slli_si128(bytes, 1) : LoadHalf(at - 1));
    const __m256i before2 = Widen(isAtStart ? _mm_slli_si128(bytes, 2) : LoadHalf(at - 2));
    const __m256i before3 = Widen(isAtStart ? _mm_slli_si128(bytes, 3) : LoadHalf(at - 3));

    // low12 is the unit of a character of two bytes: 110aaaaa 10bbbbbb -> aaaaabbbbbb. A lead byte of three at before2
    // adds the four bits that `<< 12` leaves of it. The blend then puts ASCII bytes in their places.
    const __m256i low6 = _mm256_and_si256(last, EachUnit(0x3F)), mid6 = _mm256_and_si256(before1, EachUnit(0x3F));
    const __m256i low12 = _mm256_or_si256(low6, _mm256_slli_epi16(mid6, 6));
    const __m256i top4 = _mm256_and_si256(_mm256_cmpgt_epi16(before2, EachUnit(0xDF)), _mm256_slli_epi16(before2, 12));
    __m256i decoded = _mm256_blendv_epi8(_mm256_or_si256(low12, top4), last, _mm256_cmpgt_epi16(EachUnit(0x80), last));
    unsigned kept = TopBits(_mm_cmpgt_epi8(LoadHalf(at + 1), _mm_set1_epi8(static_cast<char>(0xBF))));

    // A character of four bytes needs two lanes: its third byte yields the high surrogate and its fourth the low one. A
    // continuation byte follows the third, so its lane is added to `kept`.
    const __m256i isThird = _mm256_cmpgt_epi16(before2, EachUnit(0xEF));
    const __m256i isFourth = _mm256_cmpgt_epi16(before3, EachUnit(0xEF));
    if (const __m256i isOfFour = _mm256_or_si256(isThird, isFourth); _mm256_testz_si256(isOfFour, isOfFour) == 0) {
      // In the lane of the third byte, `above` is the code point without its low ten bits, lead << 8 | second << 2 |
      // third >> 4. The high surrogate is 0xD800 + ((codePoint - 0x10000) >> 10), that is above + 0xD800 - 0x40. In the
      // lane of the fourth byte, low12 contains the low ten bits.
      const __m256i above = _mm256_or_si256(
          _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(before2, EachUnit(7)), 8), _mm256_slli_epi16(mid6, 2)),
          _mm256_srli_epi16(low6, 4));
      // A code point below 0x10000 in four bytes (an overlong form) is accepted, but it is one unit, not the two that
      // were counted. The caller's loop decodes it.
      if (_mm256_testz_si256(isThird, _mm256_cmpgt_epi16(EachUnit(0x40), above)) == 0) break;
      const __m256i high = _mm256_add_epi16(above, EachUnit(0xD800 - 0x40));
      const __m256i low = _mm256_or_si256(_mm256_and_si256(low12, EachUnit(0x3FF)), EachUnit(0xDC00));
      decoded = _mm256_blendv_epi8(_mm256_blendv_epi8(decoded, high, isThird), low, isFourth);
      kept |= TopBits(_mm_packs_epi16(_mm256_castsi256_si128(isThird), _mm256_extracti128_si256(isThird, 1)));
    }

    const std::size_t first = CountBits(kept & 0xFF), second = CountBits(kept >> 8);
    // Each half stores eight units, of which `first` or `second` count. The second store, and the next step, write over
    // the rest; the caller fills what is left at the end.
    if (static_cast<std::size_t>(toEnd - to) < first + 8) break;
    StoreHalf(to, _mm_shuffle_epi8(_mm256_castsi256_si128(decoded), LoadHalf(&kKeepUnits[kept & 0xFF])));
    StoreHalf(to + first, _mm_shuffle_epi8(_mm256_extracti128_si256(decoded, 1), LoadHalf(&kKeepUnits[kept >> 8])));
    at += 16;
    to += first + second;
    WidenAscii(at, end, to, toEnd);
  }
  StepBackToCharacter(text, at, end, to);
  text = at;
  units = to;
}

// ---- 16-bit text to UTF-8 ------------------------------------------------------------------------------------------

// Checks sixteen units and counts the bytes that they yield. `before` has, in each lane, the unit before. A unit that
// `isCounted` masks out becomes zero and counts as one byte.
//
// A unit yields three bytes, one less below 0x800 and one less again below 0x80. A surrogate pair yields four bytes
// rather than six: each bit that TopBits returns for the two bytes of a low surrogate subtracts one.
//
// A lane is bad if it is a low surrogate and the unit before isn't a high one, or the other way round. `bad` collects
// these lanes over all calls.
ZR_AVX2 static std::size_t CountBytes16(__m256i units, __m256i before, __m256i isCounted, __m256i& bad) noexcept {
  units = _mm256_and_si256(units, isCounted);
  before = _mm256_and_si256(before, isCounted);
  const __m256i isLow = IsTagged(units, 0xFC00, 0xDC00);
  bad = _mm256_or_si256(bad, _mm256_xor_si256(isLow, IsTagged(before, 0xFC00, 0xD800)));
  const __m256i isBelow = _mm256_packs_epi16(IsTagged(units, 0xF800, 0), IsTagged(units, 0xFF80, 0));
  return 48 - CountBits(TopBits(isBelow)) - CountBits(TopBits(isLow));
}

// Sixteen zeros and sixteen masks. A vector that is loaded from index n on has masks in its last n lanes.
static constexpr auto kLastUnits = [] {
  std::array<uint16_t, 32> masks{};
  for (std::size_t unit = 16; unit < 32; ++unit) masks[unit] = 0xFFFF;
  return masks;
}();

// As for bytes above: the position of the first vector that isn't all ASCII or isn't complete.
ZR_AVX2 static std::size_t SkipAscii(const WCHAR* text, std::size_t at, std::size_t length) noexcept {
  for (; length - at >= 64; at += 64) {
    const __m256i any = _mm256_or_si256(_mm256_or_si256(Load(text + at), Load(text + at + 16)),
                                        _mm256_or_si256(Load(text + at + 32), Load(text + at + 48)));
    if (_mm256_testz_si256(any, EachUnit(0xFF80)) == 0) break;
  }
  while (length - at >= 16 && _mm256_testz_si256(Load(text + at), EachUnit(0xFF80)) != 0) at += 16;
  return at;
}

// Counts in blocks and skips ASCII like CountUnitsAvx2. A high surrogate is found bad by the unit after it, so one at
// the end of the text has to be looked for.
ZR_AVX2 std::size_t CountUtf8Avx2(const WCHAR* text, std::size_t length) noexcept {
  if (IsHighSurrogate(text[length - 1])) return kNotCounted;
  std::size_t at = SkipAscii(text, 0, length), bytes = at;
  const __m256i all = EachUnit(0xFFFF);
  __m256i bad = _mm256_setzero_si256();
  while (length - at >= 16) {
    const std::size_t next = at + std::min<std::size_t>(length - at, 64) / 16 * 16;
    for (; at < next; at += 16) {
      const __m256i units = Load(text + at);
      bytes += CountBytes16(units, at == 0 ? PrecedingAtStart<2>(units) : Load(text + at - 1), all, bad);
    }
    if (text[at - 1] < 0x80) {
      const std::size_t afterAscii = SkipAscii(text, at, length);
      bytes += afterAscii - at;
      at = afterAscii;
    }
  }
  // The last vector ends with the text. Its first 16 - rest units are already counted; masked out, they count as one
  // byte each, which is subtracted. A rest means that the text is longer than a vector, so a unit precedes this one.
  if (const std::size_t rest = length - at; rest != 0) {
    const WCHAR* const last = text + length - 16;
    bytes += CountBytes16(Load(last), Load(last - 1), Load(&kLastUnits[rest]), bad) - (16 - rest);
  }
  return TopBits(bad) == 0 ? bytes : kNotCounted;
}

// Encodes sixteen units that are eight surrogate pairs; returns false for any others. A lane of 32 bits is one pair,
// the high surrogate in its low half. It becomes the four bytes of the character, the lead byte lowest, so all 32 bytes
// that are stored count.
ZR_AVX2 static bool EncodePairs(const WCHAR* at, unsigned char* to) noexcept {
  const __m256i pairs = Load(at);
  const __m256i tags = _mm256_and_si256(pairs, _mm256_set1_epi32(static_cast<int>(0xFC00FC00)));
  if (TopBits(_mm256_cmpeq_epi32(tags, _mm256_set1_epi32(static_cast<int>(0xDC00D800)))) != 0xFFFFFFFF) return false;
  const __m256i high = _mm256_and_si256(pairs, _mm256_set1_epi32(0x3FF));
  const __m256i low = _mm256_and_si256(_mm256_srli_epi32(pairs, 16), _mm256_set1_epi32(0x3FF));
  const __m256i above = _mm256_or_si256(_mm256_slli_epi32(high, 10), low);
  const __m256i codePoints = _mm256_add_epi32(above, _mm256_set1_epi32(0x10000));
  // Six bits of the code point go to bits 0 to 5 of each byte: tails12 are bits 12 to 17, for the second byte.
  const __m256i tails12 = _mm256_and_si256(_mm256_srli_epi32(codePoints, 4), _mm256_set1_epi32(0x3F00));
  const __m256i tails6 = _mm256_and_si256(_mm256_slli_epi32(codePoints, 10), _mm256_set1_epi32(0x3F0000));
  const __m256i tails0 = _mm256_and_si256(_mm256_slli_epi32(codePoints, 24), _mm256_set1_epi32(0x3F000000));
  const __m256i leads =
      _mm256_or_si256(_mm256_srli_epi32(codePoints, 18), _mm256_set1_epi32(static_cast<int>(0x808080F0)));
  Store(to, _mm256_or_si256(_mm256_or_si256(leads, tails12), _mm256_or_si256(tails6, tails0)));
  return true;
}

// Stores the kept bytes of both halves: one byte for each of the `units` units in a half, and one for each bit of its
// key. Returns false, and stores nothing, if IsCovered does.
ZR_AVX2 static bool StoreKept(__m256i bytes, const Shuffles& shuffles, unsigned firstKey, unsigned secondKey,
                              std::size_t units, std::ptrdiff_t unitsLeft, unsigned char*& to,
                              const unsigned char* toEnd) noexcept {
  const std::size_t first = units + CountBits(firstKey), second = units + CountBits(secondKey);
  if (!IsCovered(first, second, unitsLeft, toEnd - to)) return false;
  StoreHalf(to, _mm_shuffle_epi8(_mm256_castsi256_si128(bytes), LoadHalf(&shuffles[firstKey])));
  StoreHalf(to + first, _mm_shuffle_epi8(_mm256_extracti128_si256(bytes, 1), LoadHalf(&shuffles[secondKey])));
  to += first + second;
  return true;
}

// Converts vectors that are all ASCII, as long as they come.
ZR_AVX2 static void NarrowAscii(const WCHAR*& at, const WCHAR* end, unsigned char*& to,
                                const unsigned char* toEnd) noexcept {
  while (end - at >= 32 && toEnd - to >= 32) {
    const __m256i first = Load(at), second = Load(at + 16);
    if (_mm256_testz_si256(_mm256_or_si256(first, second), EachUnit(0xFF80)) == 0) break;
    // Packing the halves separately leaves the quarters in the order 0 2 1 3; the permutation (0xD8) exchanges them.
    Store(to, _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8));
    at += 32;
    to += 32;
  }
}

// Each step looks at the next units and does what fits the longest character among them:
//
//     a surrogate among 8 units    eight pairs at once; if they aren't pairs, these units one by one
//     16 units below 0x800         one or two bytes each, in lanes of 16 bits
//     any other 8 units            one to three bytes each, in lanes of 32 bits
//
// After each step NarrowAscii takes a run of ASCII, if one follows.
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
      // The eighth unit may be a surrogate, which takes the ninth with it. Eight units never yield more than 32 bytes.
      // StoreCharacter stores only the bytes of the character, so nothing is left to cover.
      if (end - at < 10 || toEnd - to < 32) break;
      for (const WCHAR* const next = at + 8; at < next;) at += StoreCharacter(at, to);
      continue;
    }
    if (end - at >= 16) {
      const __m256i units = Load(at);
      if (_mm256_testz_si256(units, EachUnit(0xF800)) != 0) {
        // Two bytes per lane, the first in the low byte: 110aaaaa 10bbbbbb of a unit aaaaabbbbbb, or ASCII and a zero.
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
    // Three bytes per lane, the first in the lowest byte. The last byte of the character is always the third, so that
    // shorter characters lack the first, or the first two:
    //
    //     0x800 and above    1110aaaa 10bbbbbb 10cccccc
    //     0x80 to 0x7FF      -        110bbbbb 10cccccc
    //     ASCII              -        -        0ccccccc
    //
    // tails6 and tails0 are the bits 6 to 11 and 0 to 5 of the unit, moved to the second and the third byte.
    const __m256i units = _mm256_cvtepu16_epi32(narrow);
    const __m256i isBeyondAscii = _mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x7F));
    const __m256i isOfThree = _mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x7FF));
    const __m256i tails6 = _mm256_and_si256(_mm256_slli_epi32(units, 2), _mm256_set1_epi32(0x3F00));
    const __m256i tails0 = _mm256_and_si256(_mm256_slli_epi32(units, 16), _mm256_set1_epi32(0x3F0000));
    const __m256i leads3 = _mm256_or_si256(_mm256_srli_epi32(units, 12), _mm256_set1_epi32(0x8080E0));
    const __m256i leads2 = _mm256_andnot_si256(isOfThree, _mm256_set1_epi32(0x4000));  // 10 becomes 11: a lead byte
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

#endif
