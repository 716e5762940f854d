#include "host/table_client.h"

#include <stdexcept>
#include <utility>

#include "host/column_title.h"
#include "host/result_text.h"
#include "host/utf8.h"

static void Require(ZRRESULT result, const char* deed) {
  if (ZR_FAILED(result)) throw std::runtime_error(std::string("the object can't ") + deed + ": " + Describe(result));
}

// On one line: a line break in a cell is a blank here, as is all else that would move the cursor.
static std::string Shown(ZRSTR string) {
  std::string text = ToUtf8(string);
  for (char& byte : text) {
    if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) byte = ' ';
  }
  return text;
}

void CTableClient::Find(ZRSTR className) {
  // The sign alone tells failure: modules and hosts may have successes above zero.
  if (const ZRRESULT result = ZrCLSIDFromClassName(className, &classId_); ZR_FAILED(result)) {
    throw std::runtime_error("no class is registered under the name \"" + ToUtf8(className) +
                             "\": " + Describe(result));
  }
  ZRSTR name = nullptr;
  if (const ZRRESULT result = ZrClassNameFromCLSID(&classId_, &name); ZR_FAILED(result)) {
    throw std::runtime_error("the class identifier has no name: " + Describe(result));
  }
  className_ = ToUtf8(StringOwner(name).get());
}

void CTableClient::Open() {
  void* object = nullptr;
  const ZRRESULT result = ZrCreateInstance(&classId_, 0, &kBodyTableInterface, 0, &object);
  if (ZR_FAILED(result)) throw std::runtime_error("no object of \"" + className_ + "\": " + Describe(result));
  table_ = static_cast<IBodyTable*>(object);
}

void CTableClient::AddTable(const CsvTable& table) {
  for (const CsvColumn& column : table.columns) Require(table_->AddColumn(column.title, column.type), "add a column");
  std::vector<ZRVARIANT> cells;
  for (const CsvRow& row : table.rows) {
    cells.clear();
    for (const ZRSTR text : row.cells) {
      ZRVARIANT& cell = cells.emplace_back(ZRVARIANT ZR_VARIANT_INIT);
      cell.Type = ZR_VT_STR;
      cell.Value.string = text;  // lent: these variants are never cleared
    }
    Require(table_->AddRow(static_cast<uint32_t>(cells.size()), cells.data()), "add a row");
  }
}

StringOwner CTableClient::Render(uint32_t width) {
  ZRSTR text = nullptr;
  Require(table_->Render(width, &text), "render the table");
  return StringOwner(text);
}

std::vector<std::string> CTableClient::Unconverted(const CsvTable& table) {
  std::vector<std::string> lines;
  for (uint32_t r = 0; r < table.rows.size(); ++r) {
    for (uint32_t c = 0; c < table.columns.size(); ++c) {
      CVariantOwner value;
      ZRRESULT conversion = ZR_R_OK;
      Require(table_->Cell(r, c, value.Address(), &conversion), "read a cell");
      if (ZR_SUCCEEDED(conversion)) continue;
      const CsvColumn& column = table.columns[c];
      lines.push_back("line " + std::to_string(table.rows[r].line) + ", \"" + Shown(column.title) + "\": \"" +
                      Shown(value.Get().Value.string) + "\" is no " + TypeName(column.type) + ": " +
                      Describe(conversion));
    }
  }
  return lines;
}

uint32_t CTableClient::Close() {
  IBodyTable* table = std::exchange(table_, nullptr);
  return table == nullptr ? 0 : table->Release();
}
