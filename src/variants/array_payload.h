// The array operations that variants need: release, copy, conversion and comparison of the handle in a record with
// ZR_VT_ARRAY.
//
// Arrays are built on variants: arrays/ includes the private headers of this folder. So that the includes do not form a
// cycle, nothing here includes a header of arrays/. This header declares the few functions that go the other way, and
// arrays/array_payload.cpp defines them.
//
// Except for ArrayElementCount, each function accepts a null handle and returns ZR_R_INVALID_POINTER for it.

#pragma once

#include <cstdint>

#include "zrcore/variant.h"

// Releases the elements and frees the array, even if its access flag is set.
[[nodiscard]] ZRRESULT DestroyArray(ZRSAFEARRAY array);

// Stores a deep copy in `*copy`, which must be null before the call and stays null after a failure.
[[nodiscard]] ZRRESULT CopyArray(ZRSAFEARRAY source, ZRSAFEARRAY* copy);

// The number of elements as the descriptor records it. `array` must not be null.
[[nodiscard]] uint32_t ArrayElementCount(ZRSAFEARRAY array) noexcept;

// Converts the elements in place. The result 1 is a success for arrays but not for variants: the array has the new
// type, but some elements did not convert and are zero now. `flags` has no effect.
[[nodiscard]] ZRRESULT ChangeArrayType(ZRSAFEARRAY array, uint32_t flags, uint16_t target);

// Stores 1 or 0 in `*equal`. For arrays of different shapes the result is ZR_R_OK, and `*equal` is unchanged.
[[nodiscard]] ZRRESULT CompareArrays(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal);
