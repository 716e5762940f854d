// The text of a REF. A text is accepted only if the words that it denotes would be written back as the same text.
// The parser doesn't write them back to find out. It accepts exactly the numbers for which this is true: a single zero,
// or digits that begin with another digit than zero and fit 32 bits.
//
//     "1.2.3.4.5.6", " 1.2.3.4.5.6 "       Read
//     "01.2.3.4.5.6", "+1.2.3.4.5.6"       NotCanonical: six fields in another form
//     "1.2.3.4.5", "1..3.4.5.6", "abc"     NotSixFields

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

// Returns why a trimmed text was refused. This looks at the whole text, not only at where the parser stopped, because
// the reason depends on the number of fields: "x.2.3" has too few, and "x.2.3.4.5.6" has a field in the wrong form.
static RefReading ClassifyRefused(CTextView text) noexcept {
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
    if (word != 0 && (at == end || *at++ != '.')) return ClassifyRefused(text);
    // The subtraction is unsigned: every unit that isn't a digit, even one below '0', becomes a number above 9.
    const auto digitAt = [end](const WCHAR* place) { return place != end ? *place - unsigned{'0'} : 10u; };
    uint64_t number = digitAt(at);
    if (number > 9) return ClassifyRefused(text);
    ++at;
    if (number != 0) {  // after a zero no digit may follow; the next turn refuses it because it isn't a dot
      for (unsigned digit; (digit = digitAt(at)) <= 9; ++at) {
        number = number * 10 + digit;
        if (number > 0xFFFFFFFF) return ClassifyRefused(text);
      }
    }
    ref.words[word] = static_cast<uint32_t>(number);
  }
  // A zero unit after the last number ends the text, because the comparison with the text written back would end there.
  // But the dots are counted in the whole text, so another dot after the zero unit is refused.
  if (at != end && (*at != 0 || std::find(at, end, WCHAR{'.'}) != end)) return ClassifyRefused(text);
  return RefReading::Read;
}

// Counts the digits first, so that the string has exactly the right length. A dot is written after each word, and the
// terminator replaces the last one.
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
