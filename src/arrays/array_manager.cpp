#include "arrays/array_manager.h"

#include <memory>
#include <utility>

#include "arrays/accessor.h"
#include "arrays/array_element.h"

// Calls `use` with the element object of a handle.
template <class Use>
static ZRRESULT WithElement(ZRSAFEARRAY array, Use&& use) {
  if (array == nullptr) return ZR_R_INVALID_POINTER;
  return array->owner != nullptr ? use(*array->owner) : ZR_R_FAILED;
}

ZRRESULT CZrSafeArrayMgr::SafeArrayCreate(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds,
                                          ZRSAFEARRAY* array) {
  if (bounds == nullptr || array == nullptr) return ZR_R_INVALID_POINTER;
  *array = (new CZrSafeArrayElement(tag, dimensions, bounds))->Descriptor();
  return ZR_R_OK;
}

ZRRESULT CZrSafeArrayMgr::SafeArrayLock(ZRSAFEARRAY array) noexcept {
  return WithElement(
      array, [](CZrSafeArrayElement& element) { return element.TryLock() ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE; });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayUnlock(ZRSAFEARRAY array) noexcept {
  return WithElement(
      array, [](CZrSafeArrayElement& element) { return element.Unlock() ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE; });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayAccessData(ZRSAFEARRAY array, void** data) noexcept {
  if (data == nullptr) return ZR_R_INVALID_POINTER;
  const ZRRESULT result = CZrSafeArrayMgr::SafeArrayLock(array);
  if (result == ZR_R_OK) *data = array->data;
  return result;
}

ZRRESULT CZrSafeArrayMgr::SafeArrayUnaccessData(ZRSAFEARRAY array) noexcept {
  return CZrSafeArrayMgr::SafeArrayUnlock(array);
}

ZRRESULT CZrSafeArrayMgr::SafeArrayGetElement(ZRSAFEARRAY array, const uint32_t* indices, void* value) {
  if (indices == nullptr || value == nullptr) return ZR_R_INVALID_POINTER;
  return WithElement(array, [=](CZrSafeArrayElement& element) { return element.Get(indices, value); });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayPutElement(ZRSAFEARRAY array, const uint32_t* indices, const void* value) {
  if (indices == nullptr || value == nullptr) return ZR_R_INVALID_POINTER;
  return WithElement(array, [=](CZrSafeArrayElement& element) { return element.Put(indices, value); });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayCopy(ZRSAFEARRAY source, ZRSAFEARRAY* copy) {
  if (source == nullptr || copy == nullptr) return ZR_R_INVALID_POINTER;
  ZRRESULT result = ZR_R_FAILED;
  if (*copy != nullptr) result = CZrSafeArrayMgr::SafeArrayDestroy(std::exchange(*copy, nullptr));
  if (source->owner == nullptr) return result;  // of the destruction, by contract
  auto made = std::make_unique<CZrSafeArrayElement>(*source->owner);
  if (made->Descriptor() == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  *copy = made.release()->Descriptor();
  return ZR_R_OK;
}

ZRRESULT CZrSafeArrayMgr::SafeArrayDestroy(ZRSAFEARRAY array) {
  if (array == nullptr) return ZR_R_INVALID_POINTER;
  delete array->owner;
  return ZR_R_OK;
}

ZRRESULT CZrSafeArrayMgr::SafeArrayGetVartype(ZRSAFEARRAY array, uint16_t* tag) noexcept {
  return WithElement(array, [=](const CZrSafeArrayElement&) {
    *tag = array->vartype;
    return ZR_R_OK;
  });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayGetBounds(ZRSAFEARRAY array, uint32_t* dimensions,
                                             const ZrSafeArrayBound** bounds) noexcept {
  return WithElement(array, [=](const CZrSafeArrayElement& element) {
    if (dimensions != nullptr && bounds != nullptr && element.Bounds() != nullptr) {
      *dimensions = array->dimensions;
      *bounds = element.Bounds();
    }
    return ZR_R_OK;
  });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayGetElementCount(ZRSAFEARRAY array, uint32_t* count, uint64_t* bytes) noexcept {
  return WithElement(array, [=](const CZrSafeArrayElement& element) {
    if (count != nullptr && element.Accessor() != nullptr) {
      *count = element.Accessor()->CountElements(array->dimensions, element.Bounds(), bytes);
    }
    return ZR_R_OK;
  });
}

// Calls `write` with the record of a dimension, if there is one.
template <class Write>
static ZRRESULT WithBound(ZRSAFEARRAY array, uint32_t dimension, Write&& write) {
  return WithElement(array, [&](const CZrSafeArrayElement& element) {
    if (element.Bounds() != nullptr && dimension >= 1 && dimension <= array->dimensions) {
      write(element.Bounds()[dimension - 1]);
    }
    return ZR_R_OK;
  });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayGetLBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) noexcept {
  return WithBound(array, dimension, [bound](const ZrSafeArrayBound& record) {
    if (bound != nullptr) *bound = static_cast<uint32_t>(record.lowerBound);
  });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayGetUBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) noexcept {
  return WithBound(array, dimension, [bound](const ZrSafeArrayBound& record) {
    if (bound != nullptr) *bound = record.elementCount - 1 + static_cast<uint32_t>(record.lowerBound);
  });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayChangeType(ZRSAFEARRAY array, uint32_t /*flags*/, uint16_t tag) {
  return WithElement(array, [tag](CZrSafeArrayElement& element) { return element.ChangeType(tag); });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayRedim(ZRSAFEARRAY array, uint32_t dimensions, const ZrSafeArrayBound* bounds) {
  return WithElement(array, [=](CZrSafeArrayElement& element) { return element.Redim(dimensions, bounds); });
}

ZRRESULT CZrSafeArrayMgr::SafeArrayCompare(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal) {
  if (left == nullptr || right == nullptr || equal == nullptr) return ZR_R_INVALID_POINTER;
  if (left->owner != nullptr && right->owner != nullptr) left->owner->Compare(*right->owner, equal);
  return ZR_R_OK;
}
