// The manager of arrays: all operations on handles, on one object without data of its own.

#pragma once

#include <cstdint>

#include "zrcore/array.h"

// The order of the operations is that of their slots and must not change. What each does stands at the export of its
// name. Final and without a destructor of its own: calls on the object are direct, and its end needs no code.
class CZrSafeArrayMgr final {
 public:
  // Overwrites `*array` unseen. ZR_R_INVALID_POINTER if `bounds` or `array` is null.
  virtual ZRRESULT SafeArrayCreate(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds,
                                   ZRSAFEARRAY* array);
  virtual ZRRESULT SafeArrayLock(ZRSAFEARRAY array) noexcept;
  virtual ZRRESULT SafeArrayUnlock(ZRSAFEARRAY array) noexcept;
  virtual ZRRESULT SafeArrayAccessData(ZRSAFEARRAY array, void** data) noexcept;
  virtual ZRRESULT SafeArrayUnaccessData(ZRSAFEARRAY array) noexcept;
  virtual ZRRESULT SafeArrayGetElement(ZRSAFEARRAY array, const uint32_t* indices, void* value);
  virtual ZRRESULT SafeArrayPutElement(ZRSAFEARRAY array, const uint32_t* indices, const void* value);
  virtual ZRRESULT SafeArrayCopy(ZRSAFEARRAY source, ZRSAFEARRAY* copy);
  virtual ZRRESULT SafeArrayDestroy(ZRSAFEARRAY array);
  virtual ZRRESULT SafeArrayGetVartype(ZRSAFEARRAY array, uint16_t* tag) noexcept;
  virtual ZRRESULT SafeArrayGetBounds(ZRSAFEARRAY array, uint32_t* dimensions,
                                      const ZrSafeArrayBound** bounds) noexcept;
  virtual ZRRESULT SafeArrayGetElementCount(ZRSAFEARRAY array, uint32_t* count, uint64_t* bytes) noexcept;
  virtual ZRRESULT SafeArrayGetLBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) noexcept;
  virtual ZRRESULT SafeArrayGetUBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) noexcept;
  virtual ZRRESULT SafeArrayChangeType(ZRSAFEARRAY array, uint32_t flags, uint16_t tag);
  virtual ZRRESULT SafeArrayRedim(ZRSAFEARRAY array, uint32_t dimensions, const ZrSafeArrayBound* bounds);
  virtual ZRRESULT SafeArrayCompare(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal);
};

extern constinit CZrSafeArrayMgr g_arrayManager;
