#include "module/body_table_object.h"

#include <new>
#include <utility>

#include "module/table_layout.h"

// Between modules only codes travel: no exception may leave an operation.
template <class Body>
static ZRRESULT Guarded(Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    return ZR_R_NO_MEMORY;
  } catch (...) {
    return ZR_R_UNEXPECTED;
  }
}

static ZRRESULT Give(std::u16string_view units, ZRSTR* text) noexcept {
  *text = MakeString(units);
  return *text == nullptr ? ZR_R_NO_MEMORY : ZR_R_OK;
}

static std::string FieldCount(std::size_t count) { return std::to_string(count) + (count == 1 ? " field" : " fields"); }

uint32_t CBodyTable::AddRef() { return ZrInterlockedIncrementU32(&references_); }

uint32_t CBodyTable::Release() {
  // What the decrement answered, not what the field holds a moment later: only one thread sees zero.
  const uint32_t left = ZrInterlockedDecrementU32(&references_);
  if (left == 0) delete this;
  return left;
}

ZRRESULT CBodyTable::QueryInterface(const ZRUUID* interfaceId, void** object) {
  if (object == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *object = nullptr;
  uint8_t isOurs = 0;
  if (ZR_FAILED(ZrCompareUUID(interfaceId, &kBodyTableInterface, &isOurs))) return ZR_R_INVALID_ARGUMENTS;
  if (isOurs == 0) return ZR_R_NO_INTERFACE;
  AddRef();
  *object = static_cast<IBodyTable*>(this);
  return ZR_R_OK;
}

ZRRESULT CBodyTable::AddLine(ZRSTR line) {
  return Guarded([&]() -> ZRRESULT {
    if (ZrStringLen(line) == 0) return ZR_R_SAME_VALUE;
    CsvLine split = SplitCsvLine(Units(line));
    if (split.problem == CsvProblem::None && !rows_.empty() && split.fields.size() != rows_[0].fields.size()) {
      rejection_ = FieldCount(split.fields.size()) + " where the titles are " + std::to_string(rows_[0].fields.size());
      return ZR_R_REQUEST_REJECTED;
    }
    if (split.problem != CsvProblem::None) {
      rejection_ = "field " + std::to_string(split.fields.size()) +
                   (split.problem == CsvProblem::OpenQuotes ? " has no closing quotation mark"
                                                            : " goes on behind its closing quotation mark");
      return ZR_R_REQUEST_REJECTED;
    }
    rows_.push_back(Row{StringOwner(ZrCopyString(line)), std::move(split.fields)});
    return ZR_R_OK;
  });
}

ZRRESULT CBodyTable::Explain(ZRSTR* text) {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *text = nullptr;
  if (rejection_.empty()) return ZR_R_EMPTY_VALUE;
  return Guarded([&] { return Give(std::u16string(rejection_.begin(), rejection_.end()), text); });
}

ZRRESULT CBodyTable::Render(uint32_t width, ZRSTR* text) {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *text = nullptr;
  if (rows_.empty()) return ZR_R_EMPTY_VALUE;
  return Guarded([&] {
    std::vector<TableRow> cells;
    cells.reserve(rows_.size());
    for (const Row& row : rows_) {
      TableRow& texts = cells.emplace_back();
      texts.reserve(row.fields.size());
      for (const CsvField& field : row.fields) texts.push_back(FieldText(Units(row.line.get()), field));
    }
    return Give(LayOutTable(cells, width), text);
  });
}
