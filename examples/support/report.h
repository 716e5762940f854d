// The report of the demo: the values of the object as tables and lines of text.

#ifndef EXAMPLES_SUPPORT_REPORT_H
#define EXAMPLES_SUPPORT_REPORT_H

#include <zr/array.hpp>

#include <string>
#include <vector>

#include "support/csv.h"
#include "support/table.h"
#include "support/typed_text.h"

class TableReport {
 public:
  /// @param lines  the file whose columns were passed to the object. It must not be destroyed before the report.
  explicit TableReport(const std::vector<CsvLine>& lines);

  /// AddColumn adds the next column: its values, and one code per value. A cell whose code is a failure shows the text
  /// of the file and a mark.
  void AddColumn(uint16_t type, zr::AnyArray values, const zr::Array<int32_t>& codes);

  /// Print prints the columns, the summary (see IBodyTable::Summary) and the cells that didn't convert.
  void Print(const zr::Array<zr::Variant>& summary) const;

 private:
  struct Column {
    std::string title;
    uint16_t type;
    int decimals;  // the largest number of digits after a point
  };

  const std::vector<CsvLine>& lines_;
  std::vector<Column> columns_;
  std::vector<TableRow> cells_;
  std::vector<std::string> failures_;
};

#endif
