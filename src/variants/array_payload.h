// What variants ask of arrays. The operations on the descriptor that a record with ZR_VT_ARRAY holds, null included.

#pragma once

#include <cstdint>

#include "zrcore/variant.h"

[[nodiscard]] ZRRESULT DestroyArray(ZRSAFEARRAY array);

// Stores a deep copy, or leaves `*copy` as it is.
[[nodiscard]] ZRRESULT CopyArray(ZRSAFEARRAY source, ZRSAFEARRAY* copy);

// Not null.
[[nodiscard]] uint32_t ArrayElementCount(ZRSAFEARRAY array) noexcept;

// Converts the elements in place. Anything but ZR_R_OK is a failure.
[[nodiscard]] ZRRESULT ChangeArrayType(ZRSAFEARRAY array, uint32_t flags, uint16_t target);

// May leave `*equal` unwritten.
[[nodiscard]] ZRRESULT CompareArrays(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal);
