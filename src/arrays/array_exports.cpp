// The exports of arrays, in the order of the public header. Each forwards to the array manager, which checks the
// arguments. The calls name the manager object, so the compiler makes them direct although the operations are virtual.

#include "arrays/array_manager.h"
#include "zrcore/array.h"

ZRSAFEARRAY ZrSafeArrayCreate(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds) {
  ZRSAFEARRAY array = nullptr;
  (void)g_arrayManager.SafeArrayCreate(tag, dimensions, bounds, &array);  // `array` stays null after a failure
  return array;
}

ZRRESULT ZrSafeArrayDestroy(ZRSAFEARRAY array) { return g_arrayManager.SafeArrayDestroy(array); }

ZRRESULT ZrSafeArrayCopy(ZRSAFEARRAY source, ZRSAFEARRAY* copy) { return g_arrayManager.SafeArrayCopy(source, copy); }

ZRRESULT ZrSafeArrayRedim(ZRSAFEARRAY array, uint32_t dimensions, const ZrSafeArrayBound* bounds) {
  return g_arrayManager.SafeArrayRedim(array, dimensions, bounds);
}

ZRRESULT ZrSafeArrayGetElement(ZRSAFEARRAY array, const uint32_t* indices, void* value) {
  return g_arrayManager.SafeArrayGetElement(array, indices, value);
}

ZRRESULT ZrSafeArrayPutElement(ZRSAFEARRAY array, const uint32_t* indices, const void* value) {
  return g_arrayManager.SafeArrayPutElement(array, indices, value);
}

ZRRESULT ZrSafeArrayLock(ZRSAFEARRAY array) noexcept { return g_arrayManager.SafeArrayLock(array); }

ZRRESULT ZrSafeArrayUnlock(ZRSAFEARRAY array) noexcept { return g_arrayManager.SafeArrayUnlock(array); }

ZRRESULT ZrSafeArrayAccessData(ZRSAFEARRAY array, void** data) noexcept {
  return g_arrayManager.SafeArrayAccessData(array, data);
}

ZRRESULT ZrSafeArrayUnaccessData(ZRSAFEARRAY array) noexcept { return g_arrayManager.SafeArrayUnaccessData(array); }

ZRRESULT ZrSafeArrayGetVartype(ZRSAFEARRAY array, uint16_t* tag) noexcept {
  return g_arrayManager.SafeArrayGetVartype(array, tag);
}

ZRRESULT ZrSafeArrayGetBounds(ZRSAFEARRAY array, uint32_t* dimensions, const ZrSafeArrayBound** bounds) noexcept {
  return g_arrayManager.SafeArrayGetBounds(array, dimensions, bounds);
}

ZRRESULT ZrSafeArrayGetElementCount(ZRSAFEARRAY array, uint32_t* count, uint64_t* bytes) noexcept {
  return g_arrayManager.SafeArrayGetElementCount(array, count, bytes);
}

ZRRESULT ZrSafeArrayGetLBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) noexcept {
  return g_arrayManager.SafeArrayGetLBound(array, dimension, bound);
}

ZRRESULT ZrSafeArrayGetUBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) noexcept {
  return g_arrayManager.SafeArrayGetUBound(array, dimension, bound);
}

ZRRESULT ZrSafeArrayChangeType(ZRSAFEARRAY array, uint32_t flags, uint16_t tag) {
  return g_arrayManager.SafeArrayChangeType(array, flags, tag);
}

ZRRESULT ZrSafeArrayCompare(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal) {
  return g_arrayManager.SafeArrayCompare(left, right, equal);
}
