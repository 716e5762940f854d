// The geometry of an array: how many elements its bounds make, and where an element lies in the storage.

#pragma once

#include <cstdint>

#include "zrcore/array.h"

// The product of the counts in 32 bits; 1 if there are none.
constexpr uint32_t ProductOfCounts(uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept {
  uint32_t product = 1;
  if (bounds == nullptr) return product;
  for (uint32_t dimension = 0; dimension < dimensions; ++dimension) product *= bounds[dimension].elementCount;
  return product;
}

// The offset of an element in the storage, counted in elements: row-major, the last index varies fastest. The offset is
// negative if it comes out so, and -1 without dimensions. The arithmetic is modulo 2^32, so nothing but the sign of the
// result is checked: an index above its bound yields the offset of another element, or one past the end.
constexpr int32_t LinearIndexOf(uint32_t dimensions, const ZrSafeArrayBound* bounds, const uint32_t* indices) noexcept {
  if (bounds == nullptr || indices == nullptr || dimensions == 0) return -1;
  uint32_t index = 0;
  for (uint32_t dimension = 0; dimension < dimensions; ++dimension) {
    const ZrSafeArrayBound& bound = bounds[dimension];
    index = index * bound.elementCount + (indices[dimension] - static_cast<uint32_t>(bound.lowerBound));
  }
  return static_cast<int32_t>(index);
}
