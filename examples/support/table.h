// Tables for a terminal.

#ifndef EXAMPLES_SUPPORT_TABLE_H
#define EXAMPLES_SUPPORT_TABLE_H

#include <string>
#include <vector>

using TableRow = std::vector<std::string>;

enum class ColumnKind {
  Text,   // aligned to the left; shortened if the table is too wide
  Value,  // aligned to the left
  Number  // aligned to the right
};

/// DrawTable returns the rows as a table with a frame.
///
/// @param rows   UTF-8. The first row contains the titles. Each row has one cell per column.
/// @param width  in columns of the terminal. The table may be wider if it has many columns.
std::string DrawTable(const std::vector<TableRow>& rows, const std::vector<ColumnKind>& columns, std::size_t width);

#endif
