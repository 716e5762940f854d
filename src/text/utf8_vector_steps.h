// What the forms of utf8_vectors.h have in common: their idea, and those parts of their steps that need no instructions
// of their own. Only their source files include this header.
//
// A loop over characters can't start on a character before it knows the length of the one before. The loops of a form
// don't look for the beginning of characters. They compute a result for every input position and then drop the results
// that no character needs, so their steps are the same for any mixture of characters:
//
//   - Decoding computes, for each byte, the unit of a character that ends at this byte. It keeps the unit if the next
//     byte isn't a continuation byte:
//
//         bytes     41     C3   A9     E2   82   AC     20 ...
//         units     0041   -    00E9   -    -    20AC
//         kept      yes    no   yes    no   no   yes
//
//   - Encoding computes, for each unit, all bytes that its group of characters can have. It drops the bytes that
//     shorter characters lack.
//
//   - Counting units also checks UTF-8. A byte must be a continuation byte (80 to BF) if the byte before it is a lead
//     byte (C0 to FF), or the byte two before it leads three or more (E0 to FF), or the byte three before it leads four
//     (F0 to FF). Any other byte must not be one. Text that keeps this rule yields one unit per byte that isn't a
//     continuation byte, and a second unit per byte that leads four, because such a character becomes a surrogate pair.
//
// AVX2 and NEON drop results by a shuffle of bytes. Its pattern comes from a table, and the table's index is a mask
// with one bit per character. Their loads and stores are whole vectors, so a store may write more than the result; each
// function says why the excess does no harm. AVX-512 has instructions for both; see utf8_vectors_avx512.h.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "zrcore/base.h"

// The shuffles that move the bytes to keep to the front of 16 bytes, by a key of eight bits that says which to keep. A
// shuffle lists, for each place of the result, the index of the source byte; 0x80 stores a zero. With a bit per unit,
// the key 0b00000101 has the shuffle 0 1 4 5 0x80 0x80 ...
using Shuffles = std::array<std::array<uint8_t, 16>, 256>;

template <class IsKept>
constexpr Shuffles MakeShuffles(IsKept isKept) {
  Shuffles shuffles{};
  for (unsigned key = 0; key < 256; ++key) {
    std::size_t kept = 0;
    for (unsigned byte = 0; byte < 16; ++byte) {
      if (isKept(key, byte)) shuffles[key][kept++] = static_cast<uint8_t>(byte);
    }
    while (kept < 16) shuffles[key][kept++] = 0x80;
  }
  return shuffles;
}

// For decoding: keeps whole units, by one bit for each of eight units.
inline constexpr Shuffles kKeepUnits =
    MakeShuffles([](unsigned key, unsigned byte) { return (key >> byte / 2 & 1) != 0; });

// For eight units of two bytes each: keeps the first byte of each, and the second if the unit's bit in the key is set.
inline constexpr Shuffles kKeepOfTwo =
    MakeShuffles([](unsigned key, unsigned byte) { return byte % 2 == 0 || (key >> byte / 2 & 1) != 0; });

// For four units of four bytes each. The third byte is kept always, the second if the unit isn't ASCII (bits 0 to 3 of
// the key), the first if the unit is 0x800 or above (bits 4 to 7). The fourth byte is padding and never kept.
inline constexpr Shuffles kKeepOfThree = MakeShuffles([](unsigned key, unsigned byte) {
  const unsigned isKept[] = {key >> (4 + byte / 4) & 1, key >> byte / 4 & 1, 1, 0};
  return isKept[byte % 4] != 0;
});

// The end of decoding. The last step may have ended inside a character, `inside` bytes after its beginning. The
// caller's loop decodes the whole character again. Three bytes of four have already stored a high surrogate, which is
// taken back.
inline void StepBackToCharacter(const unsigned char* text, const unsigned char*& at, const unsigned char* end,
                                WCHAR*& to) noexcept {
  std::size_t inside = 0;
  for (; at != text && at != end && (*at & 0xC0) == 0x80; --at) ++inside;
  if (inside == 3) --to;
}

// For encoding: whether a step may store `first` and then `last` bytes by two stores of 16 bytes each, or only `last`
// bytes by one store if `first` is 0. `unitsLeft` units follow those of the step, and `space` bytes are left to write.
//
// The second store writes over what the first stored in excess. Its own excess, 16 - last bytes, must be covered by the
// text that follows: each of the `unitsLeft` units yields at least one byte, except the last unit of the text, which
// may be a lone surrogate and yields none. Bytes that nothing covers would be garbage after the end of the result.
inline bool IsCovered(std::size_t first, std::size_t last, std::ptrdiff_t unitsLeft, std::ptrdiff_t space) noexcept {
  return static_cast<std::size_t>(unitsLeft) > 16 - last && static_cast<std::size_t>(space) >= first + 16;
}
