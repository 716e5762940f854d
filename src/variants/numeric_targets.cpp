// Conversions to numbers, booleans and code points.
//
// A number converts by the range rule of number_rule.h. A text converts by rules that differ from target to target,
// because callers rely on what each target accepts:
//
//     text       I4             UI8            R8         R4
//     "42"       42             42             42         42
//     " 42"      42             42             42         42          white space may precede a number
//     "42 "      fails          fails          fails      fails       but must not follow it
//     "42days"   42             42             fails      fails       'd' ends an integer, 'f' a real number
//     ""         0              0              0          0           no digits, but the end is accepted
//     "dog"      0              0              fails      fails       no digits, but the suffix is accepted
//     "0x1F"     31             31             31         31
//     "0x"       fails          fails          fails      fails       the 0 is parsed, and 'x' is not the end
//     "-1"       -1             fails          -1         -1
//     "1e400"    fails          fails          infinity   infinity
//     "99...9"   fails          2^64 - 1       1e..       1e..        64-bit integers saturate
//     "true"     1              1              1          1           words are tried last
//
// Target functions store the whole payload with one 8-byte store; see Store.

#include "variants/numeric_targets.h"

#include <algorithm>
#include <concepts>
#include <cstring>
#include <limits>

#include "text/code_units.h"
#include "text/counted_string.h"
#include "text/real_text.h"
#include "variants/number_rule.h"
#include "zrcore/unicode.h"

// ---- Numbers -------------------------------------------------------------------------------------------------------

// Calls `use` with the number of a record. Integers arrive as int64_t, or as uint64_t if they are unsigned and 64 bits
// wide, so that `use` is instantiated for four types instead of ten. Both types represent the number exactly.
template <class Use>
static ZRRESULT WithNumber(const ZRVARIANT& source, Use&& use) {
  const ZRVARIANTVALUE& value = source.Value;
  switch (source.Type & ZR_VT_TYPEMASK) {
    case ZR_VT_I1:
      return use(int64_t{value.i1});
    case ZR_VT_I2:
      return use(int64_t{value.i2});
    case ZR_VT_I4:
      return use(int64_t{value.i4});
    case ZR_VT_I8:
    case ZR_VT_TIME:
    case ZR_VT_DATETIME:
    case ZR_VT_CY:
      return use(value.i8);
    case ZR_VT_UI1:
    case ZR_VT_BYTE:
      return use(int64_t{value.ui1});
    case ZR_VT_UI2:
    case ZR_VT_WORD:
      return use(int64_t{value.ui2});
    case ZR_VT_UI4:
    case ZR_VT_DWORD:
    case ZR_VT_CHAR32:
      return use(int64_t{value.ui4});
    case ZR_VT_UI8:
    case ZR_VT_QWORD:
      return use(value.ui8);
    case ZR_VT_R4:
      return use(value.r4);
    case ZR_VT_R8:
      return use(value.r8);
    default:
      return ZR_R_NOT_SUPPORTED;
  }
}

// ---- Text ----------------------------------------------------------------------------------------------------------

// A number in a text. It is stored even if the text is not a number, and then the target function fails.
template <class Target>
struct CParsed {
  Target number;
  bool isWhole;            // the end of the text, a zero unit or the suffix letter follows the number
  bool isClamped = false;  // the number in the text is outside the range of Target, and `number` is the nearest bound
};

// Parses a 64-bit integer, saturating. A text without digits is the number 0 that ends at 0: so an empty text, and a
// text that begins with the suffix such as "dog", count as whole. Callers rely on that.
template <class Integer>
static CParsed<Integer> ParseInteger(CTextView text, unsigned base) noexcept {
  const auto [value, end] = ReadInteger<Integer>(text, base);
  return {value, EndsAt(text, end, 'd')};
}

// Parses an integer of up to 32 bits. Unlike a 64-bit integer, it fails if the text is out of range; for that it must
// be parsed in a wider type, where it can be compared.
template <class Narrow>
static CParsed<Narrow> ParseClamped(CTextView text, unsigned base) noexcept {
  using Limits = std::numeric_limits<Narrow>;
  const CParsed<int64_t> parsed = ParseInteger<int64_t>(text, base);
  const int64_t clamped = std::clamp<int64_t>(parsed.number, Limits::min(), Limits::max());
  return {static_cast<Narrow>(clamped), parsed.isWhole, clamped != parsed.number};
}

static bool HasMinus(CTextView text) noexcept {
  std::size_t at = 0;
  while (at < text.size() && IsSpace(text[at])) ++at;
  return at < text.size() && text[at] == '-';
}

// Parses a number as the target requires. A text is hexadecimal if it begins with "0x" or "0X" and has at least one
// unit after the prefix; white space and a sign must not precede it.
//
// float and double   hexadecimal texts are signed integers, of 32 bits for float and 64 bits for double. All others are
//                    what strtod accepts, which includes hexadecimal fractions after a sign or white space.
// uint64_t           the integer parser wraps negative numbers as strtoull does, so "-1" would become 2^64 - 1. A
//                    number below 0 fails here first. "-0" is not below 0, so the sign alone does not decide.
// int64_t            saturates.
// other integers     out of range fails; a negative number is out of range for an unsigned target.
template <class Target>
static CParsed<Target> Parse(CTextView text) {
  const bool isHexadecimal = text.size() >= 3 && text[0] == '0' && (text[1] | 0x20) == 'x';
  const unsigned base = isHexadecimal ? 16 : 10;
  if constexpr (std::floating_point<Target>) {
    if (isHexadecimal && std::same_as<Target, float>) {
      const CParsed<int32_t> parsed = ParseClamped<int32_t>(text, base);
      return {static_cast<Target>(parsed.number), parsed.isWhole, parsed.isClamped};
    }
    if (isHexadecimal) {
      const CParsed<int64_t> parsed = ParseInteger<int64_t>(text, base);
      return {static_cast<Target>(parsed.number), parsed.isWhole};
    }
    static_assert(std::numeric_limits<Target>::is_iec559);  // a double too large for a float becomes infinite
    const CReadReal read = ReadReal(text);
    return {static_cast<Target>(read.value), EndsAt(text, read.end, 'f')};
  } else if constexpr (std::same_as<Target, uint64_t>) {
    if (HasMinus(text) && ReadReal(text).value < 0.0) return {0, false};
    return ParseInteger<uint64_t>(text, base);
  } else if constexpr (std::same_as<Target, int64_t>) {
    return ParseInteger<int64_t>(text, base);
  } else {
    return ParseClamped<Target>(text, base);
  }
}

