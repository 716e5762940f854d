#include "host/table_client.h"

#include <stdexcept>

#include "host/result_text.h"
#include "host/utf8.h"

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

void CTableClient::AddLines(const std::vector<CsvFileLine>& lines, const std::string& fileName) {
  for (const CsvFileLine& line : lines) {
    const ZRRESULT result = table_->AddLine(line.text);
    if (ZR_SUCCEEDED(result)) continue;
    std::string problem = "\"" + fileName + "\", line ";
    problem += std::to_string(line.number) + ": ";
    ZRSTR explanation = nullptr;
    if (result == ZR_R_REQUEST_REJECTED && ZR_SUCCEEDED(table_->Explain(&explanation))) {
      problem += ToUtf8(StringOwner(explanation).get());
    } else {
      problem += Describe(result);
    }
    throw std::runtime_error(problem);
  }
}

StringOwner CTableClient::Render(uint32_t width, const std::string& fileName) {
  ZRSTR text = nullptr;
  const ZRRESULT result = table_->Render(width, &text);
  handlesHeld_ = table_->Handles();
  if (result == ZR_R_EMPTY_VALUE) throw std::runtime_error("\"" + fileName + "\" holds no line of titles");
  if (ZR_FAILED(result)) throw std::runtime_error("the table can't be rendered: " + Describe(result));
  return StringOwner(text);
}

uint32_t CTableClient::Close() {
  if (table_ == nullptr) return 0;
  IBodyTable* table = table_;
  table_ = nullptr;
  table->Clear();
  handlesLeft_ = table->Handles();
  return table->Release();
}
