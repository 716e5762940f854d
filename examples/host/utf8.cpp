// The strict check compares each character with a table of the legal byte sequences. The conversions use the library.

#include "host/utf8.h"

#include <zrcore/unicode.h>

#include <cstdint>
#include <limits>
#include <new>

// The legal bytes of a character, by its first byte. The range of the second byte excludes overlong forms, surrogates
// and values above U+10FFFF. All further bytes are 0x80 to 0xBF.
struct Lead {
  std::size_t length;
  unsigned char first, last;
  unsigned char secondFirst, secondLast;
};

// clang-format off
static constexpr Lead kLeads[] = {
    {1, 0x00, 0x7F, 0x80, 0xBF},
    {2, 0xC2, 0xDF, 0x80, 0xBF},
    {3, 0xE0, 0xE0, 0xA0, 0xBF},
    {3, 0xE1, 0xEC, 0x80, 0xBF},
    {3, 0xED, 0xED, 0x80, 0x9F},
    {3, 0xEE, 0xEF, 0x80, 0xBF},
    {4, 0xF0, 0xF0, 0x90, 0xBF},
    {4, 0xF1, 0xF3, 0x80, 0xBF},
    {4, 0xF4, 0xF4, 0x80, 0x8F},
};
// clang-format on

// Returns the length of the character at the start of `bytes`, which must not be empty; 0 if the bytes are not valid.
static std::size_t CharacterLength(std::string_view bytes) {
  const auto isIn = [&](std::size_t i, unsigned char least, unsigned char most) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    return byte >= least && byte <= most;
  };
  for (const Lead& lead : kLeads) {
    if (!isIn(0, lead.first, lead.last)) continue;
    if (bytes.size() < lead.length) return 0;
    if (lead.length > 1 && !isIn(1, lead.secondFirst, lead.secondLast)) return 0;
    for (std::size_t i = 2; i < lead.length; ++i) {
      if (!isIn(i, 0x80, 0xBF)) return 0;
    }
    return lead.length;
  }
  return 0;
}

std::size_t FindInvalidUtf8(std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t length = CharacterLength(bytes.substr(at));
    if (length == 0) return at;
    at += length;
  }
  return std::string_view::npos;
}

StringOwner FromUtf8(const std::string& bytes) {
  ZRSTR string = nullptr;
  const bool fits = bytes.size() <= std::numeric_limits<std::int32_t>::max();
  const bool isMade =
      fits && ZR_SUCCEEDED(ZrCreateZRSTRfromUTF8(bytes.c_str(), static_cast<std::int32_t>(bytes.size()), &string));
  StringOwner owner(string);
  if (!isMade) throw std::bad_alloc();
  return owner;
}

std::string ToUtf8(ZRSTR string) {
  const std::int32_t size = ZrZRSTRtoUTF8(string, nullptr, 0);  // includes the zero byte; 0 for a null string
  if (size <= 1) return {};
  std::string bytes(static_cast<std::size_t>(size), '\0');
  (void)ZrZRSTRtoUTF8(string, bytes.data(), size);
  bytes.pop_back();
  return bytes;
}
