// The text of a value in a table.

#ifndef EXAMPLES_HOST_VALUE_TEXT_H
#define EXAMPLES_HOST_VALUE_TEXT_H

#include <zrcore/variant.h>

#include <cstddef>

#include "code_units.h"

/// IsNumber returns whether the values of this type are numbers; IsReal whether they can have a fraction.
bool IsNumber(uint16_t type) noexcept;
bool IsReal(uint16_t type) noexcept;

/// ValueText returns the text of a value, shortened for a table. Zeros at the end of a fraction or of a REF are left
/// out, and so is the time of day of a date at midnight. A date begins with its day of the week.
///
/// @param fraction  for a real number, the maximum number of digits after the decimal point, at most 6; the number is
///                  rounded. For a date, 0 leaves out the time of day.
WideText ValueText(const ZRVARIANT& value, unsigned fraction = 6);

/// FractionLength returns the number of digits after the decimal point in the text of a number or a time of day.
unsigned FractionLength(const WideText& text);

/// FillFraction appends zeros to the text of a number until it has `length` digits after the decimal point.
void FillFraction(WideText& number, unsigned length);

#endif
