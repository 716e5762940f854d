// What came back from the table's object, as lines of text.

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
  /// @param table    what was handed over; outlives this.
  /// @param columns  what came back, one for each column.
  CTableText(const CsvTable& table, const std::vector<ColumnValues>& columns);

  /// Cells is the table itself, for a terminal of this width. A text that is no value is shown as it is, with a mark.
  WideText Cells(std::size_t width) const;

  /// Summary is a table of what the object tells about each column.
  WideText Summary(const CVariantOwner& summary, std::size_t width) const;

  /// Failures gives a line for each text that is no value of its column's type: where it is, and why.
  const std::vector<std::string>& Failures() const { return failures_; }

 private:
  struct ColumnText {
    std::vector<WideText> cells;
    unsigned fraction = 0;  // the most digits behind a point
  };

  ColumnText ReadColumn(std::size_t column, const ColumnValues& values);

  const CsvTable& table_;
  std::vector<ColumnText> columns_;
  std::vector<std::string> failures_;
};

#endif
