// The geometry of an array: the number of its elements, and the offset of an element in the storage.
//
//     bounds {2, 0} {3, 1}, each {count, lower bound}; indices (1, 3)
//     number of elements  2 * 3 = 6
//     offset              (1 - 0) * 3 + (3 - 1) = 5
//
// Everything is computed modulo 2^32, and nothing is checked for overflow: callers rely on the wrapped results.

#pragma once

#include <cstdint>

#include "zrcore/array.h"

// The number of elements: the product of the counts modulo 2^32. It is 1 without dimensions, although such an array has
// no storage, and without bounds.
constexpr uint32_t ProductOfCounts(uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept {
  if (bounds == nullptr || dimensions == 0) return 1;
  uint32_t product = bounds[0].elementCount;
  for (uint32_t dimension = 1; dimension < dimensions; ++dimension) product *= bounds[dimension].elementCount;
  return product;
}

// The offset of an element in the storage, counted in elements: row-major, so the last index varies fastest. Returns -1
// without dimensions, bounds or indices.
//
// Indices are not compared with their bounds. Callers refuse a negative result, and this is the only check of indices
// that there is: an index above its upper bound yields the offset of another element, or one past the end of the
// storage. Lower bounds are subtracted as unsigned numbers, because a signed difference could overflow.
constexpr int32_t LinearIndexOf(uint32_t dimensions, const ZrSafeArrayBound* bounds, const uint32_t* indices) noexcept {
  if (bounds == nullptr || indices == nullptr || dimensions == 0) return -1;
  uint32_t index = 0;
  for (uint32_t dimension = 0; dimension < dimensions; ++dimension) {
    const ZrSafeArrayBound& bound = bounds[dimension];
    index = index * bound.elementCount + (indices[dimension] - static_cast<uint32_t>(bound.lowerBound));
  }
  return static_cast<int32_t>(index);
}
