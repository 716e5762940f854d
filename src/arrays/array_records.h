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

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "runtime/heap.h"
#include "zrcore/array.h"

class CZrSafeArrayAccessorBase;
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

// The product of the counts in 32 bits; 1 if there are none.
constexpr uint32_t ProductOfCounts(uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept {
  uint32_t product = 1;
  if (bounds == nullptr) return product;
  for (uint32_t dimension = 0; dimension < dimensions; ++dimension) product *= bounds[dimension].elementCount;
  return product;
}

// The constructors can't throw: where they need memory and there is none, the process ends.
class CZrSafeArrayElement final {
 public:
  CZrSafeArrayElement(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept;
  CZrSafeArrayElement(const CZrSafeArrayElement& source) noexcept;  // stays empty for a source without bounds
  CZrSafeArrayElement& operator=(const CZrSafeArrayElement&) = delete;
  virtual ~CZrSafeArrayElement();

  static void* operator new(std::size_t size) { return AllocateOrThrow(size); }
  static void operator delete(void* element) noexcept { std::free(element); }

  ZrSafeArrayDescriptor* Descriptor() const noexcept { return descriptor_; }
  const ZrSafeArrayBound* Bounds() const noexcept { return bounds_; }
  const CZrSafeArrayAccessorBase* Accessor() const noexcept { return accessor_; }

  // Whether the flag was free.
  [[nodiscard]] bool TryLock() noexcept { return lock_.exchange(1) == 0; }
  // Whether it was taken.
  bool Unlock() noexcept { return lock_.exchange(0) == 1; }

  [[nodiscard]] ZRRESULT Get(const uint32_t* indices, void* value);
  [[nodiscard]] ZRRESULT Put(const uint32_t* indices, const void* value);
  [[nodiscard]] ZRRESULT ChangeType(uint16_t tag);
  [[nodiscard]] ZRRESULT Redim(uint32_t dimensions, const ZrSafeArrayBound* bounds);
  void Compare(const CZrSafeArrayElement& other, uint8_t* equal) const;

 private:
  bool HasShapeOf(const CZrSafeArrayElement& other) const noexcept;
  void MakeDescriptor(uint16_t tag, uint32_t dimensions, uint32_t elementCount, const ZrSafeArrayBound* bounds);

  ZrSafeArrayDescriptor* descriptor_ = nullptr;
  ZrSafeArrayBound* bounds_ = nullptr;
  std::atomic<int32_t> lock_{0};
  CZrSafeArrayAccessorBase* accessor_ = nullptr;  // null for a tag that elements can't have
};
