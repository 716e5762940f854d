// The titles in the first line of a CSV file, each with an optional type, such as "Radius km:R8".

#ifndef EXAMPLES_HOST_COLUMN_TITLE_H
#define EXAMPLES_HOST_COLUMN_TITLE_H

#include <zrcore/variant.h>

#include <cstdint>

#include "code_units.h"

struct ColumnTitle {
  WideView text;  // without the type; a part of the text that was read, so it is valid only as long as that text
  std::uint16_t type;
};

/// ReadColumnTitle separates a title from its type. The type is the name of a tag without ZR_VT_, after the last colon.
/// If that part is missing or is not a known type, the whole text is the title and the type is ZR_VT_STR.
ColumnTitle ReadColumnTitle(WideView text);

/// TypeName returns the name of a type that ReadColumnTitle knows, such as "R8"; "?" for any other type.
const char* TypeName(std::uint16_t type);

#endif
