// Strings from UTF-32 and UTF-8: one pass counts the units, then a block of exactly that size is allocated, then a
// second pass fills it. Short UTF-8 may need only one pass (CreateShort in utf8_vectors.h), under the same rules.
//
// For UTF-8 the first pass is also the only check. Text is good if continuation bytes follow each lead byte, as many as
// it needs unless the text ends first, and if no other byte is a continuation byte. The second pass relies on this and
// checks nothing. These rules look like mistakes, but callers rely on them:
//
//   - Bad text isn't an error. It counts as zero units, so the result is a new empty string and ZR_R_OK.
//   - The forms aren't checked: C1 81 (overlong) is U+0041, ED A0 80 is the surrogate D800.
//   - A text that ends inside a sequence is good. If one byte is missing, the byte after the text takes its place: the
//     terminator, or whatever follows the given length. If more are missing, the sequence yields no unit.
//   - If decoding yields fewer units than were counted (such a sequence, or an overlong one of four bytes, which counts
//     as a pair), zero units fill the string and the result is ZR_R_FAILED. The caller owns the string nevertheless.

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "platform/unicode_forms.h"
#include "text/counted_string.h"
#include "text/utf8_vectors.h"
#include "text/vectors.h"
#include "zrcore/unicode.h"

static constexpr std::size_t kMostUnits = std::numeric_limits<int32_t>::max();

static ZRRESULT StoreSharedEmpty(ZRSTR* string) noexcept {
  *string = ShareString(nullptr);
  return ZR_R_OK;
}

// ---- UTF-8: counting -----------------------------------------------------------------------------------------------

// Returns how many continuation bytes the sequence before `at` still needs, if the text before `at` is good. A lead
// byte is at most three bytes back; an ASCII byte on the way ends the search.
static std::size_t NeededAt(const unsigned char* text, std::size_t at) noexcept {
  for (std::size_t back = 1; back <= 3 && back <= at; ++back) {
    const unsigned char byte = text[at - back];
    if (byte < 0x80) return 0;
    if (byte >= 0xC0) return TailBytes(byte) >= back ? TailBytes(byte) - back + 1 : 0;
  }
  return 0;
}

#if defined(ZR_HAS_VECTORS)
// Counts and checks whole vectors of sixteen bytes.
//
// A byte must be a continuation byte (80 to BF) if the byte before it is a lead byte (C0 to FF), or the byte two before
// it leads three or more (E0 to FF), or the byte three before it leads four (F0 to FF). Any other byte must not be one.
// Text that keeps this rule yields one unit per byte that is not a continuation byte, and a second unit per byte that
// leads four, because such a character becomes a surrogate pair.
class CVectorCount {
 public:
  // Adds 64 bytes of ASCII, at less cost than Add. Returns false, and adds nothing, if a byte isn't ASCII or the bytes
  // before still need a continuation byte. The caller then uses Add.
  bool AddAscii64(const unsigned char* text, std::size_t at) noexcept {
    const ByteVector all =
        (LoadBytes(text + at) | LoadBytes(text + at + 16)) | (LoadBytes(text + at + 32) | LoadBytes(text + at + 48));
    if (!AreAscii(all) || NeededAt(text, at) != 0) return false;
    units_ += 64;
    return true;
  }

  // Adds up to four vectors. `units` counts in sixteen lanes, one per column of the vectors: a lane starts with one
  // unit per vector, loses one for a continuation byte and gains one for a byte that leads four. It never exceeds twice
  // `vectors`, so the eight bits of a lane suffice.
  void Add(const unsigned char* text, std::size_t at, std::size_t vectors) noexcept {
    ByteVector units = EachByte(static_cast<int>(vectors));
    for (const std::size_t end = at + vectors * 16; at < end; at += 16) {
      const ByteVector bytes = LoadBytes(text + at);
      // At the beginning of the text, zeros are shifted in for the bytes before it. They require nothing, and reading
      // before the text would be out of bounds.
      const ByteVector before1 = at != 0 ? LoadBytes(text + at - 1) : ShiftedIn<1>(bytes);
      const ByteVector before2 = at != 0 ? LoadBytes(text + at - 2) : ShiftedIn<2>(bytes);
      const ByteVector before3 = at != 0 ? LoadBytes(text + at - 3) : ShiftedIn<3>(bytes);
      // A saturating subtraction leaves a byte above 0 only where it exceeds the limit.
      const ByteVector required =
          SubtractSaturated(before1, EachByte(0xBF)) | (SubtractSaturated(before2, EachByte(0xDF)) | AboveEF(before3));
      const ByteVector isNotRequired = IsEqual(required, EachByte(0));
      const ByteVector isTail = IsGreaterSigned(EachByte(0xC0), bytes);  // as signed, only 80 to BF are below C0
      bad_ = bad_ | IsEqual(isNotRequired, isTail);
      units = units + isTail + Min(AboveEF(bytes), EachByte(1));  // isTail is -1 where it holds
    }
    units_ += SumOfBytes(units);
  }

