// Types in the titles of columns, and values as text.

#ifndef EXAMPLES_SUPPORT_TYPED_TEXT_H
#define EXAMPLES_SUPPORT_TYPED_TEXT_H

#include <zr/variant.hpp>

#include <cstdint>
#include <string>

struct ColumnTitle {
  std::string text;  // without the type
  uint16_t type;
};

/// ReadColumnTitle separates a title such as "Radius km:R8" from its type. The type is the name of a tag without
/// ZR_VT_, after the last colon. If that part is missing or is not a known type, the whole text is the title and the
/// type is ZR_VT_STR.
ColumnTitle ReadColumnTitle(const std::string& text);

/// TypeName returns the name of a type that ReadColumnTitle knows, such as "R8".
const char* TypeName(uint16_t type);

/// IsReal returns whether the values of this type are real numbers; IsNumber also accepts integers.
bool IsReal(uint16_t type);
bool IsNumber(uint16_t type);

/// Decimals returns how many digits after the point a value needs: up to 6 for a real number, 3 for a date with a time
/// of day, otherwise 0.
int Decimals(const zr::Variant& value);

/// ValueText returns the text of a value in a column whose values need this number of decimals. Zeros at the end of a
/// REF or of a time are left out. A date begins with its day of the week.
std::string ValueText(const zr::Variant& value, int decimals);

#endif
