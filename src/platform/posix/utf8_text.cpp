// UTF-8 to and from UTF-16 for the platform layer. Well-formed sequences are those in the table of RFC 3629, section 4:
// the shortest form of each code point up to U+10FFFF that isn't a surrogate.

#include "platform/posix/utf8_text.h"

#include "platform/unicode_forms.h"

static constexpr char32_t kReplacement = 0xFFFD;

CUtf16Character ReadUtf16Character(char16_t unit, char16_t next) noexcept {
  if (!IsSurrogate(unit)) return {unit, 1, true};
  if (!IsHighSurrogate(unit) || !IsLowSurrogate(next)) return {kReplacement, 1, false};
  return {MergeUnits(unit, next), 2, true};
}

// Appends all of `text` and returns whether it contained no lone surrogate.
static bool AppendText(std::string& bytes, std::u16string_view text) {
  bool isWellFormed = true;
  for (std::size_t at = 0; at < text.size();) {
    const auto character = ReadUtf16Character(text[at], at + 1 < text.size() ? text[at + 1] : u'\0');
    unsigned char sequence[kMostSequenceBytes];
    const std::size_t size = SequenceSize(character.codePoint);
    StoreSequence(sequence, character.codePoint, size);
    bytes.append(reinterpret_cast<const char*>(sequence), size);
    isWellFormed = isWellFormed && character.isWellFormed;
    at += character.units;
  }
  return isWellFormed;
}

std::optional<std::string> ToUtf8(std::u16string_view text) {
  std::string bytes;
  if (!AppendText(bytes, text)) return std::nullopt;
  return bytes;
}

std::string ToUtf8Lossy(std::u16string_view text) {
  std::string bytes;
  (void)AppendText(bytes, text);  // the reader sees the replacement
  return bytes;
}

// A sequence is decoded as a whole and then checked. If it isn't well-formed, only its first byte is replaced, and
// decoding continues at the next byte: C3 41 is U+FFFD and A, and each byte of ED A0 80, a surrogate, is a U+FFFD.
//
// Some bytes never begin a sequence: 80 to BF are continuation bytes, C0 and C1 would lead overlong forms, F5 to FF
// values above U+10FFFF. For these `length` is 0.
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
    std::size_t taken = length == 0 ? 1 : length;  // bytes that become this character
    for (std::size_t tail = 1; tail < length; ++tail) {
      if (at + tail >= bytes.size() || (byteAt(at + tail) & 0xC0) != 0x80) {
        codePoint = kReplacement;
        taken = 1;
        break;
      }
      codePoint = codePoint << 6 | (byteAt(at + tail) & 0x3Fu);
    }
    const bool overlong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
    if (taken > 1 && (overlong || codePoint > 0x10FFFF || IsSurrogate(codePoint))) {
      codePoint = kReplacement;
      taken = 1;
    }
    if (codePoint >= 0x10000) {
      char16_t pair[2];
      (void)StorePair(pair, codePoint);
      text.append(pair, 2);
    } else {
      text += static_cast<char16_t>(codePoint);
    }
    at += taken;
  }
  return text;
}
