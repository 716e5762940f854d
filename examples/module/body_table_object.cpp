#include "module/body_table_object.h"

#include <algorithm>
#include <new>
#include <utility>

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

static ZRRESULT Give(WideView units, ZRSTR* text) noexcept {
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
    Row row{StringOwner(ZrCopyString(line)), std::move(split.fields), {}};
    std::vector<ValueKind> kinds;
    for (std::size_t c = 0; c < row.fields.size(); ++c) {
      if (rows_.empty()) kinds.push_back(KindOfTitle(row.Text(c)));
      row.values.push_back(rows_.empty() ? Value() : ReadValue(kinds_[c], row.Text(c)));
    }
    rows_.push_back(std::move(row));
    if (!kinds.empty()) kinds_ = std::move(kinds);
    return ZR_R_OK;
  });
}

ZRRESULT CBodyTable::Explain(ZRSTR* text) {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *text = nullptr;
  if (rejection_.empty()) return ZR_R_EMPTY_VALUE;
  return Guarded([&] { return Give(WideText(rejection_.begin(), rejection_.end()), text); });
}

ZRRESULT CBodyTable::Render(uint32_t width, ZRSTR* text) {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *text = nullptr;
  if (rows_.empty()) return ZR_R_EMPTY_VALUE;
  return Guarded([&] { return Give(RenderTable(width) + RenderValues(width), text); });
}

uint32_t CBodyTable::Handles() {
  (void)ZrInterlockedIncrementU32(&countedHandles);  // there and back, for the sake of what it answers
  return ZrInterlockedDecrementU32(&countedHandles);
}

WideText CBodyTable::RenderTable(std::size_t width) const {
  std::vector<TableRow> cells;
  cells.reserve(rows_.size());
  for (const Row& row : rows_) {
    TableRow& texts = cells.emplace_back();
    texts.reserve(row.fields.size());
    for (std::size_t c = 0; c < row.fields.size(); ++c) texts.push_back(ShortText(row.values[c], row.Text(c)));
  }
  std::vector<TableSide> sides(kinds_.size(), TableSide::ByContent);
  for (const Row& row : rows_) {
    for (std::size_t c = 0; c < sides.size(); ++c) {
      if (row.values[c].kind == ValueKind::Place) sides[c] = TableSide::Left;
      if (row.values[c].kind == ValueKind::Span) sides[c] = TableSide::Right;
    }
  }
  return LayOutTable(cells, sides, width);
}

// The first and the last row that have a value of every kind, all of it; nothing if there is no such row.
WideText CBodyTable::RenderValues(std::size_t width) const {
  static constexpr std::pair<ValueKind, const WCHAR*> kKinds[] = {{ValueKind::Identity, W("a UUID")},
                                                                  {ValueKind::Place, W("a REF")},
                                                                  {ValueKind::Moment, W("a date-time")},
                                                                  {ValueKind::Span, W("a time span")},
                                                                  {ValueKind::Bytes, W("a blob")}};
  const auto columnOf = [](const Row& row, ValueKind kind) {
    const auto isKind = [&](const Value& value) { return value.kind == kind; };
    return static_cast<std::size_t>(std::find_if(row.values.begin(), row.values.end(), isKind) - row.values.begin());
  };
  const auto hasAll = [&](const Row& row) {
    const auto hasKind = [&](const auto& kind) { return columnOf(row, kind.first) < row.values.size(); };
    return std::all_of(std::begin(kKinds), std::end(kKinds), hasKind);
  };
  const auto first = std::find_if(rows_.begin(), rows_.end(), hasAll);
  if (first == rows_.end()) return {};
  const Row& last = *std::find_if(rows_.rbegin(), rows_.rend(), hasAll);

  std::vector<TableRow> cells = {{W("In full")}};
  for (const auto& [kind, name] : kKinds) {
    cells.push_back({rows_[0].Text(columnOf(*first, kind)) + W(", ") + name});
  }
  for (const Row* row = &*first;; row = &last) {
    cells[0].push_back(row->Text(columnOf(*row, ValueKind::Identity)));
    for (std::size_t k = 0; k < std::size(kKinds); ++k) {
      cells[k + 1].push_back(FullText(row->values[columnOf(*row, kKinds[k].first)]));
    }
    if (row == &last) break;
  }
  const std::vector<TableSide> sides(cells[0].size(), TableSide::ByContent);
  return W("\n") + LayOutTable(cells, sides, width);
}
