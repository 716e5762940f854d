// A string into the caller's buffer as 16-bit text, UTF-32 or UTF-8, with a size query through the in-out capacity.
//
// The sizes told and the texts written follow different rules for lone surrogates, and each writer has its own idea of
// a buffer that is too small or too large. All of it is what callers rely on.

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "platform/unicode_forms.h"
#include "text/counted_string.h"
#include "text/utf8_vectors.h"
#include "zrcore/unicode.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

static constexpr int32_t kQuery = -1;

// What all four check before they look at the text.
static bool AreArgumentsGood(ZRSTR source, int32_t length, const void* buffer, const int32_t* capacity) noexcept {
  if (length == 0 || source == nullptr || capacity == nullptr) return false;
  return *capacity >= kQuery && length >= -1 && (buffer != nullptr || *capacity == kQuery);
}

static std::size_t SourceLength(ZRSTR source, int32_t length) noexcept {
  return length == -1 ? StringLen(source) : static_cast<std::size_t>(length);
}

static ZRRESULT AnswerQuery(int32_t* capacity, std::size_t units) noexcept {
  *capacity = static_cast<int32_t>(static_cast<uint32_t>(units));
  return ZR_R_OK;
}

// ---- 16-bit text ---------------------------------------------------------------------------------------------------

static ZRRESULT WriteUtf16(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) noexcept {
  if (!AreArgumentsGood(source, length, buffer, capacity)) return ZR_R_INVALID_ARGUMENTS;
  if (length == std::numeric_limits<int32_t>::max()) return ZR_R_INVALID_ARGUMENTS;  // no room to count a terminator
  const std::size_t units = SourceLength(source, length);
  if (*capacity == kQuery) return AnswerQuery(capacity, units + 1);
  const auto room = static_cast<std::size_t>(*capacity);
  const std::size_t copied = std::min(room, units);
  std::memcpy(buffer, source, copied * sizeof(WCHAR));
  std::memset(buffer + copied, 0, (room - copied) * sizeof(WCHAR));
  return ZR_R_OK;
}

// ---- UTF-32 --------------------------------------------------------------------------------------------------------

static std::size_t CountCodePoints(const WCHAR* at, const WCHAR* end) noexcept {
  std::size_t count = 0;
  for (; at < end; ++at) {
    if (!IsSurrogate(*at)) {
      ++count;
    } else if (at + 1 == end) {
      return 0;
    } else if (IsHighSurrogate(*at) && IsLowSurrogate(at[1])) {
      ++count;
      ++at;
    }
  }
  return count;
}

static ZRRESULT WriteCodePoints(const WCHAR* at, const WCHAR* end, char32_t* to, std::size_t capacity) noexcept {
  std::size_t steps = 0;
  while (at < end) {
    if (!IsSurrogate(*at)) {
      *to++ = *at++;
    } else if (at + 1 == end) {
      return capacity == 0 ? ZR_R_OK : ZR_R_FAILED;
    } else {
      if (IsHighSurrogate(*at) && IsLowSurrogate(at[1])) *to++ = MergeUnits(at[0], at[1]);
      at += 2;
    }
    if (++steps == capacity) break;
  }
  return steps == capacity ? ZR_R_OK : ZR_R_FAILED;
}

// ---- UTF-8 ---------------------------------------------------------------------------------------------------------

#if defined(__SSE2__)
static __m128i LoadUnits(const WCHAR* at) noexcept { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }
static __m128i Each(int unit) noexcept { return _mm_set1_epi16(static_cast<int16_t>(unit)); }
static __m128i IsZero(__m128i units) noexcept { return _mm_cmpeq_epi16(units, _mm_setzero_si128()); }

// Bits that are set in no ASCII unit.
static __m128i BeyondAscii(__m128i units) noexcept { return _mm_and_si128(units, Each(0xFF80)); }

