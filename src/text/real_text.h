// Real numbers in 16-bit text, read and written as the C library does in the process's current locale: the decimal
// point is the locale's, everything else that of the C locale.

#pragma once

#include "text/number_text.h"
#include "zrcore/string.h"

struct CReadReal {
  double value;
  std::size_t end;  // behind what was read; 0 if the text doesn't begin with a number
};

// What strtod reads: white space, a sign, digits with a point and an exponent, hexadecimal ones behind "0x", infinities
// and NaN by their names. What is too large becomes infinite, what is too small 0 or the nearest number there is.
// Allocates, and may throw std::bad_alloc, for other than plain decimal numbers of ordinary length alone.
[[nodiscard]] CReadReal ReadReal(CTextView text);

// A new string of what printf's "%f" writes, six digits behind the point, exactly rounded: to even where two are
// equally near. Null when memory is exhausted.
[[nodiscard]] ZRSTR NewFixedText(double value) noexcept;