  bool IsGood() const noexcept { return !HasTopBit(bad_); }
  std::size_t Units() const noexcept { return units_; }

 private:
  // Above 0 for the bytes that lead four.
  static ByteVector AboveEF(ByteVector bytes) noexcept { return SubtractSaturated(bytes, EachByte(0xEF)); }

  ByteVector bad_ = EachByte(0);
  std::size_t units_ = 0;
};
#endif

// Returns the number of units that the text yields, or kNotCounted if it is bad.
static std::size_t CountUnits(const unsigned char* text, std::size_t size) noexcept {
  if (const auto units = CountUnitBlocks(text, size)) return *units;
  std::size_t at = 0, units = 0;
#if defined(ZR_HAS_VECTORS)
  CVectorCount count;
  for (; size - at >= 64; at += 64) {
    if (!count.AddAscii64(text, at)) count.Add(text, at, 4);
  }
  if (const std::size_t vectors = (size - at) / 16; vectors != 0) {
    count.Add(text, at, vectors);
    at += vectors * 16;
  }
  if (!count.IsGood()) return kNotCounted;
  units = count.Units();
#endif
  // What no vector covers, byte by byte. The text may end while `needed` isn't 0: incomplete text is good.
  for (std::size_t needed = NeededAt(text, at); at < size; ++at) {
    const unsigned char byte = text[at];
    const bool isTail = byte >= 0x80 && byte < 0xC0;
    if (isTail != (needed != 0)) return kNotCounted;
    if (isTail) {
      --needed;
    } else {
      units += byte < 0xF0 ? 1 : 2;
      needed = byte < 0x80 ? 0 : TailBytes(byte);
    }
  }
  return units;
}

// ---- UTF-8: decoding -----------------------------------------------------------------------------------------------

// One unit up to 0xFFFF, surrogates included; two above, even above 0x10FFFF.
static WCHAR* StoreCodePoint(WCHAR* to, char32_t codePoint) noexcept {
  if (codePoint > 0xFFFF) return StorePair(to, codePoint);
  *to = static_cast<WCHAR>(codePoint);
  return to + 1;
}

// Decodes one whole sequence and returns its number of bytes.
//
// Each length has a branch with a constant result, rather than one return of TailBytes(*at) + 1. The processor predicts
// the branch and starts on the next sequence at once; a computed length would make it wait for the computation.
static std::size_t DecodeSequence(const unsigned char* at, WCHAR*& to) noexcept {
  if (*at < 0xE0) {
    *to++ = static_cast<WCHAR>(SequenceValue(at, 1));
    return 2;
  }
  if (*at < 0xF0) {
    *to++ = static_cast<WCHAR>(SequenceValue(at, 2));
    return 3;
  }
  to = StoreCodePoint(to, SequenceValue(at, 3));
  return 4;
}

#if defined(ZR_HAS_VECTORS)
// Stores sixteen bytes as units. Only ASCII bytes become the right ones; the units from the first other byte on are
// garbage, which the next store overwrites.
static void Widen(const unsigned char* at, WCHAR* to) noexcept {
  const ByteVector bytes = LoadBytes(at);
  StoreUnits(to, WidenLow(bytes));
  StoreUnits(to + 8, WidenHigh(bytes));
}

// A bit for each of sixteen bytes that isn't ASCII; the bit of the first byte is the lowest.
static unsigned NonAsciiMask(const unsigned char* at) noexcept { return TopBits(LoadBytes(at)); }

