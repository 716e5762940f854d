// The slow path of reading a number at its place.

#include "time/time_digits.h"

#include <algorithm>

int32_t ReadIrregularPlace(CTextView text, std::size_t at, std::size_t width) noexcept {
  return static_cast<int32_t>(
      ReadInteger<int64_t>(CTextView(text.data() + at, std::min(width, text.size() - at))).value);
}
