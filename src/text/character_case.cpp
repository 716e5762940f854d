// Letter case: filling the tables, comparing without case, changing the case of a text in place; and the exports that
// do so with the tables of the process's default locale.

#include "text/character_case.h"

#include "text/code_units.h"
#include "zrcore/unicode.h"

void CCharacterCase::Read() {
  locale_ = PlatformOpenCharacterLocale();
  lower_.Read([this](WCHAR unit) { return PlatformToLower(locale_, unit); }, 'A', 'a' - 'A');
  upper_.Read([this](WCHAR unit) { return PlatformToUpper(locale_, unit); }, 'a', 'A' - 'a');
  isRead_.store(true, std::memory_order_release);
}

#if defined(__SSE2__)
static __m128i Each(int unit) noexcept { return _mm_set1_epi16(static_cast<int16_t>(unit)); }

// All bits of those units that lie from `first` to `last`, two ASCII letters. (As signed numbers the units from 0x8000
// up are negative, and outside too.)
static __m128i Between(__m128i units, char first, char last) noexcept {
  return _mm_and_si128(_mm_cmpgt_epi16(units, Each(first - 1)), _mm_cmplt_epi16(units, Each(last + 1)));
}

static __m128i AsciiLower(__m128i units) noexcept {
  return _mm_or_si128(units, _mm_and_si128(Between(units, 'A', 'Z'), Each(0x20)));
}

// Whether a vector read at `text` stays within a page, and so within what is mapped.
static bool StaysInPage(const WCHAR* text) noexcept {
  return reinterpret_cast<std::uintptr_t>(text) % 4096 <= 4096 - 16;
}

// Eight units at a time, up to the end of the left text or the first unit that only the table can tell to be equal.
// Units that are equal once ASCII letters are folded are equal by the table, whatever it says of the others.
ZR_READS_WHOLE_VECTORS static std::size_t EqualAhead(const WCHAR* left, const WCHAR* right) noexcept {
  std::size_t at = 0;
  while (StaysInPage(left + at) && StaysInPage(right + at)) {
    const __m128i leftUnits = _mm_loadu_si128(reinterpret_cast<const __m128i*>(left + at));
    const __m128i rightUnits = _mm_loadu_si128(reinterpret_cast<const __m128i*>(right + at));
    const __m128i areEqual = _mm_cmpeq_epi16(AsciiLower(leftUnits), AsciiLower(rightUnits));
    const __m128i goOn = _mm_andnot_si128(_mm_cmpeq_epi16(leftUnits, _mm_setzero_si128()), areEqual);
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(goOn));
    if (mask != 0xFFFF) return at + static_cast<std::size_t>(std::countr_one(mask)) / sizeof(WCHAR);
    at += 8;
  }
  return at;
}
#endif

int32_t CompareNoCase(const CCaseMap& lower, const WCHAR* left, const WCHAR* right) noexcept {
  for (std::size_t at = 0;;) {
#if defined(__SSE2__)
    if (lower.IsAsciiPlain()) at += EqualAhead(left + at, right + at);
#endif
    // A few units by the table, so that neither a page's end nor an accented letter is looked at in vain each time.
    for (const std::size_t end = at + 8; at < end; ++at) {
      const int32_t order = int32_t{lower[left[at]]} - int32_t{lower[right[at]]};
      if (order != 0 || left[at] == 0) return order;
    }
  }
}

// The letters from `first` to `last` are those that a plain map changes, all by the bit 0x20.
static void ChangeCase(const CCaseMap& map, WCHAR* text, char first, char last) noexcept {
  const std::size_t length = TerminatedLength(text);
  std::size_t at = 0;
#if defined(__SSE2__)
  for (; map.IsAsciiPlain() && length - at >= 8; at += 8) {
    auto* const vector = reinterpret_cast<__m128i*>(text + at);
    const __m128i units = _mm_loadu_si128(vector);
    const __m128i beyondAscii = _mm_and_si128(units, Each(0xFF80));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(beyondAscii, _mm_setzero_si128())) == 0xFFFF) {
      _mm_storeu_si128(vector, _mm_xor_si128(units, _mm_and_si128(Between(units, first, last), Each(0x20))));
    } else {
      for (std::size_t unit = at; unit < at + 8; ++unit) text[unit] = map[text[unit]];
    }
  }
#else
  (void)first, (void)last;
#endif
  for (; at < length; ++at) text[at] = map[text[at]];
}

// ---- The exports ---------------------------------------------------------------------------------------------------

int32_t ZrWCHARCompareNoCase(const WCHAR* left, const WCHAR* right) noexcept {
  if (left == nullptr || right == nullptr) return left == right ? 0 : left == nullptr ? -1 : 1;
  return CompareNoCase(g_characterCase.Lower(), left, right);
}

ZRRESULT ZrWCHARToLower(WCHAR* text) noexcept {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  ChangeCase(g_characterCase.Lower(), text, 'A', 'Z');
  return ZR_R_OK;
}

ZRRESULT ZrWCHARToUpper(WCHAR* text) noexcept {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  ChangeCase(g_characterCase.Upper(), text, 'a', 'z');
  return ZR_R_OK;
}
