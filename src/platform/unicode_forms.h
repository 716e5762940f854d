// The arithmetic of UTF-16 and UTF-8: surrogate pairs, and the byte sequences of UTF-8 (RFC 3629, RFC 2781).
//
// There are no checks here. Which input is refused differs between the exported conversions, so each of them decides
// for itself. The header is part of the platform layer because that lowest layer needs it, too.

#pragma once

#include <cstddef>
#include <cstdint>

#include "zrcore/base.h"

constexpr bool IsSurrogate(char32_t unit) noexcept { return (unit & ~0x7FFu) == 0xD800; }
constexpr bool IsHighSurrogate(char32_t unit) noexcept { return (unit & ~0x3FFu) == 0xD800; }
constexpr bool IsLowSurrogate(char32_t unit) noexcept { return (unit & ~0x3FFu) == 0xDC00; }

// The code point of a pair; for two other units, of which the first is a surrogate, some value up to 0x211FFF.
constexpr char32_t MergeUnits(WCHAR first, WCHAR second) noexcept {
  return char32_t{first} * 1024 + char32_t{second} - 56613888;
}
static_assert(MergeUnits(WCHAR{0xD800}, WCHAR{0xDC00}) == 0x10000);

// Stores a value above 0xFFFF as a pair and answers the place behind. The high unit of one above 0x10FFFF wraps.
constexpr WCHAR* StorePair(WCHAR* at, char32_t codePoint) noexcept {
  const char32_t above = codePoint - 0x10000;
  *at++ = static_cast<WCHAR>((above >> 10) + 0xD800);
  *at++ = static_cast<WCHAR>((above & 0x3FF) + 0xDC00);
  return at;
}

// How many bytes follow a lead byte, which is one from 0xC0 up.
constexpr std::size_t TailBytes(unsigned char lead) noexcept { return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3; }

// The value of the lead byte at `at` and its `tailBytes` bytes: six bits of each, without a look at the other two.
constexpr char32_t SequenceValue(const unsigned char* at, std::size_t tailBytes) noexcept {
  const auto tail = [at](std::size_t index) { return char32_t{at[index]} & 0x3F; };
  if (tailBytes == 1) return (at[0] & 0x1Fu) << 6 | tail(1);
  if (tailBytes == 2) return (at[0] & 0x0Fu) << 12 | tail(1) << 6 | tail(2);
  return (at[0] & 0x07u) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3);
}

// The bytes of one code point, first to last, as a sequence of `size` bytes; of larger values than such a sequence
// holds, the low bits.
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

// By the published limits.
constexpr std::size_t SequenceSize(char32_t codePoint) noexcept {
  return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

// Stores the character at `at`, into a room of four bytes, and answers how many units it had; a surrogate is not the
// last unit, and goes with whatever follows. Each length is a branch of its own, so that where the next character goes
// is mostly guessed right and needs no waiting.
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
