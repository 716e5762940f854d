// The values that the object returned, as tables and lines of text.

#ifndef EXAMPLES_HOST_TABLE_TEXT_H
#define EXAMPLES_HOST_TABLE_TEXT_H

#include <cstddef>
#include <string>
#include <vector>

#include "code_units.h"
#include "host/csv_file.h"
#include "host/table_client.h"

class CTableText {
 public:
  /// @param table    the table that was passed to the object. It must not be destroyed before this.
  /// @param columns  the values that the object returned, one per column.
  CTableText(const CsvTable& table, const std::vector<ColumnValues>& columns);

  /// Cells returns the table itself, for a terminal of this width. A cell that didn't convert shows its text and a
  /// mark.
  WideText Cells(std::size_t width) const;

  /// Summary returns the summary as a table, one row per column.
  WideText Summary(const CVariantOwner& summary, std::size_t width) const;

  /// Failures returns one line of text for each cell that didn't convert: its place, its text and the reason.
  const std::vector<std::string>& Failures() const { return failures_; }

 private:
  struct ColumnText {
    std::vector<WideText> cells;
    unsigned fraction = 0;  // the largest number of digits after a decimal point
  };

  ColumnText ReadColumn(std::size_t column, const ColumnValues& values);

  const CsvTable& table_;
  std::vector<ColumnText> columns_;
  std::vector<std::string> failures_;
};

#endif
