// The checks before each array operation, and the queries that need no element object method of their own.
//
// Every operation reaches the array through WithElement: handle -> descriptor -> owner -> element object. The queries
// return ZR_R_OK even if they have nothing to report, and leave the variable unchanged then: an array without
// dimensions, a dimension that does not exist, a null pointer for the result. Callers rely on it.
//
// Operations that call each other qualify the call (CZrSafeArrayMgr::SafeArrayLock), which makes it a direct call.

#include "arrays/array_manager.h"

#include <utility>

#include "arrays/accessor.h"
#include "arrays/array_object.h"

// Calls `use` with the element object of a handle and returns its result; ZR_R_INVALID_POINTER for a null handle. The
// owner is never null while the array exists.
template <class Use>
static ZRRESULT WithElement(ZRSAFEARRAY array, Use&& use) {
  if (array == nullptr) return ZR_R_INVALID_POINTER;
  return array->owner != nullptr ? use(*array->owner) : ZR_R_FAILED;
}

ZRRESULT CZrSafeArrayMgr::SafeArrayCreate(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds,
                                          ZRSAFEARRAY* array) {
  if (bounds == nullptr || array == nullptr) return ZR_R_INVALID_POINTER;
  *array = CZrSafeArrayElement::Create(tag, dimensions, bounds)->Descriptor();
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

// An array that `*copy` holds is destroyed first and `*copy` becomes null, so it is null after every failure except for
// a null argument. `*copy` must not be `source`.
//
// A source without dimensions cannot be copied.
ZRRESULT CZrSafeArrayMgr::SafeArrayCopy(ZRSAFEARRAY source, ZRSAFEARRAY* copy) {
  if (source == nullptr || copy == nullptr) return ZR_R_INVALID_POINTER;
  ZRRESULT result = ZR_R_FAILED;
  if (*copy != nullptr) result = CZrSafeArrayMgr::SafeArrayDestroy(std::exchange(*copy, nullptr));
  if (source->owner == nullptr) return result;  // the result of the destruction, as the contract requires
  if (source->owner->Bounds() == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  *copy = CZrSafeArrayElement::Clone(*source->owner)->Descriptor();
  return ZR_R_OK;
}

// The element object owns the descriptor, so `array` is invalid after this call.
ZRRESULT CZrSafeArrayMgr::SafeArrayDestroy(ZRSAFEARRAY array) {
  if (array == nullptr) return ZR_R_INVALID_POINTER;
  delete array->owner;
  return ZR_R_OK;
}

// `tag` is the one result pointer that must not be null.
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

// Computes the count from the bounds. It is 1 without dimensions, as the empty product, although there is no element.
ZRRESULT CZrSafeArrayMgr::SafeArrayGetElementCount(ZRSAFEARRAY array, uint32_t* count, uint64_t* bytes) noexcept {
  return WithElement(array, [=](const CZrSafeArrayElement& element) {
    if (count != nullptr && element.Accessor() != nullptr) {
      *count = element.Accessor()->CountElements(array->dimensions, element.Bounds(), bytes);
    }
    return ZR_R_OK;
  });
}

// Calls `write` with the record of a dimension, which counts from 1. Does nothing if there is no such dimension.
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

// The greatest index is lowerBound + elementCount - 1, in unsigned arithmetic that wraps. For a dimension without
// elements it is the lower bound minus 1.
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

// `*equal` is left unchanged if the shapes differ.
ZRRESULT CZrSafeArrayMgr::SafeArrayCompare(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal) {
  if (left == nullptr || right == nullptr || equal == nullptr) return ZR_R_INVALID_POINTER;
  if (left->owner != nullptr && right->owner != nullptr) left->owner->Compare(*right->owner, equal);
  return ZR_R_OK;
}
