// Strings of UTF-32 and UTF-8: one pass counts the units, a block of exactly that size is made, a second pass fills it.
//
// For UTF-8 the first pass is also the only check: every lead byte is followed by its continuation bytes, unless the
// text ends before, and no other byte is a continuation byte. The second pass relies on that and doesn't look again.

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

static constexpr std::size_t kMostUnits = std::numeric_limits<int32_t>::max();

static ZRRESULT StoreSharedEmpty(ZRSTR* string) noexcept {
  *string = ShareString(nullptr);
  return ZR_R_OK;
}

// ---- UTF-8: counting -----------------------------------------------------------------------------------------------

// The continuation bytes that what stands in front of `at` still asks for, given that all of it is good.
static std::size_t NeededAt(const unsigned char* text, std::size_t at) noexcept {
  for (std::size_t back = 1; back <= 3 && back <= at; ++back) {
    const unsigned char byte = text[at - back];
    if (byte < 0x80) return 0;
    if (byte >= 0xC0) return TailBytes(byte) >= back ? TailBytes(byte) - back + 1 : 0;
  }
  return 0;
}

#if defined(__SSE2__)
// Counts and checks whole vectors. A byte has to be a continuation byte if the byte before it leads two or more, the
// one before that three or more, or the third four, and else must not be one. With that, a text has a unit for each
// byte that is no continuation byte, and one more for each that leads four.
class CVectorCount {
 public:
  // `count` vectors from `at` on; none, if they are all ASCII and nothing is asked for, costs less.
  bool AddAscii64(const unsigned char* text, std::size_t at) noexcept {
    const __m128i all = _mm_or_si128(_mm_or_si128(Load(text + at), Load(text + at + 16)),
                                     _mm_or_si128(Load(text + at + 32), Load(text + at + 48)));
    if (_mm_movemask_epi8(all) != 0 || NeededAt(text, at) != 0) return false;
    units_ += 64;
    return true;
  }

  void Add(const unsigned char* text, std::size_t at, std::size_t vectors) noexcept {
    __m128i units = _mm_set1_epi8(static_cast<char>(vectors));  // a byte for each column; at most twice `vectors`
    for (const std::size_t end = at + vectors * 16; at < end; at += 16) {
      const __m128i bytes = Load(text + at);
      // In front of the text stands nothing that asks for anything.
      const __m128i before1 = at != 0 ? Load(text + at - 1) : _mm_slli_si128(bytes, 1);
      const __m128i before2 = at != 0 ? Load(text + at - 2) : _mm_slli_si128(bytes, 2);
      const __m128i before3 = at != 0 ? Load(text + at - 3) : _mm_slli_si128(bytes, 3);
      const __m128i asked = _mm_or_si128(_mm_subs_epu8(before1, Each(0xBF)),
                                         _mm_or_si128(_mm_subs_epu8(before2, Each(0xDF)), AboveEF(before3)));
      const __m128i isNotAsked = _mm_cmpeq_epi8(asked, _mm_setzero_si128());
      const __m128i isTail = _mm_cmplt_epi8(bytes, Each(0xC0));  // as signed bytes those from 0x80 to 0xBF
      bad_ = _mm_or_si128(bad_, _mm_cmpeq_epi8(isNotAsked, isTail));
      const __m128i leadsFour = _mm_min_epu8(AboveEF(bytes), Each(1));
      units = _mm_add_epi8(_mm_add_epi8(units, isTail), leadsFour);
    }
    const __m128i halves = _mm_sad_epu8(units, _mm_setzero_si128());
    units_ += static_cast<std::size_t>(_mm_cvtsi128_si32(halves) + _mm_extract_epi16(halves, 4));
  }

  bool IsGood() const noexcept { return _mm_movemask_epi8(bad_) == 0; }
  std::size_t Units() const noexcept { return units_; }

 private:
  static __m128i Load(const unsigned char* at) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  }
  static __m128i Each(int byte) noexcept { return _mm_set1_epi8(static_cast<char>(byte)); }
  static __m128i AboveEF(__m128i bytes) noexcept { return _mm_subs_epu8(bytes, Each(0xEF)); }

  __m128i bad_ = _mm_setzero_si128();
  std::size_t units_ = 0;
};
#endif

// A short text that begins in ASCII is mostly ASCII, and done before wide vectors are set up.
static bool PrefersAvx2(const unsigned char* text, std::size_t size) noexcept {
  return g_hasAvx2 && size >= kFewestBytes && (size >= 128 || *text >= 0x80);
}

// The units of the text, or kNotCounted if it is bad.
static std::size_t CountUnits(const unsigned char* text, std::size_t size) noexcept {
  if (PrefersAvx2(text, size)) return CountUnitsAvx2(text, size);
  std::size_t at = 0, units = 0;
#if defined(__SSE2__)
  CVectorCount count;
  for (; size - at >= 64; at += 64) {
    if (!count.AddAscii64(text, at)) count.Add(text, at, 4);
  }
  if (const std::size_t vectors = (size - at) / 16; vectors != 0) {
    count.Add(text, at, vectors);
    at += vectors * 16;
  }
  if (!count.IsGood()) return kNotCounted;
  units = count.Units();
#endif
  for (std::size_t needed = NeededAt(text, at); at < size; ++at) {
    const unsigned char byte = text[at];
    const bool isTail = byte >= 0x80 && byte < 0xC0;
    if (isTail != (needed != 0)) return kNotCounted;
    if (isTail) {
      --needed;
    } else {
      units += byte < 0xF0 ? 1 : 2;
      needed = byte < 0x80 ? 0 : TailBytes(byte);
    }
  }
  return units;
}

// ---- UTF-8: decoding -----------------------------------------------------------------------------------------------

