#include "platform/locale_text.h"

#include <langinfo.h>

#include <clocale>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <limits>

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

struct CSequence {
  unsigned char bytes[4];
  std::size_t size;
};

// The next character of a terminated text; moves `at` behind it, which is where it was if this is the terminator.
static CSequence TakeCharacter(const WCHAR*& at) noexcept {
  char32_t codePoint = *at;
  if (codePoint != 0) ++at;
  if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
    const bool isPair = codePoint <= 0xDBFF && *at >= 0xDC00 && *at <= 0xDFFF;
    codePoint = isPair ? 0x10000 + ((codePoint - 0xD800) << 10) + (*at++ - 0xDC00u) : 0xFFFD;
  }
  const auto lead = [codePoint](unsigned mark, int shift) {
    return static_cast<unsigned char>(mark | codePoint >> shift);
  };
  const auto tail = [codePoint](int shift) { return static_cast<unsigned char>(0x80 | (codePoint >> shift & 0x3F)); };
  if (codePoint < 0x80) return {{lead(0, 0)}, 1};
  if (codePoint < 0x800) return {{lead(0xC0, 6), tail(0)}, 2};
  if (codePoint < 0x10000) return {{lead(0xE0, 12), tail(6), tail(0)}, 3};
  return {{lead(0xF0, 18), tail(12), tail(6), tail(0)}, 4};
}

int32_t PlatformTextToUtf8(const WCHAR* text, char* buffer, int32_t size) noexcept {
  const bool isQuery = size == 0;
  if (size < 0 || (!isQuery && (buffer == nullptr || static_cast<const void*>(buffer) == text))) return 0;
  const auto room = static_cast<std::size_t>(isQuery ? std::numeric_limits<int32_t>::max() : size);
  std::size_t written = 0;
  for (const WCHAR* at = text;;) {
    const bool isTerminator = *at == 0;
    const CSequence sequence = TakeCharacter(at);
    if (sequence.size > room - written) return 0;
    if (!isQuery) std::memcpy(buffer + written, sequence.bytes, sequence.size);
    written += sequence.size;
    if (isTerminator) return static_cast<int32_t>(written);
  }
}
