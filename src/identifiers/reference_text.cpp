// The text of a REF. What is read is accepted only if it would be written back the same, which is decided on the way:
// each number is a zero alone, or starts with another digit and fits 32 bits; anything else reads as a number that
// writes back differently.

#include "identifiers/reference_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "text/counted_string.h"
#include "text/decimal_digits.h"
#include "text/number_text.h"

static constexpr std::size_t kWords = std::size(ZRREF{}.words);

static CTextView Trimmed(CTextView text) noexcept {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

// Which of the two ways of being wrong it is: callers tell them by what is left in the out-value.
static RefReading Refusal(CTextView text) noexcept {
  std::size_t dots = 0, fieldUnits = 0;
  bool hasEmptyField = false;
  for (const WCHAR unit : text) {
    if (unit != '.') {
      ++fieldUnits;
      continue;
    }
    ++dots;
    hasEmptyField = hasEmptyField || fieldUnits == 0;
    fieldUnits = 0;
  }
  return dots != kWords - 1 || hasEmptyField || fieldUnits == 0 ? RefReading::NotSixFields : RefReading::NotCanonical;
}

RefReading ReadRef(CTextView text, ZRREF& ref) noexcept {
  text = Trimmed(text);
  const WCHAR* at = text.data();
  const WCHAR* const end = at + text.size();
  for (std::size_t word = 0; word < kWords; ++word) {
    if (word != 0 && (at == end || *at++ != '.')) return Refusal(text);
    const auto digitAt = [end](const WCHAR* place) { return place != end ? *place - unsigned{'0'} : 10u; };
    uint64_t number = digitAt(at);
    if (number > 9) return Refusal(text);
    ++at;
    if (number != 0) {
      for (unsigned digit; (digit = digitAt(at)) <= 9; ++at) {
        number = number * 10 + digit;
        if (number > 0xFFFFFFFF) return Refusal(text);
      }
    }
    ref.words[word] = static_cast<uint32_t>(number);
  }
  // A zero unit ends the comparison with what is written back, but a dot behind it is one too many.
  if (at != end && (*at != 0 || std::find(at, end, WCHAR{'.'}) != end)) return Refusal(text);
  return RefReading::Read;
}

ZRSTR WriteRef(const ZRREF& ref) noexcept {
  std::array<std::size_t, kWords> digits;
  std::size_t units = kWords;  // the dots and the terminator
  for (std::size_t word = 0; word < kWords; ++word) units += digits[word] = CountDecimalDigits(ref.words[word]);
  ZRSTR string = AllocateString(units * sizeof(WCHAR));
  if (string == nullptr) return nullptr;
  WCHAR* at = string;
  for (std::size_t word = 0; word < kWords; ++word) {
    at = WriteDecimalDigits(at, ref.words[word], digits[word]);
    *at++ = WCHAR{'.'};
  }
  at[-1] = 0;
  return string;
}

void WriteSignedRef(const ZRREF& ref, WCHAR (&text)[kSignedRefUnits]) noexcept {
  WCHAR* at = text;
  for (const uint32_t word : ref.words) {
    at = WritePadded(at, static_cast<int32_t>(word), 0, Pad::Blanks);
    *at++ = WCHAR{'.'};
  }
  at[-1] = 0;
}
