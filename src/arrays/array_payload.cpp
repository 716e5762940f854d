// The array operations that variants need. variants/array_payload.h declares them, because variants must not include
// headers of arrays; each forwards to the array manager.

#include "variants/array_payload.h"

#include "arrays/array_manager.h"
#include "arrays/array_records.h"

// Not inlined: ResetVariant, which calls it, is inlined into every function that replaces a variant, and must stay
// small for the values that are not arrays.
[[gnu::noinline]] ZRRESULT DestroyArray(ZRSAFEARRAY array) { return g_arrayManager.SafeArrayDestroy(array); }

ZRRESULT CopyArray(ZRSAFEARRAY source, ZRSAFEARRAY* copy) { return g_arrayManager.SafeArrayCopy(source, copy); }

// Reads the descriptor and not SafeArrayGetElementCount, which writes nothing for an array that cannot have elements.
uint32_t ArrayElementCount(ZRSAFEARRAY array) noexcept { return array->elementCount; }

ZRRESULT ChangeArrayType(ZRSAFEARRAY array, uint32_t flags, uint16_t target) {
  return g_arrayManager.SafeArrayChangeType(array, flags, target);
}

ZRRESULT CompareArrays(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal) {
  return g_arrayManager.SafeArrayCompare(left, right, equal);
}
