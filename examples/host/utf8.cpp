#include "host/utf8.h"

// What a first byte says. The second byte's range is where overlong forms, surrogates and too large values are told
// from good ones; all further bytes are 0x80 to 0xBF.
struct Lead {
  std::size_t length;
  char32_t bits;  // of the first byte that belong to the value
  unsigned char first, last;
  unsigned char secondFirst, secondLast;
};

// clang-format off
static constexpr Lead kLeads[] = {
    {1, 0x7F, 0x00, 0x7F, 0x80, 0xBF},
    {2, 0x1F, 0xC2, 0xDF, 0x80, 0xBF},
    {3, 0x0F, 0xE0, 0xE0, 0xA0, 0xBF},
    {3, 0x0F, 0xE1, 0xEC, 0x80, 0xBF},
    {3, 0x0F, 0xED, 0xED, 0x80, 0x9F},
    {3, 0x0F, 0xEE, 0xEF, 0x80, 0xBF},
    {4, 0x07, 0xF0, 0xF0, 0x90, 0xBF},
    {4, 0x07, 0xF1, 0xF3, 0x80, 0xBF},
    {4, 0x07, 0xF4, 0xF4, 0x80, 0x8F},
};
// clang-format on

struct Decoded {
  char32_t codePoint = 0;
  std::size_t length = 0;  // 0: not UTF-8
};

static Decoded DecodeOne(std::string_view bytes) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  for (const Lead& lead : kLeads) {
    if (byteAt(0) < lead.first || byteAt(0) > lead.last) continue;
    if (bytes.size() < lead.length) return {};
    char32_t codePoint = byteAt(0) & lead.bits;
    for (std::size_t i = 1; i < lead.length; ++i) {
      const unsigned char least = i == 1 ? lead.secondFirst : 0x80;
      const unsigned char most = i == 1 ? lead.secondLast : 0xBF;
      if (byteAt(i) < least || byteAt(i) > most) return {};
      codePoint = (codePoint << 6) | (byteAt(i) & 0x3Fu);
    }
    return {codePoint, lead.length};
  }
  return {};
}

Utf16Text FromUtf8(std::string_view bytes) {
  Utf16Text text;
  text.units.reserve(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    const Decoded one = DecodeOne(bytes.substr(at));
    if (one.length == 0) {
      text.faultAt = at;
      return text;
    }
    at += one.length;
    if (one.codePoint < 0x10000) {
      text.units += static_cast<char16_t>(one.codePoint);
    } else {
      text.units += static_cast<char16_t>(0xD800 + ((one.codePoint - 0x10000) >> 10));
      text.units += static_cast<char16_t>(0xDC00 + ((one.codePoint - 0x10000) & 0x3FF));
    }
  }
  return text;
}

std::string ToUtf8(std::u16string_view units) {
  std::string bytes;
  bytes.reserve(units.size());
  const auto append = [&](char32_t byte) { bytes += static_cast<char>(static_cast<unsigned char>(byte)); };
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t codePoint = units[i];
    if ((codePoint & 0xF800u) == 0xD800u) {
      const bool isPair = codePoint < 0xDC00 && i + 1 < units.size() && (units[i + 1] & 0xFC00u) == 0xDC00u;
      codePoint = isPair ? 0x10000 + ((codePoint - 0xD800) << 10) + (units[++i] - 0xDC00u) : 0xFFFD;
    }
    if (codePoint < 0x80) {
      append(codePoint);
      continue;
    }
    if (codePoint < 0x800) {
      append(0xC0 | (codePoint >> 6));
    } else {
      if (codePoint < 0x10000) {
        append(0xE0 | (codePoint >> 12));
      } else {
        append(0xF0 | (codePoint >> 18));
        append(0x80 | ((codePoint >> 12) & 0x3F));
      }
      append(0x80 | ((codePoint >> 6) & 0x3F));
    }
    append(0x80 | (codePoint & 0x3F));
  }
  return bytes;
}
