// Parses and formats real numbers in 16-bit text.
//
// The C library's strtod defines the result of parsing, but it needs a zero-terminated text of chars, which means a
// copy on the heap. Two faster ways are tried first. Each handles only texts for which it returns the same result:
//
//   1. ReadShortReal   "-12.5"     up to 15 digits and no exponent: arithmetic alone
//   2. ReadPlainReal   "1.25e-7"   up to 48 units: std::from_chars, which knows no locale and rounds as strtod does
//   3. ReadAnyReal     " +1,5 km"  strtod, with everything that it accepts and the locale's decimal point
//
// Formatting has two ways: below 2^44 a number is rounded to millionths as an integer, above by std::to_chars.

#include "text/real_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/locale_text.h"
#include "text/counted_string.h"
#include "text/decimal_digits.h"

// ---- Reading -------------------------------------------------------------------------------------------------------

static constexpr bool IsDigit(WCHAR unit) noexcept { return unit >= '0' && unit <= '9'; }

static constexpr bool IsPlain(WCHAR unit) noexcept {
  return IsDigit(unit) || unit == '.' || unit == '-' || unit == '+' || unit == 'e' || unit == 'E';
}

// Reads a number without an exponent and with at most 15 digits. "12.5" is 125 / 10^1. A double represents both the
// digits (below 10^15) and the power of ten (up to 10^15) exactly, so the division, which rounds once, returns the
// nearest double. Returns false for any other text, and for text after the number other than a suffix 'f'.
static bool ReadShortReal(CTextView text, CReadReal& read) noexcept {
  static constexpr std::array<double, 16> kPowersOfTen = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                          1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  constexpr std::size_t kMostDigits = std::numeric_limits<double>::digits10;
  if constexpr (FLT_EVAL_METHOD != 0) return false;  // wider registers round twice: there, and to double
  const bool isNegative = !text.empty() && text[0] == '-';
  std::size_t at = isNegative ? 1 : 0;
  uint64_t digits = 0;
  // Stops one digit after the most that are accepted, which is enough to refuse the number below.
  const auto readDigits = [&] {
    const std::size_t end = std::min(text.size(), at + kMostDigits + 1);
    const std::size_t first = at;
    for (; at < end && IsDigit(text[at]); ++at) digits = digits * 10 + (text[at] - unsigned{'0'});
    return at - first;
  };
  std::size_t count = readDigits(), fraction = 0;
  if (count <= kMostDigits && at < text.size() && text[at] == '.') {
    ++at;
    fraction = readDigits();
    count += fraction;
    if (PlatformDecimalPoint().unit != '.') return false;  // looked up only for a text with a point
  }
  if (count == 0 || count > kMostDigits || !EndsAt(text, at, 'f')) return false;
  // Processors convert signed integers faster. Negating last keeps the sign of "-0".
  const auto magnitude = static_cast<double>(static_cast<int64_t>(digits));
  read = {(isNegative ? -magnitude : magnitude) / kPowersOfTen[fraction], at};
  return true;
}

// Reads the number at the beginning of a text that consists of digits, points, signs and exponents up to its end or to
// a suffix 'f'. Returns false for everything that from_chars treats differently from strtod: white space or '+' at the
// beginning, the locale's own point, hexadecimal digits, infinities, NaN, and numbers out of range.
static bool ReadPlainReal(CTextView text, CReadReal& read) noexcept {
  std::array<char, 48> plain;
  std::size_t length = 0;
  bool hasPoint = false;
  for (; length < text.size() && IsPlain(text[length]); ++length) {
    if (length == plain.size()) return false;
    plain[length] = static_cast<char>(text[length]);
    hasPoint = hasPoint || text[length] == '.';
  }
  if (length == 0) return false;
  if (!EndsAt(text, length, 'f') || plain[0] == '+' || (hasPoint && PlatformDecimalPoint().unit != '.')) return false;
  const auto [end, error] = std::from_chars(plain.data(), plain.data() + length, read.value);
  if (error != std::errc()) return false;
  read.end = static_cast<std::size_t>(end - plain.data());
  return true;
}

