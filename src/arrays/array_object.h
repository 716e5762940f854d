// The element object of an array. It owns the descriptor, the bounds, the storage and the accessor, from creation to
// destruction; array_records.h has the picture and the invariants.
//
// The accessor knows the type of the elements, the element object knows their number and shape. An array whose tag has
// no storage has no accessor: it can be created, queried, locked, copied, compared and destroyed, but get, put,
// conversion and redimensioning fail.
//
// An array is two blocks of the heap. One contains the element object, which includes the accessor and the descriptor,
// and after it the bounds. The other is the storage:
//
//     | element object: pointers, lock, accessor, descriptor | bounds |        | storage |
//                                                            bounds_ ---^
//
// Redimensioning to more dimensions moves the bounds to a block of their own, because the first block cannot grow: the
// handle is the address of the descriptor.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "arrays/accessor.h"
#include "arrays/array_records.h"
#include "runtime/heap.h"
#include "zrcore/array.h"

class CZrSafeArrayElement final : public HeapObject {
 public:
  // Create makes an array of empty elements; it reads the first record of `bounds` even if `dimensions` is 0, and
  // ignores flags in `tag`. Clone copies the elements; the source must have bounds. Release the object with delete.
  //
  // If the block of the object can't be allocated, they throw std::bad_alloc. The constructors are noexcept: if the
  // storage or an element can't be allocated, the process terminates. Both are part of the contract.
  [[nodiscard]] static CZrSafeArrayElement* Create(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds) {
    return new (dimensions) CZrSafeArrayElement(tag, dimensions, bounds);
  }
  [[nodiscard]] static CZrSafeArrayElement* Clone(const CZrSafeArrayElement& source) {
    return new (source.descriptor_->dimensions) CZrSafeArrayElement(source);
  }
  CZrSafeArrayElement& operator=(const CZrSafeArrayElement&) = delete;
  virtual ~CZrSafeArrayElement();  // Fixed by contract: virtual.

  ZrSafeArrayDescriptor* Descriptor() const noexcept { return descriptor_; }
  const ZrSafeArrayBound* Bounds() const noexcept { return bounds_; }
  const CZrSafeArrayAccessorBase* Accessor() const noexcept { return accessor_.Get(); }

  // The access flag. No function waits for it: TryLock returns whether the flag was clear, Unlock whether it was set.
  // Any caller may clear it, so Unlock does not check who has set it.
  [[nodiscard]] bool TryLock() noexcept { return lock_.exchange(1) == 0; }
  bool Unlock() noexcept { return lock_.exchange(0) == 1; }

  // Both set the access flag during the call, and return ZR_R_INVALID_OBJECT_STATE if it is set already.
  [[nodiscard]] ZRRESULT Get(const uint32_t* indices, void* value);
  [[nodiscard]] ZRRESULT Put(const uint32_t* indices, const void* value);
  // These do not look at the access flag. The caller must make sure that no other thread uses the array.
  [[nodiscard]] ZRRESULT ChangeType(uint16_t tag);
  [[nodiscard]] ZRRESULT Redim(uint32_t dimensions, const ZrSafeArrayBound* bounds);
  // Stores 1 or 0 in `*equal`, or leaves it unchanged if the shapes differ.
  void Compare(const CZrSafeArrayElement& other, uint8_t* equal) const;

 private:
  CZrSafeArrayElement(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept;
  CZrSafeArrayElement(const CZrSafeArrayElement& source) noexcept;

  // The block has room for the bounds of that many dimensions after the object.
  static void* operator new(std::size_t size, uint32_t dimensions) {
    return AllocateOrThrow(size + std::size_t{dimensions} * sizeof(ZrSafeArrayBound));
  }
  ZrSafeArrayBound* BoundsInBlock() noexcept { return reinterpret_cast<ZrSafeArrayBound*>(this + 1); }
  bool HasShapeOf(const CZrSafeArrayElement& other) const noexcept;
  void MakeDescriptor(uint16_t tag, uint32_t dimensions, uint32_t elementCount,
                      const ZrSafeArrayBound* bounds) noexcept;
  void FreeMovedBounds() noexcept {
    if (bounds_ != BoundsInBlock()) std::free(bounds_);
  }

  ZrSafeArrayDescriptor* descriptor_ = nullptr;
  ZrSafeArrayBound* bounds_ = nullptr;
  std::atomic<int32_t> lock_{0};
  CAccessorHolder accessor_;                 // empty if elements cannot have the tag
  ZrSafeArrayDescriptor descriptorInBlock_;  // what descriptor_ points to; the contract fixes the four fields above
};