// Counts from `at` while all surrogates stand in pairs, and moves `at` behind what is counted: at most seven units, and
// a high surrogate that a vector's end has cut off its partner, are left.
static std::size_t CountVectors(const WCHAR*& at, const WCHAR* end) noexcept {
  std::size_t bytes = 0;
  unsigned highBefore = 0;  // both bits of the last unit of the vector before, if that is a high surrogate
  while (end - at >= 8) {
    if (end - at >= 32 && highBefore == 0) {
      const __m128i all = _mm_or_si128(_mm_or_si128(LoadUnits(at), LoadUnits(at + 8)),
                                       _mm_or_si128(LoadUnits(at + 16), LoadUnits(at + 24)));
      if (_mm_movemask_epi8(IsZero(BeyondAscii(all))) == 0xFFFF) {
        bytes += 32;
        at += 32;
        continue;
      }
    }
    // Three bytes a unit, less one below 0x800, less one more below 0x80; each half of a pair has two.
    __m128i less = _mm_setzero_si128();
    const WCHAR* const vectorsEnd = at + (std::min<std::ptrdiff_t>(end - at, 32) & ~std::ptrdiff_t{7});
    const WCHAR* const start = at;
    for (; at < vectorsEnd; at += 8) {
      const __m128i units = LoadUnits(at);
      const __m128i kind = _mm_and_si128(units, Each(0xFC00));
      const __m128i isHigh = _mm_cmpeq_epi16(kind, Each(0xD800)), isLow = _mm_cmpeq_epi16(kind, Each(0xDC00));
      const auto high = static_cast<unsigned>(_mm_movemask_epi8(isHigh));
      const auto low = static_cast<unsigned>(_mm_movemask_epi8(isLow));
      if (low != ((high << 2 | highBefore) & 0xFFFF)) break;
      highBefore = high >> 14;
      const __m128i below800 = IsZero(_mm_and_si128(units, Each(0xF800))), below80 = IsZero(BeyondAscii(units));
      less = _mm_add_epi16(less, _mm_add_epi16(_mm_add_epi16(below800, below80), _mm_or_si128(isHigh, isLow)));
    }
    __m128i sum = _mm_madd_epi16(less, Each(-1));
    sum = _mm_add_epi32(sum, _mm_srli_si128(sum, 8));
    sum = _mm_add_epi32(sum, _mm_srli_si128(sum, 4));
    bytes += static_cast<std::size_t>((at - start) * 3 - _mm_cvtsi128_si32(sum));
    if (at < vectorsEnd) break;
  }
  if (highBefore != 0) {
    --at;
    bytes -= 2;
  }
  return bytes;
}
#else
static std::size_t CountVectors(const WCHAR*&, const WCHAR*) noexcept { return 0; }
#endif

static std::size_t CountUtf8(const WCHAR* at, const WCHAR* end) noexcept {
  if (const auto length = static_cast<std::size_t>(end - at); g_hasAvx2 && length >= kFewestUnits) {
    if (const std::size_t bytes = CountUtf8Avx2(at, length); bytes != kNotCounted) return bytes;
  }
  std::size_t bytes = CountVectors(at, end);
  for (; at < end; ++at) {
    if (!IsSurrogate(*at)) {
      bytes += SequenceSize(*at);
    } else if (at + 1 == end) {
      return 0;
    } else if (IsHighSurrogate(*at) && IsLowSurrogate(at[1])) {
      bytes += 4;
      ++at;
    }
  }
  return bytes;
}

// One character from `at`, which is not a surrogate in the last place; answers its code point and moves `at` behind it.
static char32_t ReadMerged(const WCHAR*& at) noexcept {
  const WCHAR unit = *at++;
  return IsSurrogate(unit) ? MergeUnits(unit, *at++) : char32_t{unit};
}

#if defined(__SSE2__)
// Stores sixteen units as bytes; those beyond ASCII as anything.
static void Narrow(const WCHAR* at, unsigned char* to) noexcept {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(LoadUnits(at), LoadUnits(at + 8)));
}

static unsigned OthersThanAscii(const WCHAR* at) noexcept {
  const __m128i isAscii = _mm_packs_epi16(IsZero(BeyondAscii(LoadUnits(at))), IsZero(BeyondAscii(LoadUnits(at + 8))));
  return static_cast<unsigned>(_mm_movemask_epi8(isAscii)) ^ 0xFFFF;
}

