// What a ZRSAFEARRAY points at, and the element object that owns it.
//
//     ZRSAFEARRAY -> ZrSafeArrayDescriptor { ..., owner, data, bounds }
//                                                   |      |       '-> ZrSafeArrayBound, one for each dimension
//                                                   |      '---------> the elements, one block
//                                                   '-> CZrSafeArrayElement { descriptor, bounds, lock, accessor }
//
// What holds everywhere below:
//   1. The element owns all of it: descriptor, bounds, storage and accessor go with it. Element and descriptor point at
//      the same bounds.
//   2. Without dimensions there are no bounds. Without an accessor, bounds or elements there is no storage.
//   3. The accessor's tag decides what the storage holds, for copies and comparisons too. The descriptor's tag is the
//      same, except in an array whose type was changed while it had no elements. Such an array may have got elements
//      since. A copy of an array without storage follows the descriptor's tag.

#pragma once

#include <cstddef>
#include <cstdint>

#include "zrcore/array.h"

class CZrSafeArrayElement;

struct ZrSafeArrayDescriptor {
  uint32_t dimensions;
  uint32_t elementCount;
  uint16_t vartype;
  CZrSafeArrayElement* owner;
  void* data;
  ZrSafeArrayBound* bounds;
};
static_assert(sizeof(ZrSafeArrayDescriptor) == 40 && offsetof(ZrSafeArrayDescriptor, elementCount) == 4 &&
              offsetof(ZrSafeArrayDescriptor, owner) == 16 && offsetof(ZrSafeArrayDescriptor, data) == 24);
