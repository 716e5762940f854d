// A CSV file as columns with a type and rows of counted strings.

#ifndef EXAMPLES_HOST_CSV_FILE_H
#define EXAMPLES_HOST_CSV_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/string_book.h"

struct CsvColumn {
  ZRSTR title = nullptr;  // lent by the book, as all cells are
  std::uint16_t type = 0;
};

struct CsvRow {
  std::size_t line = 0;  // of the file, where the row begins, from 1
  std::vector<ZRSTR> cells;
};

struct CsvTable {
  std::vector<CsvColumn> columns;
  std::vector<CsvRow> rows;  // each with as many cells as there are columns
};

/// ReadCsvFile reads UTF-8 with either kind of line end and with or without a byte order mark; the last line may lack
/// its end. The first line holds the titles and their types; lines without a single character are passed over.
///
/// Fields are separated by commas. A field in quotation marks may hold commas, line breaks and, doubled,
/// quotation marks.
///
/// Throws std::runtime_error, with one sentence that names the file, if it can't be read, is no UTF-8 or no such table.
CsvTable ReadCsvFile(const std::string& path, CStringBook& book);

#endif
