#include "host/table_client.h"

#include <cstdio>
#include <stdexcept>

#include "host/utf8.h"

struct Reason {
  ZRRESULT result;
  const char* text;
};

// What a user can do something about; any other code is shown as its number.
static constexpr Reason kReasons[] = {
    {ZR_R_CLASS_NOT_REGISTERED, "the class is not known to its module"},
    {ZR_R_FILE_NOT_FOUND, "its module can't be loaded"},
    {ZR_R_INVALID_SYSTEM, "the file is not a component module"},
    {ZR_R_NOT_SUPPORTED, "its module refused to start"},
    {ZR_R_NO_INTERFACE, "the object is not a table"},
    {ZR_R_NO_MEMORY, "memory is exhausted"},
};

static std::string Describe(ZRRESULT result) {
  for (const Reason& reason : kReasons) {
    if (reason.result == result) return reason.text;
  }
  char text[32];
  (void)std::snprintf(text, sizeof text, "result 0x%08X", static_cast<unsigned>(result));
  return text;
}

void CTableClient::Find(ZRSTR className) {
  // The sign alone tells failure: modules and hosts may have successes above zero.
  if (ZR_FAILED(ZrCLSIDFromClassName(className, &classId_))) {
    throw std::runtime_error("no class is registered under the name \"" + ToUtf8(Units(className)) + "\"");
  }
  ZRSTR name = nullptr;
  if (const ZRRESULT result = ZrClassNameFromCLSID(&classId_, &name); ZR_FAILED(result)) {
    throw std::runtime_error("the class identifier has no name: " + Describe(result));
  }
  className_ = ToUtf8(Units(StringOwner(name).get()));
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
      problem += ToUtf8(Units(StringOwner(explanation).get()));
    } else {
      problem += Describe(result);
    }
    throw std::runtime_error(problem);
  }
}

StringOwner CTableClient::Render(uint32_t width, const std::string& fileName) {
  ZRSTR text = nullptr;
  const ZRRESULT result = table_->Render(width, &text);
  if (result == ZR_R_EMPTY_VALUE) throw std::runtime_error("\"" + fileName + "\" holds no line of titles");
  if (ZR_FAILED(result)) throw std::runtime_error("the table can't be rendered: " + Describe(result));
  return StringOwner(text);
}

uint32_t CTableClient::Close() {
  if (table_ == nullptr) return 0;
  IBodyTable* table = table_;
  table_ = nullptr;
  return table->Release();
}
