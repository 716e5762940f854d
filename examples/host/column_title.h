// The first line of a CSV file: titles, and the types that they promise, such as "Radius km:R8".

#ifndef EXAMPLES_HOST_COLUMN_TITLE_H
#define EXAMPLES_HOST_COLUMN_TITLE_H

#include <zrcore/variant.h>

#include <cstdint>

#include "code_units.h"

struct ColumnTitle {
  WideView text;  // without the type; within what was read
  std::uint16_t type;
};

/// ReadColumnTitle tells a title from its type: a tag's name without its ZR_VT_, behind the last colon. A title without
/// a type that it knows is all text, and so is its column.
ColumnTitle ReadColumnTitle(WideView text);

/// TypeName is such as "R8".
const char* TypeName(std::uint16_t type);

#endif
