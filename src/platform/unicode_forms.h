// The arithmetic of UTF-16 and UTF-8: surrogate pairs, and the byte sequences of UTF-8 (RFC 2781, RFC 3629).
//
//     code points          UTF-16                         UTF-8
//     U+0000 to U+007F     one unit                       0aaaaaaa
//     U+0080 to U+07FF     one unit                       110aaaaa 10bbbbbb
//     U+0800 to U+FFFF     one unit                       1110aaaa 10bbbbbb 10cccccc
//     U+10000 and above    high surrogate D800 to DBFF,   11110aaa 10bbbbbb 10cccccc 10dddddd
//                          low surrogate DC00 to DFFF
//
// The first byte of a sequence is its lead byte, the others are continuation bytes ("tail" in names). A surrogate that
// isn't part of such a pair is lone.
//
// Nothing is checked here, because the exported conversions differ in what they refuse. Instead each function says what
// it computes from irregular input. The header is in the platform layer, the lowest, because that layer needs it, too.

#pragma once

#include <cstddef>
#include <cstdint>

#include "zrcore/base.h"

constexpr bool IsSurrogate(char32_t unit) noexcept { return (unit & ~0x7FFu) == 0xD800; }
constexpr bool IsHighSurrogate(char32_t unit) noexcept { return (unit & ~0x3FFu) == 0xD800; }
constexpr bool IsLowSurrogate(char32_t unit) noexcept { return (unit & ~0x3FFu) == 0xDC00; }

// Returns the code point of a pair, 0x10000 + (first - 0xD800) * 1024 + (second - 0xDC00), with the constants added up.
// For a surrogate and any other unit it is some value from 0x2400 to 0x211FFF, which callers rely on, too.
constexpr char32_t MergeUnits(WCHAR first, WCHAR second) noexcept {
  return char32_t{first} * 1024 + char32_t{second} - 56613888;
}
static_assert(MergeUnits(WCHAR{0xD800}, WCHAR{0xDC00}) == 0x10000);

// Stores a value above 0xFFFF as a pair and returns the place after it. For a value above 0x10FFFF the first unit is
// cut to 16 bits and need not be a high surrogate.
constexpr WCHAR* StorePair(WCHAR* at, char32_t codePoint) noexcept {
  const char32_t above = codePoint - 0x10000;
  *at++ = static_cast<WCHAR>((above >> 10) + 0xD800);
  *at++ = static_cast<WCHAR>((above & 0x3FF) + 0xDC00);
  return at;
}

// Returns how many continuation bytes a lead byte needs. Any byte from 0xC0 to 0xFF is accepted, even those that UTF-8
// never uses: 0xF8 to 0xFF lead four bytes like 0xF0.
constexpr std::size_t TailBytes(unsigned char lead) noexcept { return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3; }

// Returns the value of the sequence at `at`, with `tailBytes` bytes after the lead byte. Each of these contributes its
// low six bits, whatever its upper two bits are.
constexpr char32_t SequenceValue(const unsigned char* at, std::size_t tailBytes) noexcept {
  const auto tail = [at](std::size_t index) { return char32_t{at[index]} & 0x3F; };
  if (tailBytes == 1) return (at[0] & 0x1Fu) << 6 | tail(1);
  if (tailBytes == 2) return (at[0] & 0x0Fu) << 12 | tail(1) << 6 | tail(2);
  return (at[0] & 0x07u) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3);
}

// Stores a code point as a sequence of `size` bytes, from 1 to 4, and nothing past it. If the value needs more bits
// than the sequence has, its upper bits are dropped. If it needs fewer, the form is overlong.
inline constexpr std::size_t kMostSequenceBytes = 4;
constexpr void StoreSequence(unsigned char* at, char32_t codePoint, std::size_t size) noexcept {
  const auto tail = [codePoint](int shift) { return static_cast<unsigned char>(0x80 | (codePoint >> shift & 0x3F)); };
  switch (size) {
    case 1:
      at[0] = static_cast<unsigned char>(codePoint);
      return;
    case 2:
      at[0] = static_cast<unsigned char>(0xC0 | (codePoint >> 6 & 0x1F));
      at[1] = tail(0);
      return;
    case 3:
      at[0] = static_cast<unsigned char>(0xE0 | (codePoint >> 12 & 0x0F));
      at[1] = tail(6);
      at[2] = tail(0);
      return;
    default:
      at[0] = static_cast<unsigned char>(0xF0 | (codePoint >> 18 & 0x07));
      at[1] = tail(12);
      at[2] = tail(6);
      at[3] = tail(0);
  }
}

// Returns the number of bytes that UTF-8 needs for a code point; 4 for all values from 0x10000 up.
constexpr std::size_t SequenceSize(char32_t codePoint) noexcept {
  return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

// Stores the character at `at` as UTF-8, moves `to` past it and returns its number of units. `to` must have space for
// four bytes; only those of the character are written. A surrogate is merged with whatever follows, so it must not be
// the last unit of the text.
//
// Each length has a branch that moves `to` by a constant. The processor predicts the branch and starts on the next
// character at once; one addition of a computed size would make it wait for the computation.
constexpr std::size_t StoreCharacter(const WCHAR* at, unsigned char*& to) noexcept {
  const WCHAR unit = *at;
  if (unit < 0x80) {
    StoreSequence(to, unit, 1);
    to += 1;
    return 1;
  }
  if (unit < 0x800) {
    StoreSequence(to, unit, 2);
    to += 2;
    return 1;
  }
  if (!IsSurrogate(unit)) {
    StoreSequence(to, unit, 3);
    to += 3;
    return 1;
  }
  const char32_t codePoint = MergeUnits(unit, at[1]);
  const std::size_t size = SequenceSize(codePoint);
  StoreSequence(to, codePoint, size);
  to += size;
  return 2;
}
