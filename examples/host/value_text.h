// Values as a table shows them.

#ifndef EXAMPLES_HOST_VALUE_TEXT_H
#define EXAMPLES_HOST_VALUE_TEXT_H

#include <zrcore/variant.h>

#include <cstddef>

#include "code_units.h"

/// IsNumber tells whether values of this type are numbers to a reader, IsReal whether they may have a fraction.
bool IsNumber(uint16_t type) noexcept;
bool IsReal(uint16_t type) noexcept;

/// ValueText is the text that the library converts a value to, without what says nothing: zeros at the end of a
/// fraction or of a REF, the time of day of a date. A date has its day of the week.
///
/// @param fraction  the most digits behind the point of a real number, which is rounded to them; up to 6. Of a date, 0
///                  leaves out the time of day.
WideText ValueText(const ZRVARIANT& value, unsigned fraction = 6);

/// FractionLength is how many digits behind its point the text of a number or a time of day has.
unsigned FractionLength(const WideText& text);

/// FillFraction puts zeros at the end of a number until it has so many digits behind its point.
void FillFraction(WideText& number, unsigned length);

#endif
