// One column: texts that became values.

#ifndef EXAMPLES_MODULE_COLUMN_H
#define EXAMPLES_MODULE_COLUMN_H

#include <zrcore/zrcore.h>

#include "owners.h"

struct TableColumn {
  StringOwner title;
  uint16_t type = ZR_VT_EMPTY;
  CVariantOwner values;  // an array of the type
  CVariantOwner codes;   // an array of int32_t, as long: ZR_R_OK where the value counts, else why there is none
};

/// ReadColumn makes a column of this type, without a title, of an array of strings.
///
/// @throws std::bad_alloc
/// @return ZR_R_OK; with the column as it was, ZR_R_NOT_SUPPORTED if there are no arrays of this type,
///         ZR_R_INVALID_OBJECT_STATE if the flag of `texts` is taken.
ZRRESULT ReadColumn(ZRSAFEARRAY texts, uint16_t type, TableColumn& column);

/// Summarize fills the column's row of the summary, which IBodyTable describes.
///
/// @param summary  an array of variants, at least as many rows as `row` needs.
void Summarize(const TableColumn& column, ZRSAFEARRAY summary, uint32_t row);

#endif
