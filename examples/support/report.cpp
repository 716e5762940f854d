// Converts the values of the object to texts, marks the cells that did not convert, and prints both tables.

#include "support/report.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "support/arguments.h"
#include "support/environment.h"

// Returns the text on one line: every control character, line breaks included, becomes a space.
static std::string OnOneLine(std::string text) {
  for (char& byte : text) {
    if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) byte = ' ';
  }
  return text;
}

TableReport::TableReport(const std::vector<CsvLine>& lines) : lines_(lines), cells_(lines.size()) {}

void TableReport::AddColumn(uint16_t type, zr::AnyArray values, const zr::Array<int32_t>& codes) {
  const std::size_t c = columns_.size();
  Column column{ReadColumnTitle(lines_[0].fields[c]).text, type, 0};
  // As an array of variants, columns of all types can be handled alike. An array without elements is not converted.
  (void)values.ChangeType(ZR_VT_VARIANT);
  const auto variants = zr::Array<zr::Variant>::From(std::move(values)).ValueOr({});
  std::vector<zr::Variant> shown;
  for (uint32_t row = 0; row < codes.Size(); ++row) {
    shown.push_back(variants.At(row).Value());
    (void)shown.back().ChangeType(type);  // the conversion of the array made numbers of ZR_VT_BOOL
    if (codes.At(row).Value() == ZR_R_OK) column.decimals = std::max(column.decimals, Decimals(shown.back()));
  }
  cells_[0].push_back(column.title);
  for (uint32_t row = 0; row < codes.Size(); ++row) {
    const ZRRESULT code = codes.At(row).Value();
    const CsvLine& line = lines_[row + 1];
    if (code == ZR_R_OK) {
      cells_[row + 1].push_back(ValueText(shown[row], column.decimals));
    } else if (code == ZR_R_EMPTY_VALUE) {
      cells_[row + 1].emplace_back();
    } else {
      cells_[row + 1].push_back(line.fields[c] + " ✗");
      failures_.push_back("line " + std::to_string(line.number) + ", \"" + OnOneLine(column.title) + "\": \"" +
                          OnOneLine(line.fields[c]) + "\" does not convert to " + TypeName(type) + ": " +
                          zr::Error(code).what());
    }
  }
  columns_.push_back(std::move(column));
}

void TableReport::Print(const zr::Array<zr::Variant>& summary) const {
  const uint32_t kCells = 7;  // of one row of the summary
  std::vector<ColumnKind> kinds;
  std::vector<TableRow> rows = {{"Column", "Count", "Missing", "Failed", "Least", "Most", "Mean", "Type"}};
  for (uint32_t c = 0; c < columns_.size(); ++c) {
    const Column& column = columns_[c];
    const ColumnKind kind = IsNumber(column.type) ? ColumnKind::Number : ColumnKind::Value;
    kinds.push_back(column.type == ZR_VT_STR ? ColumnKind::Text : kind);
    TableRow& row = rows.emplace_back();
    for (uint32_t cell = 0; cell < kCells; ++cell) {
      const zr::Variant value = summary.At(c, cell).Value();
      row.push_back(ValueText(value, IsReal(value.Type()) ? std::max(column.decimals, 1) : column.decimals));
    }
    row.emplace_back(TypeName(column.type));
  }
  std::vector<ColumnKind> summaryKinds(rows[0].size(), ColumnKind::Number);
  summaryKinds.front() = summaryKinds.back() = ColumnKind::Value;
  std::printf("\n%s", DrawTable(cells_, kinds, OutputWidth()).c_str());
  std::printf("\n%s\n", DrawTable(rows, summaryKinds, OutputWidth()).c_str());

  constexpr std::size_t kMaxLines = 10;
  const std::size_t count = std::min(failures_.size(), kMaxLines);
  for (std::size_t i = 0; i < count; ++i) PrintLine(i == 0 ? "Not converted" : "", failures_[i]);
  if (failures_.size() > count) PrintLine("", "and " + std::to_string(failures_.size() - count) + " more");
}
