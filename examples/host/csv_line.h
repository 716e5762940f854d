// The fields of one CSV line, as places in it.

#ifndef EXAMPLES_HOST_CSV_LINE_H
#define EXAMPLES_HOST_CSV_LINE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// CsvField is where the content of a field lies, without the quotation marks around it.
struct CsvField {
  std::size_t begin = 0;
  std::size_t length = 0;
  bool isQuoted = false;  // then a quotation mark inside is written twice
};

enum class CsvProblem { None, OpenQuotes, TextBehindQuotes };

/// CsvLine is a line's fields; with a problem, those up to and including the field that has it.
struct CsvLine {
  std::vector<CsvField> fields;
  CsvProblem problem = CsvProblem::None;
};

/// SplitCsvLine finds the fields: always at least one. A quotation mark within an unquoted field is an
/// ordinary character.
CsvLine SplitCsvLine(std::u16string_view line);

/// FieldText is the content of a field of this line.
std::u16string FieldText(std::u16string_view line, const CsvField& field);

#endif
