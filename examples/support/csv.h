// CSV files in UTF-8.

#ifndef EXAMPLES_SUPPORT_CSV_H
#define EXAMPLES_SUPPORT_CSV_H

#include <cstddef>
#include <string>
#include <vector>

struct CsvLine {
  std::size_t number;  // of the line of the file where it begins, counted from 1
  std::vector<std::string> fields;
};

/// ReadCsv reads a CSV file. The first line contains the titles; all lines have as many fields as the first one.
///
/// Fields are separated by commas. A field in quotation marks may contain commas, line breaks, and quotation marks that
/// are written twice. Lines end with LF or CR LF. A byte order mark at the start and empty lines are skipped.
///
/// @throws std::runtime_error, with a message that names the file and the line, if the file can't be read, is not
/// UTF-8,
///         is empty, or has a line with the wrong number of fields or misplaced quotation marks.
std::vector<CsvLine> ReadCsv(const std::string& path);

#endif
