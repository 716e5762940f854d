// The fields of one line of a CSV file, as positions in the line.

#ifndef EXAMPLES_HOST_CSV_LINE_H
#define EXAMPLES_HOST_CSV_LINE_H

#include <cstddef>
#include <vector>

#include "code_units.h"

/// CsvField is the position of a field's content in the line, without the quotation marks around it.
struct CsvField {
  std::size_t begin = 0;
  std::size_t length = 0;
  bool isQuoted = false;  // if true, each quotation mark in the content is written twice
};

enum class CsvProblem { None, OpenQuotes, TextAfterQuotes };

/// CsvLine contains the fields of a line. If there is a problem, the last field in `fields` is the one that has it.
struct CsvLine {
  std::vector<CsvField> fields;
  CsvProblem problem = CsvProblem::None;
};

/// SplitCsvLine finds the fields of a line. There is always at least one. A quotation mark inside an unquoted field is
/// an ordinary character.
CsvLine SplitCsvLine(WideView line);

/// FieldText returns the content of a field of this line, with doubled quotation marks reduced to one.
WideText FieldText(WideView line, const CsvField& field);

#endif
