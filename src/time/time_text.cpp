// The slow path of reading a number at its place, and making a string from the units in a buffer.

#include "time/time_text.h"

#include <algorithm>

int32_t ReadIrregularPlace(CTextView text, std::size_t at, std::size_t width) noexcept {
  return static_cast<int32_t>(
      ReadInteger<int64_t>(CTextView(text.data() + at, std::min(width, text.size() - at))).value);
}

// ZrCreateStringByteLen rather than ZrCreateStringLen, because the buffer has no terminator.
ZRSTR NewString(const WCHAR* begin, const WCHAR* end) noexcept {
  return ZrCreateStringByteLen(begin,
                               static_cast<uint32_t>((end - begin) * static_cast<std::ptrdiff_t>(sizeof(WCHAR))));
}
