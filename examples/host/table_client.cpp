// The client's path: class name -> class identifier -> object -> arrays of texts in, arrays of values out. Each failure
// becomes an exception with a message for the user.

#include "host/table_client.h"

#include <stdexcept>
#include <utility>

#include "host/result_text.h"
#include "host/utf8.h"

static void Require(ZRRESULT result, const char* action) {
  if (ZR_FAILED(result)) throw std::runtime_error(std::string("the object can't ") + action + ": " + Describe(result));
}

void CTableClient::Find(ZRSTR className) {
  // Only a negative result is a failure: modules and hosts may define positive success codes.
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
  if (ZR_FAILED(result)) {
    throw std::runtime_error("can't create an object of \"" + className_ + "\": " + Describe(result));
  }
  table_ = static_cast<IBodyTable*>(object);
}

void CTableClient::AddTable(const CsvTable& table) {
  for (std::size_t c = 0; c < table.columns.size(); ++c) {
    const ZrSafeArrayBound bound = {static_cast<uint32_t>(table.rows.size()), 0};
    ArrayOwner texts(ZrSafeArrayCreate(ZR_VT_STR, 1, &bound));
    {
      const CElements<ZRSTR> text(texts.get());
      for (uint32_t r = 0; r < text.Count(); ++r) text[r] = ZrCopyString(table.rows[r].cells[c]);
    }
    const CVariantOwner column = CVariantOwner::OfArray(ZR_VT_STR, std::move(texts));
    const CsvColumn& title = table.columns[c];
    Require(table_->AddColumn(title.title, title.type, &column.Get()), "add a column");
    ++columnCount_;
  }
}

std::vector<ColumnValues> CTableClient::Columns() {
  std::vector<ColumnValues> columns(columnCount_);
  for (uint32_t c = 0; c < columnCount_; ++c) {
    Require(table_->Column(c, columns[c].values.Address(), columns[c].codes.Address()), "return a column");
  }
  return columns;
}

CVariantOwner CTableClient::Summary() {
  CVariantOwner summary;
  Require(table_->Summary(summary.Address()), "summarise the columns");
  return summary;
}

uint32_t CTableClient::Close() {
  IBodyTable* table = std::exchange(table_, nullptr);
  return table == nullptr ? 0 : table->Release();
}
