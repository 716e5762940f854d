#include "hostkit/text.h"

static constexpr std::size_t kLongest = 200;

zr::String TextOf(std::string_view utf8) {
  zr::Result<zr::String> text = zr::String::FromUtf8(utf8);
  if (text) return *std::move(text);
  std::string readable;
  for (const char byte : utf8) {
    if (static_cast<unsigned char>(byte) < 0x80) {
      readable += byte;
    } else {
      readable += "\xEF\xBF\xBD";
    }
  }
  return zr::String::FromUtf8(readable).Value();
}

std::string Shortened(std::string_view utf8) {
  if (utf8.size() <= kLongest) return std::string(utf8);
  std::size_t end = kLongest;
  while (end > 0 && (static_cast<unsigned char>(utf8[end]) & 0xC0) == 0x80) --end;  // not within a character
  return std::string(utf8.substr(0, end)) + "...";
}

std::string Quoted(std::string_view utf8) {
  const std::string text = Shortened(utf8);
  std::string quoted = "\"";
  for (std::size_t at = 0; at < text.size(); ++at) {
    auto unit = static_cast<unsigned char>(text[at]);
    const bool isTwoBytes = unit == 0xC2 && (text[at + 1] & 0xE0) == 0x80;  // U+0080 to U+009F
    if (isTwoBytes) unit = static_cast<unsigned char>(text[++at]);
    if (unit < 0x20 || unit == 0x7F || isTwoBytes) {
      quoted += {'\\', 'u', '0', '0', "0123456789abcdef"[unit >> 4], "0123456789abcdef"[unit & 0xF]};
    } else {
      quoted += text[at];
    }
  }
  return quoted + "\"";
}

std::string Quoted(const zr::String& text) { return Quoted(text.ToUtf8()); }
