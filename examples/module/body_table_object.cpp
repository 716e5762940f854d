#include "module/body_table_object.h"

#include <algorithm>
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

ZRRESULT CBodyTable::AddColumn(ZRSTR title, uint16_t type) {
  if (!rows_.empty()) return ZR_R_INVALID_OBJECT_STATE;
  return Guarded([&]() -> ZRRESULT {
    columns_.push_back({StringOwner(ZrCopyString(title)), type});
    return ZR_R_OK;
  });
}

ZRRESULT CBodyTable::AddRow(uint32_t count, const ZRVARIANT* cells) {
  if (cells == nullptr || count != columns_.size()) return ZR_R_INVALID_ARGUMENTS;
  return Guarded([&]() -> ZRRESULT {
    Row row;
    row.reserve(count);
    for (std::size_t c = 0; c < count; ++c) row.push_back(ReadCell(cells[c], columns_[c].type));
    rows_.push_back(std::move(row));
    return ZR_R_OK;
  });
}

ZRRESULT CBodyTable::Cell(uint32_t row, uint32_t column, ZRVARIANT* value, ZRRESULT* conversion) {
  if (value == nullptr || conversion == nullptr) return ZR_R_INVALID_ARGUMENTS;
  if (row >= rows_.size() || column >= columns_.size()) return ZR_R_NOT_EXISTING;
  return Guarded([&]() -> ZRRESULT {
    const TableCell& cell = rows_[row][column];
    *conversion = cell.conversion;
    return ZrVariantCopy(value, &cell.value.Get());
  });
}

ZRRESULT CBodyTable::Render(uint32_t width, ZRSTR* text) {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *text = nullptr;
  if (columns_.empty()) return ZR_R_EMPTY_VALUE;
  return Guarded([&] { return Give(RenderTable(width), text); });
}

// Fills the fractions of a column up to the longest one, so that the points stand below each other.
static void AlignPoints(std::vector<TableRow>& rows, std::size_t column) {
  const auto isNumber = [](const std::u16string& text) {
    return !text.empty() && text.find_first_not_of(u"-0123456789.") == text.npos;
  };
  const auto fractionLength = [](const std::u16string& text) {
    const std::size_t point = text.find(u'.');
    return point == text.npos ? 0 : text.size() - point;
  };
  std::size_t most = 0;
  for (std::size_t r = 1; r < rows.size(); ++r) {
    if (isNumber(rows[r][column])) most = std::max(most, fractionLength(rows[r][column]));
  }
  for (std::size_t r = 1; r < rows.size(); ++r) {
    std::u16string& text = rows[r][column];
    if (!isNumber(text) || fractionLength(text) == most) continue;
    if (fractionLength(text) == 0) text += u'.';
    text.append(most - fractionLength(text), u'0');
  }
}

std::u16string CBodyTable::RenderTable(std::size_t width) const {
  std::vector<TableRow> cells(1);
  std::vector<TableSide> sides;
  for (const Column& column : columns_) {
    cells[0].emplace_back(Units(column.title.get()));
    const TableSide side = column.type == ZR_VT_STR ? TableSide::ByContent : TableSide::Left;
    sides.push_back(IsNumber(column.type) ? TableSide::Right : side);
  }
  for (const Row& row : rows_) {
    TableRow& texts = cells.emplace_back();
    for (const TableCell& cell : row) texts.push_back(CellText(cell));
  }
  for (std::size_t c = 0; c < columns_.size(); ++c) {
    if (IsReal(columns_[c].type)) AlignPoints(cells, c);
  }
  return LayOutTable(cells, sides, width);
}
