// Plain numbers take the language's conversions, which know no locale and need no terminator; the rest goes through the
// C library's.

#include "text/real_text.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <tuple>

#include "platform/locale_text.h"
#include "text/decimal_digits.h"

// ---- Reading -------------------------------------------------------------------------------------------------------

static constexpr bool IsPlain(WCHAR unit) noexcept {
  return (unit >= '0' && unit <= '9') || unit == '.' || unit == '-' || unit == '+' || unit == 'e' || unit == 'E';
}

// The number that fills the text up to its end or to an 'f'; false for anything that needs a closer look.
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
  const bool isEnd = length == text.size() || text[length] == 0 || (text[length] | 0x20) == 'f';
  if (!isEnd || plain[0] == '+' || (hasPoint && PlatformDecimalPoint().unit != '.')) return false;
  const auto [end, error] = std::from_chars(plain.data(), plain.data() + length, read.value);
  if (error != std::errc()) return false;
  read.end = static_cast<std::size_t>(end - plain.data());
  return true;
}

// Through the C library, with the locale's point in its own spelling. A unit that isn't ASCII ends every number.
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
  if (pointAt != std::string::npos && length > pointAt) length -= std::string_view(point.bytes.data()).size() - 1;
  return {value, length};
}

CReadReal ReadReal(CTextView text) {
  CReadReal read;
  return ReadPlainReal(text, read) ? read : ReadAnyReal(text);
}

// ---- Writing -------------------------------------------------------------------------------------------------------

// A 64 by 64 bit product. Both compilers have it; the language has no name for it.
__extension__ using CWideNumber = unsigned __int128;

static constexpr double kExactLimit = 0x1p44;  // times a million, the numbers below fit 64 bits

// A number of the range 0 to kExactLimit in millionths, rounded to even from its exact value.
static uint64_t RoundToMillionths(double value) noexcept {
  const auto bits = std::bit_cast<uint64_t>(value);
  constexpr int kFractionBits = std::numeric_limits<double>::digits - 1;
  constexpr int kBias = 1023 + kFractionBits;
  const int exponent = static_cast<int>(bits >> kFractionBits);
  const uint64_t fraction = bits & ((uint64_t{1} << kFractionBits) - 1);
  const int shift = kBias - exponent;  // value = significand / 2^shift
  if (shift > 80) return 0;            // below 2^-27: far from half a millionth, and nearly all of the subnormals
  const CWideNumber product = CWideNumber{fraction | uint64_t{1} << kFractionBits} * 1'000'000;
  const CWideNumber half = CWideNumber{1} << (shift - 1);
  const auto quotient = static_cast<uint64_t>(product >> shift);
  const CWideNumber rest = product & ((half << 1) - 1);
  return quotient + (rest > half || (rest == half && quotient % 2 != 0) ? 1 : 0);
}

static WCHAR PointUnit() noexcept { return PlatformDecimalPoint().unit; }

static CTextView WriteMillionths(uint64_t millionths, bool isNegative, CFixedText& buffer) noexcept {
  WCHAR* const end = buffer.data() + 32;
  auto fraction = static_cast<uint32_t>(millionths % 1'000'000);
  WCHAR* at = end;
  for (int pair = 0; pair < 3; ++pair, fraction /= 100) WriteTwoDigits(at -= 2, fraction % 100);
  *--at = PointUnit();
  at = WriteDecimalBackwards(at, millionths / 1'000'000);
  if (isNegative) *--at = '-';
  return {at, static_cast<std::size_t>(end - at)};
}

CTextView WriteFixed(double value, CFixedText& buffer) noexcept {
  const bool isNegative = std::bit_cast<int64_t>(value) < 0;
  const double magnitude = isNegative ? -value : value;
  if (magnitude < kExactLimit) return WriteMillionths(RoundToMillionths(magnitude), isNegative, buffer);

  std::array<char, std::tuple_size_v<CFixedText>> narrow;
  const auto written = std::to_chars(narrow.data(), narrow.data() + narrow.size(), value, std::chars_format::fixed, 6);
  std::size_t length = 0;
  for (const char* at = narrow.data(); at != written.ptr; ++at) {
    buffer[length++] = *at == '.' ? PointUnit() : static_cast<WCHAR>(*at);
  }
  return {buffer.data(), length};
}
