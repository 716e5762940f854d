// Real numbers in 16-bit text, parsed and formatted as the C library does in its current locale: the decimal point is
// the locale's, everything else is as in the C locale.

#pragma once

#include "text/number_text.h"
#include "zrcore/string.h"

struct CReadReal {
  double value;
  std::size_t end;  // after the number; 0 if the text doesn't begin with a number
};

// Parses what strtod parses: white space, a sign, digits with a point and an exponent, hexadecimal digits after "0x",
// infinities and NaN by their names. A number that is too large becomes infinite. A number that is too small becomes 0
// or the nearest subnormal number.
//
// Plain decimal numbers of ordinary length need no memory. For all others it allocates, and throws std::bad_alloc when
// out of memory.
[[nodiscard]] CReadReal ReadReal(CTextView text);

// Makes a new string of what printf writes for "%f": six digits after the point, rounded from the exact value of the
// number. A tie is rounded to the even digit: 0.0078125 -> "0.007812". Returns null when out of memory.
[[nodiscard]] ZRSTR NewFixedText(double value) noexcept;