// Reads through strtod. The first decimal point of the text is replaced by the bytes that the C library expects, which
// can be several. A unit that isn't ASCII ends the number, so copying stops there.
static CReadReal ReadAnyReal(CTextView text) {
  const CDecimalPoint point = PlatformDecimalPoint();
  std::string narrow;
  std::size_t pointAt = std::string::npos;
  for (const WCHAR unit : text) {
    if (unit == point.unit && pointAt == std::string::npos) {
      pointAt = narrow.size();
      narrow += point.bytes.data();
    } else if (unit == 0 || unit > 0x7F) {
      break;
    } else {
      narrow += static_cast<char>(unit);
    }
  }
  char* end = nullptr;
  const double value = std::strtod(narrow.c_str(), &end);
  auto length = static_cast<std::size_t>(end - narrow.c_str());
  if (length == 0) return {0, 0};  // without a number, some C libraries return -0 for a text like "-"
  // From bytes back to units: the point is one unit, however many bytes it has.
  if (pointAt != std::string::npos && length > pointAt) length -= std::string_view(point.bytes.data()).size() - 1;
  return {value, length};
}

CReadReal ReadReal(CTextView text) {
  CReadReal read;
  return ReadShortReal(text, read) || ReadPlainReal(text, read) ? read : ReadAnyReal(text);
}

// ---- Writing -------------------------------------------------------------------------------------------------------

// A 64 by 64 bit product. Both compilers have it; the language has no name for it.
__extension__ using CUint128 = unsigned __int128;

static constexpr double kExactLimit = 0x1p44;  // 2^44 * 10^6 < 2^64

// Rounds a number from 0 to below kExactLimit to millionths, from its exact value; ties to even.
//
// The number is significand / 2^shift, with a significand of 53 bits. In millionths it is significand * 10^6 / 2^shift.
// The product has at most 73 bits, so nothing is lost in 128. The division is a shift, and the bits that it drops are
// compared with half of 2^shift.
static uint64_t RoundToMillionths(double value) noexcept {
  const auto bits = std::bit_cast<uint64_t>(value);
  constexpr int kFractionBits = std::numeric_limits<double>::digits - 1;
  constexpr int kBias = 1023 + kFractionBits;
  const int exponent = static_cast<int>(bits >> kFractionBits);
  const uint64_t fraction = bits & ((uint64_t{1} << kFractionBits) - 1);
  const int shift = kBias - exponent;
  if (shift > 80) return 0;  // below 2^-28, far from half a millionth; among these are zero and all subnormal numbers
  const CUint128 product = CUint128{fraction | uint64_t{1} << kFractionBits} * 1'000'000;
  const CUint128 half = CUint128{1} << (shift - 1);
  const auto quotient = static_cast<uint64_t>(product >> shift);
  const CUint128 rest = product & ((half << 1) - 1);
  return quotient + (rest > half || (rest == half && quotient % 2 != 0) ? 1 : 0);
}

static WCHAR PointUnit() noexcept { return PlatformDecimalPoint().unit; }

// Writes from the end: six digits in three pairs, the point, the whole part. A sign comes first.
static ZRSTR NewMillionthsText(uint64_t millionths, bool isNegative) noexcept {
  const uint64_t whole = millionths / 1'000'000;
  auto fraction = static_cast<uint32_t>(millionths % 1'000'000);
  const std::size_t length = (isNegative ? 1 : 0) + CountLongDecimalDigits(whole) + 7;
  ZRSTR string = AllocateText(length);
  if (string == nullptr) return nullptr;
  WCHAR* at = string + length;
  for (int pair = 0; pair < 3; ++pair, fraction /= 100) WriteTwoDigits(at -= 2, fraction % 100);
  *--at = PointUnit();
  WriteDecimalBackwards(at, whole);
  if (isNegative) string[0] = '-';
  return string;
}

ZRSTR NewFixedText(double value) noexcept {
  const bool isNegative = std::bit_cast<int64_t>(value) < 0;  // by the sign bit: -0.0 is "-0.000000", as printf has it
  const double magnitude = isNegative ? -value : value;
  if (magnitude < kExactLimit) return NewMillionthsText(RoundToMillionths(magnitude), isNegative);

  // Large numbers, and infinities and NaN, for which the comparison above is false. The longest text has a sign, 309
  // digits, a point and six more digits.
  std::array<char, 320> narrow;
  char* const end = std::to_chars(narrow.data(), narrow.data() + narrow.size(), value, std::chars_format::fixed, 6).ptr;
  ZRSTR string = AllocateText(static_cast<std::size_t>(end - narrow.data()));
  if (string == nullptr) return nullptr;
  const WCHAR point = PointUnit();
  std::transform(narrow.data(), end, string,
                 [point](char unit) { return unit == '.' ? point : static_cast<WCHAR>(unit); });
  return string;
}
