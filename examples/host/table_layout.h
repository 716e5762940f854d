// A table of texts as lines for a terminal.

#ifndef EXAMPLES_HOST_TABLE_LAYOUT_H
#define EXAMPLES_HOST_TABLE_LAYOUT_H

#include <cstddef>
#include <vector>

#include "code_units.h"

using TableRow = std::vector<WideText>;

/// TableSide is where the cells of a column go. ByContent: numbers to the right, the rest to the left.
enum class TableSide { ByContent, Left, Right };

/// LayOutTable frames and aligns the rows.
///
/// If the table is wider than wanted, the widest columns of text become narrower and their cells go on in more lines.
/// Columns have a least width, and numbers are never broken: a table of many columns may stay too wide.
///
/// @param rows   the titles first; all of one length, which is not 0.
/// @param sides  one for each column.
/// @param width  in columns of a terminal; 0 means any.
WideText LayOutTable(const std::vector<TableRow>& rows, const std::vector<TableSide>& sides, std::size_t width);

#endif