// The number that a word stands for, in any mixture of upper and lower case: 1 or 0. Returns -1 for all other texts.
static int NumberOfWord(ZRSTR text) noexcept {
  static constexpr auto kTrue = WideLiteral("TRUE");
  static constexpr auto kFalse = WideLiteral("FALSE");
  static constexpr auto kLongTrue = WideLiteral("ZR_TRUE");
  static constexpr auto kLongFalse = WideLiteral("ZR_FALSE");
  const auto is = [text](const auto& word) { return ZrWCHARCompareNoCase(text, word.data()) == 0; };
  if (is(kTrue) || is(kLongTrue)) return 1;
  return is(kFalse) || is(kLongFalse) ? 0 : -1;
}

// Stores a number, with zeros in the remaining bytes, as one 8-byte store. The payload is usually read as 8 bytes soon
// afterwards. A narrow store would make that load wait until the store has reached the cache, because a processor
// cannot forward a narrow store to a wider load.
template <class Target>
static void Store(Target number, ZRVARIANTVALUE& value) noexcept {
  ZRVARIANTVALUE whole{};
  std::memcpy(&whole, &number, sizeof number);
  value = whole;
}

// The parsed number is stored first, so it is in `number` after a failure, too. Then words are tried. For a real target
// "FALSE" is a number already, without digits and ended by its suffix 'F'; the result is 0 either way.
template <class Target>
ZRRESULT ParseNumber(ZRSTR text, Target& number) {
  const CParsed<Target> parsed = Parse<Target>(ViewOf(text));
  number = parsed.number;
  if (parsed.isWhole) return parsed.isClamped ? ZR_R_FAILED : ZR_R_OK;
  const int word = NumberOfWord(text);
  if (word < 0) return ZR_R_FAILED;
  number = static_cast<Target>(word);
  return ZR_R_OK;
}

// ---- The targets ---------------------------------------------------------------------------------------------------

template <class Target>
ZRRESULT ToNumber(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  switch (rule) {
    case Rule::Range:
      return WithNumber(source, [&value](auto from) {
        Target number;
        if (!StoreNumber(from, number)) return ZR_R_INVALID_ARGUMENTS;
        Store(number, value);
        return ZR_R_OK;
      });
    case Rule::RawByte:
      Store(static_cast<Target>(source.Value.boolean), value);
      return ZR_R_OK;
    case Rule::FirstBytes:
      (void)ZrReadBlobPos(source.Value.blob, &value, 0, sizeof(Target));
      return ZR_R_OK;  // a short read is a success, and without any bytes the number stays 0
    case Rule::Parse: {
      Target number;
      const ZRRESULT result = ParseNumber(source.Value.string, number);
      Store(number, value);
      return result;
    }
    default:
      return ZR_R_NOT_SUPPORTED;  // rules of other columns
  }
}

template ZRRESULT ToNumber<int8_t>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<int16_t>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<int32_t>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<int64_t>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<uint8_t>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<uint16_t>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<uint32_t>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<uint64_t>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<float>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
template ZRRESULT ToNumber<double>(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);

template ZRRESULT ParseNumber(ZRSTR text, int8_t& number);
template ZRRESULT ParseNumber(ZRSTR text, int16_t& number);
template ZRRESULT ParseNumber(ZRSTR text, int32_t& number);
template ZRRESULT ParseNumber(ZRSTR text, int64_t& number);
template ZRRESULT ParseNumber(ZRSTR text, uint8_t& number);
template ZRRESULT ParseNumber(ZRSTR text, uint16_t& number);
template ZRRESULT ParseNumber(ZRSTR text, uint32_t& number);
template ZRRESULT ParseNumber(ZRSTR text, uint64_t& number);
template ZRRESULT ParseNumber(ZRSTR text, float& number);
template ZRRESULT ParseNumber(ZRSTR text, double& number);

// A number is converted as to an unsigned byte first. So 256 is out of range and not true, and -1 is refused.
ZRRESULT ToBool(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  const ZRRESULT result = ToNumber<uint8_t>(rule, source, value);
  if (result == ZR_R_OK) value.boolean = value.boolean != 0;
  return result;
}

// The writer stops after one code point, which is as many as the buffer holds. A lone surrogate at the beginning counts
// as written but stores nothing, so the result is 0; the terminator of an empty text is 0 as well.
ZRRESULT ToChar32(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  if (rule != Rule::FirstCodePoint) return ToNumber<uint32_t>(rule, source, value);
  char32_t codePoint = 0;
  int32_t capacity = 1;
  const ZRRESULT result = ZrCreateUTF32fomZRSTR(source.Value.string, -1, &codePoint, &capacity);
  value.char32 = codePoint;
  return result;
}