// Encodes in steps of a fixed sixteen units, as long as the end of neither side is near. The last unit of the text is
// not among those looked at, so each of them yields a byte at least, and nothing of the sixteen bytes stored at once
// lies behind what is written in the end.
static void EncodeVectors(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept {
  std::size_t taken = 0;  // of this step, by the pair before
  for (; end - at > 32 && toEnd - to >= 64; at += 16) {
    while (taken == 0 && end - at > 64 && toEnd - to >= 96 && (OthersThanAscii(at) | OthersThanAscii(at + 16)) == 0) {
      Narrow(at, to);
      Narrow(at + 16, to + 16);
      at += 32;
      to += 32;
    }
    unsigned others = OthersThanAscii(at) >> taken;
    while (taken < 16) {
      if ((others & 1) == 0) {
        Narrow(at + taken, to);
        const std::size_t ascii = others != 0 ? static_cast<std::size_t>(std::countr_zero(others)) : 16 - taken;
        to += ascii;
        taken += ascii;
        others >>= ascii;
        if (others == 0) break;
      }
      const std::size_t units = StoreCharacter(at + taken, to);
      taken += units;
      others >>= units;
    }
    taken -= 16;
  }
  at += taken;
}
#else
static void EncodeVectors(const WCHAR*&, const WCHAR*, unsigned char*&, const unsigned char*) noexcept {}
#endif

// Writes at most `limit` bytes and answers how many; 0 if it comes to a surrogate in the last place.
static std::size_t EncodeUtf8(const WCHAR* at, const WCHAR* end, unsigned char* buffer, std::size_t limit) noexcept {
  unsigned char* to = buffer;
  unsigned char* const toEnd = buffer + limit;
  if (g_hasAvx2) EncodeAvx2(at, end, to, toEnd);
  EncodeVectors(at, end, to, toEnd);
  while (at < end && to < toEnd) {
#if defined(__SSE2__)
    if (*at < 0x80 && end - at >= 16 && toEnd - to >= 16) {
      const unsigned others = OthersThanAscii(at);
      if (others == 0 || end - at > 16) {
        Narrow(at, to);
        const int ascii = std::countr_zero(others | 0x10000);
        at += ascii;
        to += ascii;
        continue;
      }
    }
    if (*at >= 0x80 && end - at >= 2 && toEnd - to >= 4) {
      at += StoreCharacter(at, to);
      continue;
    }
#endif
    if (*at < 0x80) {
      *to++ = static_cast<unsigned char>(*at++);
      continue;
    }
    if (IsSurrogate(*at) && at + 1 == end) return 0;
    const char32_t codePoint = ReadMerged(at);
    unsigned char sequence[kMostSequenceBytes] = {};
    const std::size_t size = SequenceSize(codePoint);
    StoreSequence(sequence, codePoint, size);
    for (std::size_t index = 0; index < size && to < toEnd; ++index) *to++ = sequence[index];
  }
  return static_cast<std::size_t>(to - buffer);
}

// ---- The exports ---------------------------------------------------------------------------------------------------

ZRRESULT ZrCreateWCHARfromZRSTR(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) noexcept {
  return WriteUtf16(source, length, buffer, capacity);
}

ZRRESULT ZrCreateUTF16fromZRSTR(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) noexcept {
  return WriteUtf16(source, length, buffer, capacity);
}

ZRRESULT ZrCreateUTF32fomZRSTR(ZRSTR source, int32_t length, char32_t* buffer, int32_t* capacity) noexcept {
  if (!AreArgumentsGood(source, length, buffer, capacity)) return ZR_R_INVALID_ARGUMENTS;
  const WCHAR* const end = source + SourceLength(source, length) + 1;  // the terminator too
  if (*capacity == kQuery) return AnswerQuery(capacity, CountCodePoints(source, end));
  return WriteCodePoints(source, end, buffer, static_cast<std::size_t>(*capacity));
}

ZRRESULT ZrCreateUTF8fromZRSTR(ZRSTR source, int32_t length, char* buffer, int32_t* capacity) noexcept {
  if (!AreArgumentsGood(source, length, buffer, capacity)) return ZR_R_INVALID_ARGUMENTS;
  const WCHAR* const end = source + SourceLength(source, length);
  if (*capacity == kQuery) return AnswerQuery(capacity, CountUtf8(source, end) + 1);
  if (*capacity == 0) return ZR_R_FAILED;
  const auto limit = static_cast<std::size_t>(*capacity) - 1;
  if (EncodeUtf8(source, end, reinterpret_cast<unsigned char*>(buffer), limit) != limit) return ZR_R_FAILED;
  buffer[limit] = 0;
  return ZR_R_OK;
}
