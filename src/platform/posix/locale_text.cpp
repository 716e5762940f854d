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

// What the locale answers has to be a unit again.
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

// Two passes of the same loop: with `size` 0 it only counts.
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
