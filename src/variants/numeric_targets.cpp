// Conversions to numbers.

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

// Calls `take` with the number of a record, in the widest type of its kind, which holds it exactly.
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

template <class Target>
struct CParsed {
  Target number;
  bool isWhole;  // the text ends with the number, or with the suffix behind it
  bool isClamped = false;
};

template <class Integer>
static CParsed<Integer> ParseInteger(CTextView text, unsigned base) noexcept {
  const auto [value, end] = ReadInteger<Integer>(text, base);
  return {value, EndsAt(text, end, 'd')};
}

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

// Each target's own way to read a number. A text is hexadecimal if it begins with the prefix and goes on behind it.
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
    static_assert(std::numeric_limits<Target>::is_iec559);  // so that a number too large for it becomes infinite
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

// The words that stand for a number, in any case: 1, 0, or -1 for any other text.
static int NumberOfWord(ZRSTR text) noexcept {
  static constexpr auto kTrue = WideLiteral("TRUE");
  static constexpr auto kFalse = WideLiteral("FALSE");
  static constexpr auto kLongTrue = WideLiteral("ZR_TRUE");
  static constexpr auto kLongFalse = WideLiteral("ZR_FALSE");
  const auto is = [text](const auto& word) { return ZrWCHARCompareNoCase(text, word.data()) == 0; };
  if (is(kTrue) || is(kLongTrue)) return 1;
  return is(kFalse) || is(kLongFalse) ? 0 : -1;
}

// Stores a number and the zeros behind it in one step, so that whoever reads the payload needn't wait for two.
template <class Target>
static void Store(Target number, ZRVARIANTVALUE& value) noexcept {
  ZRVARIANTVALUE whole{};
  std::memcpy(&whole, &number, sizeof number);
  value = whole;
}

template <class Target>
static ZRRESULT ParseNumber(ZRSTR text, ZRVARIANTVALUE& value) {
  const CParsed<Target> parsed = Parse<Target>(ViewOf(text));
  Store(parsed.number, value);
  if (parsed.isWhole) return parsed.isClamped ? ZR_R_FAILED : ZR_R_OK;
  const int word = NumberOfWord(text);
  if (word < 0) return ZR_R_FAILED;
  Store(static_cast<Target>(word), value);
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
      return ZR_R_OK;  // none: 0 stays
    case Rule::Parse:
      return ParseNumber<Target>(source.Value.string, value);
    default:
      return ZR_R_NOT_SUPPORTED;  // of other columns
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

ZRRESULT ToBool(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  const ZRRESULT result = ToNumber<uint8_t>(rule, source, value);
  if (result == ZR_R_OK) value.boolean = value.boolean != 0;
  return result;
}

ZRRESULT ToChar32(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  if (rule != Rule::FirstCodePoint) return ToNumber<uint32_t>(rule, source, value);
  char32_t codePoint = 0;
  int32_t capacity = 1;
  const ZRRESULT result = ZrCreateUTF32fomZRSTR(source.Value.string, -1, &codePoint, &capacity);
  value.char32 = codePoint;
  return result;
}
