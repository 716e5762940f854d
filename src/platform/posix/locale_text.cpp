// Letter case and the decimal point from the C library, and UTF-8 by the library's own arithmetic.
//
// The C library's functions for characters use 32-bit code points. A code unit is passed as the code point of the same
// value, so surrogates have no case.

#include "platform/locale_text.h"

#include <langinfo.h>

#include <clocale>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <limits>

#include "platform/posix/utf8_text.h"
#include "platform/unicode_forms.h"

static locale_t Native(CharacterLocale locale) noexcept { return static_cast<locale_t>(locale); }

CharacterLocale PlatformOpenCharacterLocale() noexcept {
  const locale_t none{};
  const locale_t users = newlocale(LC_CTYPE_MASK, "", none);
  return users != none ? users : newlocale(LC_CTYPE_MASK, "C", none);
}

void PlatformCloseCharacterLocale(CharacterLocale locale) noexcept {
  if (locale != nullptr) freelocale(Native(locale));
}

// Returns the result of a locale's mapping of a unit. If it doesn't fit a unit, returns the unit itself: the cast alone
// would produce a different character.
static WCHAR UnitOr(WCHAR unit, std::wint_t mapped) noexcept {
  return mapped <= std::numeric_limits<uint16_t>::max() ? static_cast<WCHAR>(mapped) : unit;
}

WCHAR PlatformToLower(CharacterLocale locale, WCHAR unit) noexcept {
  if (locale == nullptr) return unit >= 'A' && unit <= 'Z' ? static_cast<WCHAR>(unit + ('a' - 'A')) : unit;
  return UnitOr(unit, towlower_l(unit, Native(locale)));
}

WCHAR PlatformToUpper(CharacterLocale locale, WCHAR unit) noexcept {
  if (locale == nullptr) return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - ('a' - 'A')) : unit;
  return UnitOr(unit, towupper_l(unit, Native(locale)));
}

// nl_langinfo, because localeconv need not be safe while another thread calls it. Both use the locale of the calling
// thread. The point is spelt in the locale's own encoding, which mbrtowc decodes; the bytes must be one character.
CDecimalPoint PlatformDecimalPoint() noexcept {
  const char* spelling = nl_langinfo(RADIXCHAR);
  if (spelling[0] == '.' && spelling[1] == 0) return {'.', {'.'}};
  CDecimalPoint point{'.', {'.'}};
  const std::size_t length = std::strlen(spelling);
  std::mbstate_t state{};
  wchar_t character = 0;
  if (length >= point.bytes.size() || std::mbrtowc(&character, spelling, length, &state) != length) return point;
  std::memcpy(point.bytes.data(), spelling, length + 1);
  point.unit = UnitOr('.', static_cast<std::wint_t>(character));
  return point;
}

// The same loop counts, if `size` is 0, and writes. The terminator is converted like any other unit and ends the loop.
// The unit after the terminator must not be read, so zero is passed in its place.
int32_t PlatformTextToUtf8(const WCHAR* text, char* buffer, int32_t size) noexcept {
  const bool isQuery = size == 0;
  if (size < 0 || (!isQuery && (buffer == nullptr || static_cast<const void*>(buffer) == text))) return 0;
  const auto capacity = static_cast<std::size_t>(isQuery ? std::numeric_limits<int32_t>::max() : size);
  std::size_t written = 0;
  for (const WCHAR* at = text;;) {
    const bool isTerminator = *at == 0;
    const auto character = ReadUtf16Character(*at, isTerminator ? WCHAR{0} : at[1]);
    const std::size_t bytes = SequenceSize(character.codePoint);
    if (bytes > capacity - written) return 0;
    if (!isQuery) StoreSequence(reinterpret_cast<unsigned char*>(buffer) + written, character.codePoint, bytes);
    written += bytes;
    if (isTerminator) return static_cast<int32_t>(written);
    at += character.units;
  }
}
