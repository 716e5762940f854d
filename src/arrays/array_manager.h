// The manager of arrays: all operations on array handles, as one object without data of its own.
//
// The manager checks handles and pointers and forwards to the element object of the array (array_object.h). A null
// handle returns ZR_R_INVALID_POINTER from every operation. The comment of the export with the same name in
// zrcore/array.h describes each operation: results, null pointers, leaks and what is thrown.

#pragma once

#include <cstdint>

#include "zrcore/array.h"

// The operations are virtual and their order is part of the contract: it must not change. The class is final, so calls
// on the object are direct calls, and it has no destructor, so the object with static storage needs no code at exit.
class CZrSafeArrayMgr final {
 public:
  // Stores a new array in `*array` without looking at the old value. Returns ZR_R_INVALID_POINTER if `bounds` or
  // `array` is null.
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
