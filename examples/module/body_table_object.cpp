// The operations of IBodyTable. Each one builds its result completely before it changes the table or an out-value, so a
// failure changes nothing.

#include "module/body_table_object.h"

#include <new>
#include <utility>

// An exception must not leave an operation: only result codes cross the boundary between host and module.
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

// Releases the old value of `*to`, which must be an initialised variant.
static void MoveTo(CVariantOwner from, ZRVARIANT* to) noexcept {
  (void)ZrVariantClear(to);
  *to = from.Detach();
}

uint32_t CBodyTable::AddRef() { return ZrInterlockedIncrementU32(&references_); }

uint32_t CBodyTable::Release() {
  // Use the result of the decrement and don't read the field again: exactly one thread gets zero, and after a decrement
  // another thread may already have deleted the object.
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

ZRRESULT CBodyTable::AddColumn(ZRSTR title, uint16_t type, const ZRVARIANT* texts) {
  if (texts == nullptr || texts->Type != (ZR_VT_STR | ZR_VT_ARRAY)) return ZR_R_INVALID_ARGUMENTS;
  uint32_t dimensions = 0;
  const ZrSafeArrayBound* bounds = nullptr;
  (void)ZrSafeArrayGetBounds(texts->Value.array, &dimensions, &bounds);
  if (dimensions != 1) return ZR_R_INVALID_ARGUMENTS;
  const uint32_t count = bounds[0].elementCount;
  if (!columns_.empty() && count != rowCount_) return ZR_R_INVALID_ARGUMENTS;
  return Guarded([&]() -> ZRRESULT {
    TableColumn column;
    column.title.reset(ZrCopyString(title));
    if (const ZRRESULT result = ReadColumn(texts->Value.array, type, column); ZR_FAILED(result)) return result;
    columns_.push_back(std::move(column));
    rowCount_ = count;
    return ZR_R_OK;
  });
}

ZRRESULT CBodyTable::Column(uint32_t column, ZRVARIANT* values, ZRVARIANT* codes) {
  if (values == nullptr || codes == nullptr) return ZR_R_INVALID_ARGUMENTS;
  if (column >= columns_.size()) return ZR_R_NOT_EXISTING;
  return Guarded([&]() -> ZRRESULT {
    CVariantOwner valuesCopy;
    CVariantOwner codesCopy;
    (void)ZrVariantCopy(valuesCopy.Address(), &columns_[column].values.Get());
    (void)ZrVariantCopy(codesCopy.Address(), &columns_[column].codes.Get());
    MoveTo(std::move(valuesCopy), values);
    MoveTo(std::move(codesCopy), codes);
    return ZR_R_OK;
  });
}

ZRRESULT CBodyTable::Summary(ZRVARIANT* summary) {
  if (summary == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return Guarded([&]() -> ZRRESULT {
    const ZrSafeArrayBound bounds[] = {{static_cast<uint32_t>(columns_.size()), 0}, {kSummaryCells, 0}};
    ArrayOwner rows(ZrSafeArrayCreate(ZR_VT_VARIANT, 2, bounds));
    for (uint32_t c = 0; c < columns_.size(); ++c) Summarize(columns_[c], rows.get(), c);
    MoveTo(CVariantOwner::OfArray(ZR_VT_VARIANT, std::move(rows)), summary);
    return ZR_R_OK;
  });
}
