// Raw copies of units, and UTF-8 in which U+FFFD replaces each lone surrogate.
//
// This UTF-8 is always well-formed, unlike the UTF-8 of unicode_to_buffer.cpp. The platform layer makes it, because
// Windows has a service for it. It reads a zero-terminated text, so a zero unit inside a string ends the result.

#include <cstring>

#include "platform/locale_text.h"
#include "zrcore/unicode.h"

// Copies exactly `count` units: no terminator is added, and no length is looked at. The areas may overlap.
static ZRRESULT CopyUnits(const WCHAR* source, WCHAR* destination, uint32_t count) noexcept {
  if (source == nullptr || destination == nullptr || count == 0) return ZR_R_INVALID_ARGUMENTS;
  std::memmove(destination, source, std::size_t{count} * sizeof(WCHAR));
  return ZR_R_OK;
}

int32_t ZrZRSTRtoUTF8(ZRSTR string, char* buffer, int32_t size) noexcept {
  return string != nullptr ? PlatformTextToUtf8(string, buffer, size) : 0;
}

ZRRESULT ZrCopyZRSTR2WCHAR(ZRSTR source, WCHAR* destination, uint32_t count) noexcept {
  return CopyUnits(source, destination, count);
}

ZRRESULT ZrCopyWCHAR2ZRSTR(const WCHAR* source, ZRSTR destination, uint32_t count) noexcept {
  return CopyUnits(source, destination, count);
}
