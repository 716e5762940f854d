// A string into the caller's buffer as 16-bit text, UTF-32 or UTF-8. A `*capacity` of -1 asks for the size instead.
//
// The loops below look inconsistent, and must stay so, because callers rely on each writer's own rules:
//
//                          UTF-16    UTF-32                            UTF-8
//   units converted        length    length + 1 (the terminator too)   length, then a zero byte
//   size: lone surrogate   1         0                                 0
//   size: the last one     1         the whole size is 0               the text's size is 0
//   written: lone          copied    nothing; the unit after it is     merged with the unit after it into some
//     surrogate                      skipped, too                      code point
//   written: the last one  copied    ends the writing                  fails
//   buffer too small       cut       cut, ZR_R_OK                      cut, even inside a character, ZR_R_OK
//   buffer too large       zeros     ZR_R_FAILED                       ZR_R_FAILED
//
// So the size that a text is said to need, and what is written of it, agree only if all surrogates are in pairs.
//
// UTF-8 is the common case and has three layers, for counting and for encoding: the processor's own form
// (utf8_vectors.h), vectors of eight units for every processor of a family (vectors.h), and the plain loop that defines
// the result. The faster layers stop where the rules for irregular text begin.

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "platform/unicode_forms.h"
#include "text/counted_string.h"
#include "text/utf8_vectors.h"
#include "text/vectors.h"
#include "zrcore/unicode.h"

static constexpr int32_t kQuery = -1;

// What all writers check before they look at the text. A `length` of 0 is refused although an empty string with a
// `length` of -1 is not.
static bool AreArgumentsGood(ZRSTR source, int32_t length, const void* buffer, const int32_t* capacity) noexcept {
  if (length == 0 || source == nullptr || capacity == nullptr) return false;
  return *capacity >= kQuery && length >= -1 && (buffer != nullptr || *capacity == kQuery);
}

static std::size_t SourceLength(ZRSTR source, int32_t length) noexcept {
  return length == -1 ? StringLen(source) : static_cast<std::size_t>(length);
}

// Stores the result of a size query. A size above 31 bits wraps: only the low 32 bits are stored, as a signed number.
static ZRRESULT StoreSize(int32_t* capacity, std::size_t units) noexcept {
  *capacity = static_cast<int32_t>(static_cast<uint32_t>(units));
  return ZR_R_OK;
}

// ---- 16-bit text ---------------------------------------------------------------------------------------------------

static ZRRESULT WriteUtf16(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) noexcept {
  if (!AreArgumentsGood(source, length, buffer, capacity)) return ZR_R_INVALID_ARGUMENTS;
  if (length == std::numeric_limits<int32_t>::max()) return ZR_R_INVALID_ARGUMENTS;  // length + 1 wouldn't fit 31 bits
  const std::size_t units = SourceLength(source, length);
  if (*capacity == kQuery) return StoreSize(capacity, units + 1);
  const auto bufferUnits = static_cast<std::size_t>(*capacity);
  const std::size_t copied = std::min(bufferUnits, units);
  std::memcpy(buffer, source, copied * sizeof(WCHAR));
  std::memset(buffer + copied, 0, (bufferUnits - copied) * sizeof(WCHAR));
  return ZR_R_OK;
}

// ---- UTF-32 --------------------------------------------------------------------------------------------------------

// One for each unit that isn't a surrogate and for each true pair, nothing for a lone surrogate. A lone surrogate in
// the last place makes the whole count 0. [at, end) includes the terminator, which counts as a code point.
static std::size_t CountCodePoints(const WCHAR* at, const WCHAR* end) noexcept {
  std::size_t count = 0;
  for (; at < end; ++at) {
    if (!IsSurrogate(*at)) {
      ++count;
    } else if (at + 1 == end) {
      return 0;
    } else if (IsHighSurrogate(*at) && IsLowSurrogate(at[1])) {
      ++count;
      ++at;
    }
  }
  return count;
}

