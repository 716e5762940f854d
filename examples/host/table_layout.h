// Lays out a table of texts as lines for a terminal.

#ifndef EXAMPLES_HOST_TABLE_LAYOUT_H
#define EXAMPLES_HOST_TABLE_LAYOUT_H

#include <cstddef>
#include <vector>

#include "code_units.h"

using TableRow = std::vector<WideText>;

/// Alignment is the horizontal alignment of a column. ByContent aligns numbers to the right and other texts to the
/// left.
enum class Alignment { ByContent, Left, Right };

/// LayOutTable returns the rows as a table with a frame.
///
/// If the table would be wider than `width`, the widest columns become narrower and their cells take several lines.
/// Columns have a minimum width, and numbers are never broken, so a table with many columns may stay too wide.
///
/// @param rows        the first row contains the titles. All rows must have the same number of cells, at least one.
/// @param alignments  one per column.
/// @param width       in columns of the terminal; 0 means no limit.
WideText LayOutTable(const std::vector<TableRow>& rows, const std::vector<Alignment>& alignments, std::size_t width);

#endif
