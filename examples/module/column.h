// One column of the table: converting its texts, and summarising its values.

#ifndef EXAMPLES_MODULE_COLUMN_H
#define EXAMPLES_MODULE_COLUMN_H

#include <zrcore/zrcore.h>

#include "owners.h"

struct TableColumn {
  StringOwner title;
  uint16_t type = ZR_VT_EMPTY;
  CVariantOwner values;  // an array of the type
  CVariantOwner codes;   // an array of int32_t with as many elements: ZR_R_OK, or the reason why there is no value
};

/// ReadColumn sets the type, the values and the codes of `column` from an array of strings. A failure doesn't change
/// `column`.
///
/// @throws std::bad_alloc when out of memory.
/// @return ZR_R_OK; ZR_R_NOT_SUPPORTED if arrays can't have elements of `type`; ZR_R_INVALID_OBJECT_STATE if another
///         call holds the access flag of `texts`.
ZRRESULT ReadColumn(ZRSAFEARRAY texts, uint16_t type, TableColumn& column);

/// Summarize writes one row of the summary that IBodyTable::Summary describes.
///
/// @param summary  an array of variants with two dimensions and more than `row` rows.
void Summarize(const TableColumn& column, ZRSAFEARRAY summary, uint32_t row);

#endif
