// What a ZRSAFEARRAY points at, and the element object that owns it. (The "element object" is the object of an array;
// the values in the array are its elements.)
//
//     ZRSAFEARRAY -> ZrSafeArrayDescriptor { ..., owner, data, bounds }
//                                                   |      |       '-> ZrSafeArrayBound, one per dimension
//                                                   |      '---------> the elements, one block
//                                                   '-> CZrSafeArrayElement { descriptor, bounds, lock, accessor }
//
// What holds everywhere below:
//   1. The element object owns the descriptor, the bounds, the storage and the accessor, and destroys them with itself.
//      The element object and the descriptor point at the same bounds.
//   2. Without dimensions there are no bounds. Without an accessor, bounds or elements there is no storage.
//   3. The accessor's tag is the type of the elements in the storage. Copies and comparisons follow it. The tag in the
//      descriptor, which callers see, is the same with one exception: ChangeType fails for an array without elements,
//      but installs the new accessor. Elements that the array gets later have the accessor's type. A copy of an array
//      without storage follows the descriptor's tag.

#pragma once

#include <cstddef>
#include <cstdint>

#include "zrcore/array.h"

class CZrSafeArrayElement;

struct ZrSafeArrayDescriptor {
  uint32_t dimensions;
  uint32_t elementCount;  // the product of the counts; the first count alone if the array cannot have elements
  uint16_t vartype;       // the tag, without flags
  CZrSafeArrayElement* owner;
  void* data;
  ZrSafeArrayBound* bounds;
};
static_assert(sizeof(ZrSafeArrayDescriptor) == 40 && offsetof(ZrSafeArrayDescriptor, elementCount) == 4 &&
              offsetof(ZrSafeArrayDescriptor, owner) == 16 && offsetof(ZrSafeArrayDescriptor, data) == 24);
