// Letter case and the decimal point from the C runtime, UTF-8 from the system.
//
// A unit is mapped as a string of one unit, by the functions that map strings.

#include "platform/locale_text.h"

#include <windows.h>

#include <clocale>
#include <cstring>
#include <cwchar>

static _locale_t Native(CharacterLocale locale) noexcept { return static_cast<_locale_t>(locale); }

CharacterLocale PlatformOpenCharacterLocale() noexcept {
  const _locale_t users = _create_locale(LC_CTYPE, "");
  return users != nullptr ? users : _create_locale(LC_CTYPE, "C");
}

void PlatformCloseCharacterLocale(CharacterLocale locale) noexcept {
  if (locale != nullptr) _free_locale(Native(locale));
}

WCHAR PlatformToLower(CharacterLocale locale, WCHAR unit) noexcept {
  if (locale == nullptr) return unit >= 'A' && unit <= 'Z' ? static_cast<WCHAR>(unit + ('a' - 'A')) : unit;
  WCHAR text[] = {unit, 0};
  return _wcslwr_s_l(text, 2, Native(locale)) == 0 ? text[0] : unit;
}

WCHAR PlatformToUpper(CharacterLocale locale, WCHAR unit) noexcept {
  if (locale == nullptr) return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - ('a' - 'A')) : unit;
  WCHAR text[] = {unit, 0};
  return _wcsupr_s_l(text, 2, Native(locale)) == 0 ? text[0] : unit;
}

CDecimalPoint PlatformDecimalPoint() noexcept {
  const char* spelling = std::localeconv()->decimal_point;
  CDecimalPoint point{'.', {'.'}};
  if (spelling[0] == '.' && spelling[1] == 0) return point;
  const std::size_t length = std::strlen(spelling);
  std::mbstate_t state{};
  WCHAR unit = 0;
  if (length >= point.bytes.size() || std::mbrtowc(&unit, spelling, length, &state) != length) return point;
  std::memcpy(point.bytes.data(), spelling, length + 1);
  point.unit = unit;
  return point;
}

int32_t PlatformTextToUtf8(const WCHAR* text, char* buffer, int32_t size) noexcept {
  if (size == 0) return WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);  // `buffer` is ignored
  if (static_cast<const void*>(buffer) == text)
    return 0;  // the system refuses this, too, but not every emulation of it does
  return WideCharToMultiByte(CP_UTF8, 0, text, -1, buffer, size, nullptr, nullptr);
}