static WCHAR* StoreCodePoint(WCHAR* to, char32_t codePoint) noexcept {
  if (codePoint > 0xFFFF) return StorePair(to, codePoint);
  *to = static_cast<WCHAR>(codePoint);
  return to + 1;
}

// One whole sequence; answers how many bytes it had. Each length is a branch of its own: where the next sequence begins
// is then a guess that is mostly right, and not the end of a chain of computation.
static std::size_t DecodeSequence(const unsigned char* at, WCHAR*& to) noexcept {
  if (*at < 0xE0) {
    *to++ = static_cast<WCHAR>(SequenceValue(at, 1));
    return 2;
  }
  if (*at < 0xF0) {
    *to++ = static_cast<WCHAR>(SequenceValue(at, 2));
    return 3;
  }
  to = StoreCodePoint(to, SequenceValue(at, 3));
  return 4;
}

#if defined(__SSE2__)
// Stores sixteen bytes as units. Where they are not all ASCII, what follows the first others is stored over again.
static void Widen(const unsigned char* at, WCHAR* to) noexcept {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 8), _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}

static unsigned BeyondAscii(const unsigned char* at) noexcept {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at))));
}

// Decodes in steps of a fixed sixteen bytes, so that the next vector is loaded while this one is still being taken
// apart; a sequence may reach into the next step. Stops where fewer than two vectors are left on either side.
static void DecodeVectors(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept {
  std::size_t taken = 0;  // of this step, by the sequence before
  for (; end - at >= 32 && toEnd - to >= 32; at += 16) {
    while (taken == 0 && end - at >= 64 && toEnd - to >= 64 && (BeyondAscii(at) | BeyondAscii(at + 16)) == 0) {
      Widen(at, to);
      Widen(at + 16, to + 16);
      at += 32;
      to += 32;
    }
    unsigned others = BeyondAscii(at) >> taken;
    while (taken < 16) {
      if ((others & 1) == 0) {
        Widen(at + taken, to);
        const std::size_t ascii = others != 0 ? static_cast<std::size_t>(std::countr_zero(others)) : 16 - taken;
        to += ascii;
        taken += ascii;
        others >>= ascii;
        if (others == 0) break;
      }
      const std::size_t bytes = DecodeSequence(at + taken, to);
      taken += bytes;
      others >>= bytes;
    }
    taken -= 16;
  }
  at += taken;
}
#else
static void DecodeVectors(const unsigned char*&, const unsigned char*, WCHAR*&, const WCHAR*) noexcept {}
#endif

// Fills [to, toEnd), which is what the text was counted to yield, and answers the place behind the last unit stored.
static WCHAR* Decode(const unsigned char* at, const unsigned char* end, WCHAR* to, const WCHAR* toEnd) noexcept {
  if (PrefersAvx2(at, static_cast<std::size_t>(end - at))) DecodeAvx2(at, end, to, toEnd);
  DecodeVectors(at, end, to, toEnd);
  while (at < end && to < toEnd) {
    if (*at < 0x80) {
#if defined(__SSE2__)
      if (end - at >= 16 && toEnd - to >= 16) {
        Widen(at, to);
        const int ascii = std::countr_zero(BeyondAscii(at) | 0x10000);
        at += ascii;
        to += ascii;
        continue;
      }
#endif
      *to++ = *at++;
      continue;
    }
    // A sequence that lacks one byte takes the one behind the text.
    if (static_cast<std::size_t>(end - at) < TailBytes(*at)) break;
    at += DecodeSequence(at, to);
  }
  return to;
}

// ---- The exports ---------------------------------------------------------------------------------------------------

ZRRESULT ZrCreateZRSTRfromUTF32(const char32_t* text, int32_t length, ZRSTR* string) noexcept {
  if (text == nullptr || string == nullptr || length < -1) return ZR_R_INVALID_ARGUMENTS;
  auto size = static_cast<std::size_t>(length);
  if (length == -1) {
    for (size = 0; text[size] != 0;) ++size;
  }
  if (size == 0) return StoreSharedEmpty(string);

  std::size_t units = size;
  for (std::size_t at = 0; at < size; ++at) units += text[at] > 0xFFFF;
  if (units > kMostUnits) return ZR_R_INVALID_ARGUMENTS;
  ZRSTR made = *string = AllocateText(units);
  if (made == nullptr) return ZR_R_NO_MEMORY;
  for (std::size_t at = 0; at < size; ++at) made = StoreCodePoint(made, text[at]);
  return ZR_R_OK;
}

ZRRESULT ZrCreateZRSTRfromUTF8(const char* text, int32_t length, ZRSTR* string) noexcept {
  if (text == nullptr || string == nullptr || length < -1) return ZR_R_INVALID_ARGUMENTS;
  const std::size_t size = length == -1 ? std::strlen(text) : static_cast<std::size_t>(length);
  if (size == 0) return StoreSharedEmpty(string);

  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  std::size_t units = CountUnits(bytes, size);
  if (units == kNotCounted) units = 0;
  if (units > kMostUnits) return ZR_R_INVALID_ARGUMENTS;
  ZRSTR made = *string = AllocateText(units);
  if (made == nullptr) return ZR_R_NO_MEMORY;
  WCHAR* const end = made + units;
  WCHAR* const stored = Decode(bytes, bytes + size, made, end);
  std::fill(stored, end, WCHAR{0});
  return stored == end ? ZR_R_OK : ZR_R_FAILED;
}

ZRRESULT ZrUTF8toZRSTR(const char* text, int32_t length, ZRSTR* string) noexcept {
  if (length == 0) return ZR_R_INVALID_ARGUMENTS;
  return ZrCreateZRSTRfromUTF8(text, length, string);
}
