#include "platform/posix/utf8_text.h"

#include <cstdint>

static constexpr char32_t kReplacement = 0xFFFD;

static bool IsHighSurrogate(char32_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
static bool IsLowSurrogate(char32_t unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }

static void AppendUtf8(std::string& bytes, char32_t codePoint) {
  const auto tail = [codePoint](int shift) { return static_cast<char>(0x80 | (codePoint >> shift & 0x3F)); };
  if (codePoint < 0x80) {
    bytes += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    bytes += {static_cast<char>(0xC0 | codePoint >> 6), tail(0)};
  } else if (codePoint < 0x10000) {
    bytes += {static_cast<char>(0xE0 | codePoint >> 12), tail(6), tail(0)};
  } else {
    bytes += {static_cast<char>(0xF0 | codePoint >> 18), tail(12), tail(6), tail(0)};
  }
}

// Appends all of `text`; answers whether every surrogate had its partner.
static bool AppendText(std::string& bytes, std::u16string_view text) {
  bool wellFormed = true;
  for (std::size_t at = 0; at < text.size(); ++at) {
    char32_t codePoint = text[at];
    if (IsHighSurrogate(codePoint) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
      codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (text[++at] - 0xDC00u);
    } else if (IsHighSurrogate(codePoint) || IsLowSurrogate(codePoint)) {
      wellFormed = false;
      codePoint = kReplacement;
    }
    AppendUtf8(bytes, codePoint);
  }
  return wellFormed;
}

std::optional<std::string> ToUtf8(std::u16string_view text) {
  std::string bytes;
  if (!AppendText(bytes, text)) return std::nullopt;
  return bytes;
}

std::string ToUtf8Lossy(std::u16string_view text) {
  std::string bytes;
  (void)AppendText(bytes, text);  // the replacement shows
  return bytes;
}

std::u16string FromUtf8Lossy(std::string_view bytes) {
  std::u16string text;
  for (std::size_t at = 0; at < bytes.size();) {
    const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    const unsigned char lead = byteAt(at);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    char32_t codePoint = length == 1 ? lead : length == 0 ? kReplacement : lead & (0x7Fu >> length);
    std::size_t taken = length == 0 ? 1 : length;
    for (std::size_t tail = 1; tail < length; ++tail) {
      if (at + tail >= bytes.size() || (byteAt(at + tail) & 0xC0) != 0x80) {
        codePoint = kReplacement;
        taken = 1;
        break;
      }
      codePoint = codePoint << 6 | (byteAt(at + tail) & 0x3Fu);
    }
    const bool overlong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
    if (taken > 1 && (overlong || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))) {
      codePoint = kReplacement;
      taken = 1;
    }
    if (codePoint >= 0x10000) {
      text += {static_cast<char16_t>(0xD7C0 + (codePoint >> 10)), static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF))};
    } else {
      text += static_cast<char16_t>(codePoint);
    }
    at += taken;
  }
  return text;
}
