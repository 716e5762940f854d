// The conversions between UTF-8 and 16-bit text in NEON, in vectors of 16 bytes. utf8_vector_steps.h explains the idea.
//
// There is no counting here. The loops of the callers count in vectors of the same size.

#include "text/utf8_vectors.h"

#if defined(__GNUC__) && defined(__aarch64__)

#include <arm_neon.h>

#include <bit>

#include "platform/unicode_forms.h"
#include "text/utf8_vector_steps.h"
#include "text/vectors.h"

static uint16x8_t Each(int unit) noexcept { return EachUnit(unit).lanes; }
static uint32x4_t Each32(uint32_t bits) noexcept { return vdupq_n_u32(bits); }

static uint8x16_t Shuffle(uint8x16_t bytes, const Shuffles& shuffles, unsigned key) noexcept {
  return vqtbl1q_u8(bytes, vld1q_u8(shuffles[key].data()));
}
static std::size_t CountBits(unsigned bits) noexcept { return static_cast<std::size_t>(std::popcount(bits)); }

// ---- UTF-8 to 16-bit text ------------------------------------------------------------------------------------------

// Converts pairs of vectors that are all ASCII, as long as they come.
static void WidenAscii(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept {
  while (end - at >= 32 && toEnd - to >= 32) {
    const ByteVector first = LoadBytes(at), second = LoadBytes(at + 16);
    if (!AreAscii(first | second)) break;
    StoreUnits(to, WidenLow(first));
    StoreUnits(to + 8, WidenHigh(first));
    StoreUnits(to + 16, WidenLow(second));
    StoreUnits(to + 24, WidenHigh(second));
    at += 32;
    to += 32;
  }
}

// Eight bytes of a step with the bytes before each, widened: every register has one lane of 16 bits per byte.
struct DecodingLanes {
  uint16x8_t last;     // the byte itself, of which the step assumes that it is the last byte of a character
  uint16x8_t before1;  // the bytes one to three places before it
  uint16x8_t before2;
  uint16x8_t before3;
};

// Six bits of the last byte, and of the byte before it.
static uint16x8_t Low6(const DecodingLanes& lanes) noexcept { return vandq_u16(lanes.last, Each(0x3F)); }
static uint16x8_t Mid6(const DecodingLanes& lanes) noexcept { return vandq_u16(lanes.before1, Each(0x3F)); }

// The low twelve bits of any character of two or more bytes: 10aaaaaa 10bbbbbb -> aaaaaabbbbbb.
static uint16x8_t Low12(const DecodingLanes& lanes) noexcept {
  return vorrq_u16(Low6(lanes), vshlq_n_u16(Mid6(lanes), 6));
}

// Returns the units of the characters of up to three bytes that end at each byte; garbage where none ends.
//
// Low12 is the unit of a character of two bytes: 110aaaaa 10bbbbbb -> aaaaabbbbbb. A lead byte of three at before2 adds
// the four bits that `<< 12` leaves of it. The selection then puts ASCII bytes in their places. The text is known to be
// good, so a lead byte at before2 shows that the bytes after it belong to its character.
static uint16x8_t DecodeUpToThree(const DecodingLanes& lanes) noexcept {
  const uint16x8_t top4 = vandq_u16(vcgtq_u16(lanes.before2, Each(0xDF)), vshlq_n_u16(lanes.before2, 12));
  return vbslq_u16(vcltq_u16(lanes.last, Each(0x80)), lanes.last, vorrq_u16(Low12(lanes), top4));
}

// Puts the surrogates of characters of four bytes into their places in `decoded`: the third byte yields the high
// surrogate and the fourth the low one. Returns false if a code point is below 0x10000.
//
// In the lane of the third byte, `above` is the code point without its low ten bits, lead << 8 | second << 2 |
// third >> 4. The high surrogate is 0xD800 + ((codePoint - 0x10000) >> 10), that is above + 0xD800 - 0x40. In the lane
// of the fourth byte, Low12 contains the low ten bits.
static bool DecodeFour(const DecodingLanes& lanes, uint16x8_t& decoded) noexcept {
  const uint16x8_t isThird = vcgtq_u16(lanes.before2, Each(0xEF)), isFourth = vcgtq_u16(lanes.before3, Each(0xEF));
  const uint16x8_t lead = vshlq_n_u16(vandq_u16(lanes.before2, Each(7)), 8);
  const uint16x8_t above = vorrq_u16(vorrq_u16(lead, vshlq_n_u16(Mid6(lanes), 2)), vshrq_n_u16(Low6(lanes), 4));
  if (HasTopBit(UnitVector{vandq_u16(isThird, vcltq_u16(above, Each(0x40)))})) return false;
  const uint16x8_t high = vaddq_u16(above, Each(0xD800 - 0x40));
  const uint16x8_t low = vorrq_u16(vandq_u16(Low12(lanes), Each(0x3FF)), Each(0xDC00));
  decoded = vbslq_u16(isFourth, low, vbslq_u16(isThird, high, decoded));
  return true;
}

// Decodes sixteen bytes per step, in two halves of eight lanes. The bit of a byte in `kept` says that a character, or
// the high surrogate of one, ends there and its unit is stored.
void DecodeNeon(const unsigned char*& text, const unsigned char* end, WCHAR*& units, const WCHAR* toEnd) noexcept {
  const unsigned char* at = text;
  WCHAR* to = units;
  WidenAscii(at, end, to, toEnd);
  while (end - at > 16) {  // a 17th byte must be there: it shows whether the 16th ends a character
    const ByteVector last = LoadBytes(at);
    const bool isAtStart = at == text;  // zeros take the places of the bytes before the text
    const ByteVector before1 = isAtStart ? ShiftedIn<1>(last) : LoadBytes(at - 1);
    const ByteVector before2 = isAtStart ? ShiftedIn<2>(last) : LoadBytes(at - 2);
    const ByteVector before3 = isAtStart ? ShiftedIn<3>(last) : LoadBytes(at - 3);
    const DecodingLanes low{WidenLow(last).lanes, WidenLow(before1).lanes, WidenLow(before2).lanes,
                            WidenLow(before3).lanes};
    const DecodingLanes high{WidenHigh(last).lanes, WidenHigh(before1).lanes, WidenHigh(before2).lanes,
                             WidenHigh(before3).lanes};
    uint16x8_t decodedLow = DecodeUpToThree(low), decodedHigh = DecodeUpToThree(high);
    // A byte ends a character if the next byte isn't a continuation byte: compared as signed, those are up to 0xBF. The
    // third byte of four is kept too, although a continuation byte follows it.
    ByteVector isKept = IsGreaterSigned(LoadBytes(at + 1), EachByte(0xBF));
    const uint8x16_t isThird = vcgtq_u8(before2.lanes, vdupq_n_u8(0xEF));
    if (HasTopBit(ByteVector{vorrq_u8(isThird, vcgtq_u8(before3.lanes, vdupq_n_u8(0xEF)))})) {
      // A code point below 0x10000 in four bytes (an overlong form) is accepted, but it is one unit, not the two that
      // were counted. The caller's loop decodes it.
      if (!DecodeFour(low, decodedLow) || !DecodeFour(high, decodedHigh)) break;
      isKept = isKept | ByteVector{isThird};
    }

    const unsigned kept = TopBits(isKept);
    const std::size_t first = CountBits(kept & 0xFF), second = CountBits(kept >> 8);
    // Each half stores eight units, of which `first` or `second` count. The second store, and the next step, write over
    // the rest; the caller fills what is left at the end.
    if (static_cast<std::size_t>(toEnd - to) < first + 8) break;
    const uint8x16_t unitsLow = Shuffle(vreinterpretq_u8_u16(decodedLow), kKeepUnits, kept & 0xFF);
    const uint8x16_t unitsHigh = Shuffle(vreinterpretq_u8_u16(decodedHigh), kKeepUnits, kept >> 8);
    StoreUnits(to, {vreinterpretq_u16_u8(unitsLow)});
    StoreUnits(to + first, {vreinterpretq_u16_u8(unitsHigh)});
    at += 16;
    to += first + second;
    WidenAscii(at, end, to, toEnd);
  }
  StepBackToCharacter(text, at, end, to);
  text = at;
  units = to;
}

// ---- 16-bit text to UTF-8 ------------------------------------------------------------------------------------------

// Converts pairs of vectors that are all ASCII, as long as they come.
static void NarrowAscii(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept {
  while (end - at >= 16 && toEnd - to >= 16) {
    const UnitVector first = LoadUnits(at), second = LoadUnits(at + 8);
    if (!AreAscii(first | second)) break;
    StoreBytes(to, NarrowAscii(first, second));
    at += 16;
    to += 16;
  }
}

// Encodes eight units that are four surrogate pairs; returns false for any others. A lane of 32 bits is one pair, the
// high surrogate in its low half. It becomes the four bytes of the character, the lead byte lowest, so all 16 bytes
// that are stored count.
static bool EncodePairs(UnitVector units, unsigned char* to) noexcept {
  const uint32x4_t pairs = vreinterpretq_u32_u16(units.lanes);
  const uint32x4_t isPair = vceqq_u32(vandq_u32(pairs, Each32(0xFC00FC00)), Each32(0xDC00D800));
  if (vminvq_u32(isPair) == 0) return false;
  const uint32x4_t high = vandq_u32(pairs, Each32(0x3FF));
  const uint32x4_t low = vandq_u32(vshrq_n_u32(pairs, 16), Each32(0x3FF));
  const uint32x4_t codePoints = vaddq_u32(vorrq_u32(vshlq_n_u32(high, 10), low), Each32(0x10000));
  // Six bits of the code point go to bits 0 to 5 of each byte: tails12 are bits 12 to 17, for the second byte.
  const uint32x4_t tails12 = vandq_u32(vshrq_n_u32(codePoints, 4), Each32(0x3F00));
  const uint32x4_t tails6 = vandq_u32(vshlq_n_u32(codePoints, 10), Each32(0x3F0000));
  const uint32x4_t tails0 = vandq_u32(vshlq_n_u32(codePoints, 24), Each32(0x3F000000));
  const uint32x4_t leads = vorrq_u32(vshrq_n_u32(codePoints, 18), Each32(0x808080F0));
  const uint32x4_t bytes = vorrq_u32(vorrq_u32(leads, tails12), vorrq_u32(tails6, tails0));
  StoreBytes(to, {vreinterpretq_u8_u32(bytes)});
  return true;
}

// Encodes eight units below 0x800, one or two bytes each. Returns false, and stores nothing, if IsCovered does.
//
// Each lane of 16 bits has two bytes, the first in the low byte: 110aaaaa 10bbbbbb of a unit aaaaabbbbbb, or ASCII and
// a zero.
static bool EncodeUpToTwo(uint16x8_t units, std::ptrdiff_t unitsLeft, unsigned char*& to,
                          const unsigned char* toEnd) noexcept {
  static constexpr uint16_t kKeyBits[] = {1, 2, 4, 8, 16, 32, 64, 128};
  const uint16x8_t isBeyondAscii = vcgtq_u16(units, Each(0x7F));
  const uint16x8_t tails = vandq_u16(vshlq_n_u16(units, 8), Each(0x3F00));
  const uint16x8_t leads = vorrq_u16(vshrq_n_u16(units, 6), Each(0x80C0));
  const uint16x8_t bytes = vbslq_u16(isBeyondAscii, vorrq_u16(leads, tails), units);
  const unsigned key = vaddvq_u16(vandq_u16(isBeyondAscii, vld1q_u16(kKeyBits)));
  const std::size_t size = 8 + CountBits(key);
  if (!IsCovered(0, size, unitsLeft, toEnd - to)) return false;
  StoreBytes(to, {Shuffle(vreinterpretq_u8_u16(bytes), kKeepOfTwo, key)});
  to += size;
  return true;
}

// Three bytes per lane of 32 bits, the first in the lowest byte, and the key that says which to keep. The last byte of
// the character is always the third, so that shorter characters lack the first, or the first two:
//
//     0x800 and above    1110aaaa 10bbbbbb 10cccccc
//     0x80 to 0x7FF      -        110bbbbb 10cccccc
//     ASCII              -        -        0ccccccc
//
// tails6 and tails0 are the bits 6 to 11 and 0 to 5 of the unit, moved to the second and the third byte.
struct EncodedLanes {
  explicit EncodedLanes(uint32x4_t units) noexcept {
    static constexpr uint32_t kTwoBits[] = {1, 2, 4, 8}, kThreeBits[] = {16, 32, 64, 128};
    const uint32x4_t isBeyondAscii = vcgtq_u32(units, Each32(0x7F)), isOfThree = vcgtq_u32(units, Each32(0x7FF));
    const uint32x4_t tails6 = vandq_u32(vshlq_n_u32(units, 2), Each32(0x3F00));
    const uint32x4_t tails0 = vandq_u32(vshlq_n_u32(units, 16), Each32(0x3F0000));
    const uint32x4_t leads3 = vorrq_u32(vshrq_n_u32(units, 12), Each32(0x8080E0));
    const uint32x4_t leads2 = vbicq_u32(Each32(0x4000), isOfThree);  // 10 becomes 11: a lead byte
    const uint32x4_t several = vorrq_u32(vorrq_u32(leads3, leads2), vorrq_u32(tails6, tails0));
    bytes = vreinterpretq_u8_u32(vbslq_u32(isBeyondAscii, several, vshlq_n_u32(units, 16)));
    key = vaddvq_u32(
        vorrq_u32(vandq_u32(isBeyondAscii, vld1q_u32(kTwoBits)), vandq_u32(isOfThree, vld1q_u32(kThreeBits))));
    size = 4 + CountBits(key);
  }

  uint8x16_t bytes;
  unsigned key;
  std::size_t size;
};

// Encodes eight units that are no surrogates, one to three bytes each. Returns false, and stores nothing, if IsCovered
// does.
static bool EncodeUpToThree(uint16x8_t units, std::ptrdiff_t unitsLeft, unsigned char*& to,
                            const unsigned char* toEnd) noexcept {
  const EncodedLanes low(vmovl_u16(vget_low_u16(units))), high(vmovl_high_u16(units));
  if (!IsCovered(low.size, high.size, unitsLeft, toEnd - to)) return false;
  StoreBytes(to, {Shuffle(low.bytes, kKeepOfThree, low.key)});
  StoreBytes(to + low.size, {Shuffle(high.bytes, kKeepOfThree, high.key)});
  to += low.size + high.size;
  return true;
}

// Each step takes eight units and does what fits the longest character among them. After each step NarrowAscii takes a
// run of ASCII, if one follows.
void EncodeNeon(const WCHAR*& text, const WCHAR* end, unsigned char*& buffer, const unsigned char* toEnd) noexcept {
  const WCHAR* at = text;
  unsigned char* to = buffer;
  NarrowAscii(at, end, to, toEnd);
  for (; end - at >= 8; NarrowAscii(at, end, to, toEnd)) {
    const UnitVector units = LoadUnits(at);
    if (vmaxvq_u16(units.lanes) < 0x800) {
      if (!EncodeUpToTwo(units.lanes, end - at - 8, to, toEnd)) break;
    } else if (!HasTopBit(IsEqual(units & EachUnit(0xF800), EachUnit(0xD800)))) {
      if (!EncodeUpToThree(units.lanes, end - at - 8, to, toEnd)) break;
    } else if (toEnd - to >= 16 && EncodePairs(units, to)) {
      to += 16;
    } else {
      // The eighth unit may be a surrogate, which takes the ninth with it. Eight units never yield more than 32 bytes.
      // StoreCharacter stores only the bytes of the character, so nothing is left to cover.
      if (end - at < 10 || toEnd - to < 32) break;
      for (const WCHAR* const next = at + 8; at < next;) at += StoreCharacter(at, to);
      continue;
    }
    at += 8;
  }
  text = at;
  buffer = to;
}

#endif
