// Converts the values of the object to texts, marks the cells that did not convert, and lays out both tables.

#include "host/table_text.h"

#include <algorithm>

#include "body_table.h"
#include "code_units.h"
#include "host/column_title.h"
#include "host/result_text.h"
#include "host/table_layout.h"
#include "host/utf8.h"
#include "host/value_text.h"

static constexpr WideView kMark = W(" ✗");

// Returns a string as UTF-8 on one line: every control character, line breaks included, becomes a space.
static std::string OnOneLine(ZRSTR string) {
  std::string text = ToUtf8(string);
  for (char& byte : text) {
    if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) byte = ' ';
  }
  return text;
}

// Every character of `ascii` must be below 0x80.
static WideText FromAscii(const char* ascii) { return WideText(ascii, ascii + std::char_traits<char>::length(ascii)); }

CTableText::CTableText(const CsvTable& table, const std::vector<ColumnValues>& columns) : table_(table) {
  for (std::size_t c = 0; c < columns.size(); ++c) columns_.push_back(ReadColumn(c, columns[c]));
}

CTableText::ColumnText CTableText::ReadColumn(std::size_t column, const ColumnValues& values) {
  const CsvColumn& title = table_.columns[column];
  // As an array of variants, columns of all types can be handled alike.
  const ArrayOwner variants = CopyArray(values.values.Array());
  (void)ZrSafeArrayChangeType(variants.get(), 0, ZR_VT_VARIANT);
  const CElements<ZRVARIANT> value(variants.get());
  const CElements<int32_t> code(values.codes.Array());

  const bool hasFraction = IsReal(title.type) || title.type == ZR_VT_DATETIME;
  ColumnText text;
  text.cells.resize(table_.rows.size());
  for (std::size_t r = 0; r < table_.rows.size(); ++r) {
    if (code[r] == ZR_R_OK) {
      ZRVARIANT shown = value[r];                             // the array still owns the value: don't clear it
      if (title.type == ZR_VT_BOOL) shown.Type = ZR_VT_BOOL;  // the conversion made a number of it
      text.cells[r] = ValueText(shown);
      if (hasFraction) text.fraction = std::max(text.fraction, FractionLength(text.cells[r]));
    } else if (code[r] != ZR_R_EMPTY_VALUE) {
      const ZRSTR cell = table_.rows[r].cells[column];
      text.cells[r].append(Units(cell)).append(kMark);
      failures_.push_back("line " + std::to_string(table_.rows[r].line) + ", \"" + OnOneLine(title.title) + "\": \"" +
                          OnOneLine(cell) + "\" does not convert to " + TypeName(title.type) + ": " +
                          Describe(code[r]));
    }
  }
  for (std::size_t r = 0; r < table_.rows.size(); ++r) {
    if (code[r] == ZR_R_OK && IsReal(title.type)) FillFraction(text.cells[r], text.fraction);
  }
  return text;
}

WideText CTableText::Cells(std::size_t width) const {
  std::vector<TableRow> rows(table_.rows.size() + 1);
  std::vector<Alignment> alignments;
  for (std::size_t c = 0; c < columns_.size(); ++c) {
    const CsvColumn& title = table_.columns[c];
    const Alignment alignment = title.type == ZR_VT_STR ? Alignment::ByContent : Alignment::Left;
    alignments.push_back(IsNumber(title.type) ? Alignment::Right : alignment);
    rows[0].emplace_back(Units(title.title));
    for (std::size_t r = 0; r < table_.rows.size(); ++r) rows[r + 1].push_back(columns_[c].cells[r]);
  }
  return LayOutTable(rows, alignments, width);
}

WideText CTableText::Summary(const CVariantOwner& summary, std::size_t width) const {
  std::vector<TableRow> rows = {
      {W("Column"), W("Count"), W("Missing"), W("Failed"), W("Least"), W("Most"), W("Mean"), W("Type")}};
  for (uint32_t c = 0; c < columns_.size(); ++c) {
    TableRow& row = rows.emplace_back();
    for (uint32_t k = 0; k < kSummaryCells; ++k) {
      CVariantOwner cell;
      const uint32_t indices[] = {c, k};
      (void)ZrSafeArrayGetElement(summary.Array(), indices, cell.Address());
      const bool isReal = IsReal(cell.Get().Type);
      const unsigned fraction = isReal ? std::max(columns_[c].fraction, 1u) : columns_[c].fraction;
      row.push_back(ValueText(cell.Get(), fraction));
      if (isReal) FillFraction(row.back(), fraction);
    }
    row.push_back(FromAscii(TypeName(table_.columns[c].type)));
  }
  std::vector<Alignment> alignments(rows[0].size(), Alignment::Right);
  alignments.front() = alignments.back() = Alignment::Left;
  return LayOutTable(rows, alignments, width);
}