// Writes until the number of steps equals the capacity. Two rules differ from the obvious loop:
//
//   - The limit counts steps, not code points. A lone surrogate and the unit after it are one step that stores nothing,
//     so such a text fills less of the buffer than ZR_R_OK suggests. CountCodePoints skips only the surrogate.
//   - The limit is checked after a step. A capacity of 0 is therefore never reached: everything is written, and the
//     result is ZR_R_OK only if a surrogate in the last place ends the writing.
static ZRRESULT WriteCodePoints(const WCHAR* at, const WCHAR* end, char32_t* to, std::size_t capacity) noexcept {
  std::size_t steps = 0;
  while (at < end) {
    if (!IsSurrogate(*at)) {
      *to++ = *at++;
    } else if (at + 1 == end) {
      return capacity == 0 ? ZR_R_OK : ZR_R_FAILED;
    } else {
      if (IsHighSurrogate(*at) && IsLowSurrogate(at[1])) *to++ = MergeUnits(at[0], at[1]);
      at += 2;
    }
    if (++steps == capacity) break;
  }
  return steps == capacity ? ZR_R_OK : ZR_R_FAILED;
}

// ---- UTF-8 ---------------------------------------------------------------------------------------------------------

#if defined(ZR_HAS_VECTORS)
// Sets all bits of the units that equal `tag` under `mask`. IsTagged(units, 0xFC00, 0xD800) finds high surrogates, and
// IsTagged(units, 0xFF80, 0) finds ASCII.
static UnitVector IsTagged(UnitVector units, int mask, int tag) noexcept {
  return IsEqual(units & EachUnit(mask), EachUnit(tag));
}

// Whether 32 units are all ASCII.
static bool AreAscii32(const WCHAR* at) noexcept {
  return AreAscii((LoadUnits(at) | LoadUnits(at + 8)) | (LoadUnits(at + 16) | LoadUnits(at + 24)));
}

// Counts the bytes that the units from `at` on yield, as long as all surrogates are in pairs, and moves `at` past what
// it has counted. Of such text it leaves at most seven units, and before them a high surrogate if the end of the last
// vector separates it from its low surrogate. It stops before a vector that contains a lone surrogate.
//
// Blocks of up to four vectors, so that the sum of the lanes is taken once per block.
static std::size_t CountVectors(const WCHAR*& at, const WCHAR* end) noexcept {
  std::size_t bytes = 0;
  unsigned highBefore = 0;  // 0b11 if the last unit of the vector before is a high surrogate, else 0
  while (end - at >= 8) {
    if (end - at >= 32 && highBefore == 0 && AreAscii32(at)) {
      bytes += 32;
      at += 32;
      continue;
    }
    // A unit yields three bytes, one less below 0x800 and one less again below 0x80; each half of a pair yields two. A
    // comparison that holds is -1 in its lane, so `less` collects in each lane the negative number of bytes to
    // subtract.
    UnitVector less = EachUnit(0);
    const WCHAR* const vectorsEnd = at + (std::min<std::ptrdiff_t>(end - at, 32) & ~std::ptrdiff_t{7});
    const WCHAR* const start = at;
    for (; at < vectorsEnd; at += 8) {
      const UnitVector units = LoadUnits(at);
      const UnitVector isHigh = IsTagged(units, 0xFC00, 0xD800), isLow = IsTagged(units, 0xFC00, 0xDC00);
      const unsigned high = TopBits(isHigh), low = TopBits(isLow);
      // Two bits per unit. All surrogates are in pairs if the low ones are exactly where the high ones are, one unit
      // further on.
      if (low != ((high << 2 | highBefore) & 0xFFFF)) break;
      highBefore = high >> 14;
      const UnitVector below800 = IsTagged(units, 0xF800, 0), below80 = IsTagged(units, 0xFF80, 0);
      less = less + ((below800 + below80) + (isHigh | isLow));
    }
    bytes += static_cast<std::size_t>((at - start) * 3 + SumOfSignedUnits(less));
    if (at < vectorsEnd) break;
  }
  if (highBefore != 0) {  // its low surrogate isn't counted: the loop gets the pair as a whole, or finds it lone
    --at;
    bytes -= 2;
  }
  return bytes;
}
#else
static std::size_t CountVectors(const WCHAR*&, const WCHAR*) noexcept { return 0; }
#endif

