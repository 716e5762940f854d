// A CSV file as counted strings, one a line. What is inside a line is the table's business.

#ifndef EXAMPLES_HOST_CSV_FILE_H
#define EXAMPLES_HOST_CSV_FILE_H

#include <cstddef>
#include <string>
#include <vector>

#include "host/string_book.h"

struct CsvFileLine {
  std::size_t number = 0;  // of the line in the file where it begins, from 1
  ZRSTR text = nullptr;    // without its line end; lent by the book
};

/// ReadCsvFile reads UTF-8 with either kind of line end and with or without a byte order mark; the last line may lack
/// its end. A line break in quotation marks belongs to the line.
///
/// Throws std::runtime_error, with one sentence that names the file, if it can't be read or is no UTF-8.
std::vector<CsvFileLine> ReadCsvFile(const std::string& path, CStringBook& book);

#endif