// Decodes in steps of sixteen bytes, as long as two vectors are left on either side. The steps have a fixed length, so
// that the processor can load the next vector while it still decodes this one. A sequence at the end of a step may
// reach up to three bytes into the next; `taken` is their number there.
//
// A step alternates between runs of ASCII and single sequences. `nonAscii` has a bit for each byte that is left of the
// step; its lowest bit belongs to the byte at `at + taken`. That byte begins a character, because the text is good.
//
// Sixteen units are always stored at once. What exceeds the run of ASCII stays before `toEnd`, and later units or the
// caller's fill overwrite it.
static void DecodeVectors(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept {
  std::size_t taken = 0;  // bytes of this step that are done
  for (; end - at >= 32 && toEnd - to >= 32; at += 16) {
    while (taken == 0 && end - at >= 64 && toEnd - to >= 64 && AreAscii(LoadBytes(at) | LoadBytes(at + 16))) {
      Widen(at, to);
      Widen(at + 16, to + 16);
      at += 32;
      to += 32;
    }
    unsigned nonAscii = NonAsciiMask(at) >> taken;
    while (taken < 16) {
      if ((nonAscii & 1) == 0) {
        Widen(at + taken, to);
        const std::size_t ascii = nonAscii != 0 ? static_cast<std::size_t>(std::countr_zero(nonAscii)) : 16 - taken;
        to += ascii;
        taken += ascii;
        nonAscii >>= ascii;
        if (nonAscii == 0) break;
      }
      const std::size_t bytes = DecodeSequence(at + taken, to);
      taken += bytes;
      nonAscii >>= bytes;
    }
    taken -= 16;
  }
  at += taken;
}
#else
static void DecodeVectors(const unsigned char*&, const unsigned char*, WCHAR*&, const WCHAR*) noexcept {}
#endif

// Decodes into [to, toEnd), which has as many units as were counted, and returns the end of what was decoded. Units
// from there to `toEnd` may be garbage. For bad text, which counts zero units, nothing is decoded.
static WCHAR* Decode(const unsigned char* at, const unsigned char* end, WCHAR* to, const WCHAR* toEnd) noexcept {
  DecodeBlocks(at, end, to, toEnd);
  DecodeVectors(at, end, to, toEnd);
  while (at < end && to < toEnd) {
    if (*at < 0x80) {
#if defined(ZR_HAS_VECTORS)
      if (end - at >= 16 && toEnd - to >= 16) {
        Widen(at, to);
        const int ascii = std::countr_zero(NonAsciiMask(at) | 0x10000);
        at += ascii;
        to += ascii;
        continue;
      }
#endif
      *to++ = *at++;
      continue;
    }
    // An incomplete sequence at the end. The check is for one byte less than the sequence has: if only the last byte is
    // missing, the byte after the text is read in its place, by contract.
    if (static_cast<std::size_t>(end - at) < TailBytes(*at)) break;
    at += DecodeSequence(at, to);
  }
  return to;
}

// ---- The exports ---------------------------------------------------------------------------------------------------

// Nothing is refused: a surrogate becomes one unit, a value above 0x10FFFF two.
ZRRESULT ZrCreateZRSTRfromUTF32(const char32_t* text, int32_t length, ZRSTR* string) noexcept {
  if (text == nullptr || string == nullptr || length < -1) return ZR_R_INVALID_ARGUMENTS;
  auto size = static_cast<std::size_t>(length);
  if (length == -1) {
    for (size = 0; text[size] != 0;) ++size;
  }
  if (size == 0) return StoreSharedEmpty(string);

  std::size_t units = size;
  for (std::size_t at = 0; at < size; ++at) units += text[at] > 0xFFFF;
  if (units > kMostUnits) return ZR_R_INVALID_ARGUMENTS;
  ZRSTR made = *string = AllocateText(units);
  if (made == nullptr) return ZR_R_NO_MEMORY;
  for (std::size_t at = 0; at < size; ++at) made = StoreCodePoint(made, text[at]);
  return ZR_R_OK;
}

// Not inline, so that texts for CreateShort don't pay for saving the registers that this needs.
[[gnu::noinline]] static ZRRESULT CountAndCreate(const unsigned char* text, std::size_t size, ZRSTR& string) noexcept {
  std::size_t units = CountUnits(text, size);
  if (units == kNotCounted) units = 0;  // bad text makes an empty string of its own, not the shared one
  if (units > kMostUnits) return ZR_R_INVALID_ARGUMENTS;
  string = AllocateText(units);
  if (string == nullptr) return ZR_R_NO_MEMORY;
  WCHAR* const end = string + units;
  WCHAR* const stored = Decode(text, text + size, string, end);
  std::fill(stored, end, WCHAR{0});
  return stored == end ? ZR_R_OK : ZR_R_FAILED;
}

ZRRESULT ZrCreateZRSTRfromUTF8(const char* text, int32_t length, ZRSTR* string) noexcept {
  if (text == nullptr || string == nullptr || length < -1) return ZR_R_INVALID_ARGUMENTS;
  const std::size_t size = length == -1 ? std::strlen(text) : static_cast<std::size_t>(length);
  if (size == 0) return StoreSharedEmpty(string);

  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  if (CreateShort(bytes, size, *string)) return *string != nullptr ? ZR_R_OK : ZR_R_NO_MEMORY;
  return CountAndCreate(bytes, size, *string);
}

// Differs in one rule: a length of 0 is refused.
ZRRESULT ZrUTF8toZRSTR(const char* text, int32_t length, ZRSTR* string) noexcept {
  if (length == 0) return ZR_R_INVALID_ARGUMENTS;
  return ZrCreateZRSTRfromUTF8(text, length, string);
}