// The bytes of UTF-8 that the text yields: four for a true pair, none for a lone surrogate. If the last unit is a lone
// surrogate, the whole count is 0, whatever precedes it.
//
// The count differs from what EncodeUtf8 writes for text with lone surrogates, and callers rely on both.
static std::size_t CountUtf8(const WCHAR* at, const WCHAR* end) noexcept {
  const std::size_t counted = CountUtf8Blocks(at, static_cast<std::size_t>(end - at));
  if (counted != kNotCounted) return counted;
  std::size_t bytes = CountVectors(at, end);
  for (; at < end; ++at) {
    if (!IsSurrogate(*at)) {
      bytes += SequenceSize(*at);
    } else if (at + 1 == end) {
      return 0;
    } else if (IsHighSurrogate(*at) && IsLowSurrogate(at[1])) {
      bytes += 4;
      ++at;
    }
  }
  return bytes;
}

// Returns the code point at `at` and moves `at` past it. Any surrogate is merged with the unit after it, so `at` must
// not be a surrogate in the last place.
static char32_t ReadMerged(const WCHAR*& at) noexcept {
  const WCHAR unit = *at++;
  return IsSurrogate(unit) ? MergeUnits(unit, *at++) : char32_t{unit};
}

#if defined(ZR_HAS_VECTORS)
// Stores sixteen units as bytes. ASCII units become the right bytes; all other units become garbage.
static void Narrow(const WCHAR* at, unsigned char* to) noexcept {
  StoreBytes(to, NarrowAscii(LoadUnits(at), LoadUnits(at + 8)));
}

// A bit for each of sixteen units that isn't ASCII; the bit of the first unit is the lowest.
static unsigned NonAsciiMask(const WCHAR* at) noexcept {
  return TopBits(NarrowMasks(IsTagged(LoadUnits(at), 0xFF80, 0), IsTagged(LoadUnits(at + 8), 0xFF80, 0))) ^ 0xFFFF;
}

