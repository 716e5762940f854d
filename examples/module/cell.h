// One cell: a value of its column's type, or what it came as and why it is no such value.

#ifndef EXAMPLES_MODULE_CELL_H
#define EXAMPLES_MODULE_CELL_H

#include <zrcore/zrcore.h>

#include <string>

#include "owners.h"

struct TableCell {
  CVariantOwner value;            // empty if the cell is
  ZRRESULT conversion = ZR_R_OK;  // below zero: the value is as it came

  bool IsMissing() const noexcept { return value.Get().Type == ZR_VT_EMPTY; }
};

/// ReadCell makes a cell of this type.
///
/// A date is taken only if it reads back as it was written: the library would take 31 February, too.
///
/// @throws std::bad_alloc
TableCell ReadCell(const ZRVARIANT& source, uint16_t type);

/// IsNumber tells whether values of this type are shown as numbers, IsReal whether they have a fraction.
bool IsNumber(uint16_t type) noexcept;
bool IsReal(uint16_t type) noexcept;

/// CellText is what the table shows of a cell: nothing if it is missing, a mark behind what didn't convert.
std::u16string CellText(const TableCell& cell);

#endif
