// A CSV file in memory: columns with a title and a type, and rows of counted strings.

#ifndef EXAMPLES_HOST_CSV_FILE_H
#define EXAMPLES_HOST_CSV_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/string_tracker.h"

struct CsvColumn {
  ZRSTR title = nullptr;  // owned by the CStringTracker, like all cells
  std::uint16_t type = 0;
};

struct CsvRow {
  std::size_t line = 0;  // the line of the file where the row begins, counted from 1
  std::vector<ZRSTR> cells;
};

struct CsvTable {
  std::vector<CsvColumn> columns;
  std::vector<CsvRow> rows;  // each with as many cells as there are columns
};

/// ReadCsvFile reads a CSV file in UTF-8. Lines end with LF or CR LF; the last line may lack its end. A byte order mark
/// at the start is skipped. The first line contains the titles and their types. Empty lines are skipped.
///
/// Fields are separated by commas. A field in quotation marks may contain commas, line breaks, and quotation marks that
/// are written twice.
///
/// @param strings  owns the strings of the table. The table must not be used after `strings` is destroyed.
/// @throws std::runtime_error, with a message that names the file and the line, if the file can't be read, is not
/// UTF-8,
///         has no title line, or has a line with the wrong number of fields or misplaced quotation marks.
CsvTable ReadCsvFile(const std::string& path, CStringTracker& strings);

#endif