// Encodes in steps of sixteen units, as long as the end of neither side is near. The steps have a fixed length, so that
// the processor can load and compare the next vector while it still encodes this one. A surrogate at the end of a step
// takes the first unit of the next step with it; `taken` is 1 there.
//
// A step alternates between runs of ASCII and single characters. `nonAscii` has a bit for each unit that is left of the
// step; its lowest bit belongs to the unit at `at + taken`.
//
// Narrow stores sixteen bytes although only the run of ASCII counts. The rest is overwritten later: each of these
// sixteen units yields at least one byte, because none of them is the last unit of the text (end - at > 32). The last
// unit may be a lone surrogate, which yields none, and garbage would then remain after the end of the result.
static void EncodeVectors(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept {
  std::size_t taken = 0;  // units of this step that are done
  for (; end - at > 32 && toEnd - to >= 64; at += 16) {
    while (taken == 0 && end - at > 64 && toEnd - to >= 96 && AreAscii32(at)) {
      Narrow(at, to);
      Narrow(at + 16, to + 16);
      at += 32;
      to += 32;
    }
    unsigned nonAscii = NonAsciiMask(at) >> taken;
    while (taken < 16) {
      if ((nonAscii & 1) == 0) {
        Narrow(at + taken, to);
        const std::size_t ascii = nonAscii != 0 ? static_cast<std::size_t>(std::countr_zero(nonAscii)) : 16 - taken;
        to += ascii;
        taken += ascii;
        nonAscii >>= ascii;
        if (nonAscii == 0) break;
      }
      const std::size_t units = StoreCharacter(at + taken, to);
      taken += units;
      nonAscii >>= units;
    }
    taken -= 16;
  }
  at += taken;
}
#else
static void EncodeVectors(const WCHAR*&, const WCHAR*, unsigned char*&, const unsigned char*) noexcept {}
#endif

// Writes at most `limit` bytes and returns how many. A text that is longer is cut there, even inside a character. If
// the writing reaches a surrogate in the last place, the result is 0 although bytes were written: the caller reports
// any other number than `limit` as a failure.
static std::size_t EncodeUtf8(const WCHAR* at, const WCHAR* end, unsigned char* buffer, std::size_t limit) noexcept {
  unsigned char* to = buffer;
  unsigned char* const toEnd = buffer + limit;
  EncodeBlocks(at, end, to, toEnd);
  EncodeVectors(at, end, to, toEnd);
  while (at < end && to < toEnd) {
    // Near the ends: still sixteen at once where they fit, with the same rule for what Narrow stores in excess. If all
    // are ASCII there is no excess, and the last unit of the text may be among them.
#if defined(ZR_HAS_VECTORS)
    if (*at < 0x80 && end - at >= 16 && toEnd - to >= 16) {
      const unsigned nonAscii = NonAsciiMask(at);
      if (nonAscii == 0 || end - at > 16) {
        Narrow(at, to);
        const int ascii = std::countr_zero(nonAscii | 0x10000);
        at += ascii;
        to += ascii;
        continue;
      }
    }
    // A whole character that fits in any case.
    if (*at >= 0x80 && end - at >= 2 && toEnd - to >= 4) {
      at += StoreCharacter(at, to);
      continue;
    }
#endif
    if (*at < 0x80) {
      *to++ = static_cast<unsigned char>(*at++);
      continue;
    }
    if (IsSurrogate(*at) && at + 1 == end) return 0;
    // The bytes go through `sequence`, because only some of them may fit the buffer.
    const char32_t codePoint = ReadMerged(at);
    unsigned char sequence[kMostSequenceBytes] = {};
    const std::size_t size = SequenceSize(codePoint);
    StoreSequence(sequence, codePoint, size);
    for (std::size_t index = 0; index < size && to < toEnd; ++index) *to++ = sequence[index];
  }
  return static_cast<std::size_t>(to - buffer);
}

// ---- The exports ---------------------------------------------------------------------------------------------------

ZRRESULT ZrCreateWCHARfromZRSTR(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) noexcept {
  return WriteUtf16(source, length, buffer, capacity);
}

ZRRESULT ZrCreateUTF16fromZRSTR(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) noexcept {
  return WriteUtf16(source, length, buffer, capacity);
}

ZRRESULT ZrCreateUTF32fomZRSTR(ZRSTR source, int32_t length, char32_t* buffer, int32_t* capacity) noexcept {
  if (!AreArgumentsGood(source, length, buffer, capacity)) return ZR_R_INVALID_ARGUMENTS;
  const WCHAR* const end = source + SourceLength(source, length) + 1;  // the terminator is converted, too
  if (*capacity == kQuery) return StoreSize(capacity, CountCodePoints(source, end));
  return WriteCodePoints(source, end, buffer, static_cast<std::size_t>(*capacity));
}

ZRRESULT ZrCreateUTF8fromZRSTR(ZRSTR source, int32_t length, char* buffer, int32_t* capacity) noexcept {
  if (!AreArgumentsGood(source, length, buffer, capacity)) return ZR_R_INVALID_ARGUMENTS;
  const WCHAR* const end = source + SourceLength(source, length);
  if (*capacity == kQuery) return StoreSize(capacity, CountUtf8(source, end) + 1);
  if (*capacity == 0) return ZR_R_FAILED;
  // A buffer that the text and the zero byte don't fill exactly is a failure. The bytes so far stay, without a zero
  // byte.
  const auto limit = static_cast<std::size_t>(*capacity) - 1;
  const auto units = static_cast<std::size_t>(end - source);
  auto* const bytes = reinterpret_cast<unsigned char*>(buffer);
  // ASCII yields as many bytes as units, and other text more. So the attempt is worth it only for this size.
  const bool isDone = limit == units && EncodeShort(source, units, bytes);
  if (!isDone && EncodeUtf8(source, end, bytes, limit) != limit) return ZR_R_FAILED;
  buffer[limit] = 0;
  return ZR_R_OK;
}
