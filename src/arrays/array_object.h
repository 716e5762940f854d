// The element object of an array. It owns the descriptor, the bounds, the storage and the accessor, from creation to
// destruction; array_records.h has the picture and the invariants.
//
// The accessor knows the type of the elements, the element object knows their number and shape. An array whose tag has
// no storage has no accessor: it can be created, queried, locked, copied, compared and destroyed, but get, put,
// conversion and redimensioning fail.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "arrays/array_records.h"
#include "runtime/heap.h"
#include "zrcore/array.h"

class CZrSafeArrayAccessorBase;

// The constructors are noexcept: out of memory in a constructor terminates the process, which is part of the contract.
// Only the allocation of the object itself throws std::bad_alloc.
class CZrSafeArrayElement final {
 public:
  // Reads the first record of `bounds` even if `dimensions` is 0. Flags in `tag` are ignored.
  CZrSafeArrayElement(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept;
  // Copies the elements. For a source without bounds the new object has no descriptor, and it must be destroyed.
  CZrSafeArrayElement(const CZrSafeArrayElement& source) noexcept;
  CZrSafeArrayElement& operator=(const CZrSafeArrayElement&) = delete;
  virtual ~CZrSafeArrayElement();  // Fixed by contract: virtual.

  static void* operator new(std::size_t size) { return AllocateOrThrow(size); }
  static void operator delete(void* element) noexcept { std::free(element); }

  ZrSafeArrayDescriptor* Descriptor() const noexcept { return descriptor_; }
  const ZrSafeArrayBound* Bounds() const noexcept { return bounds_; }
  const CZrSafeArrayAccessorBase* Accessor() const noexcept { return accessor_; }

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
  bool HasShapeOf(const CZrSafeArrayElement& other) const noexcept;
  void MakeDescriptor(uint16_t tag, uint32_t dimensions, uint32_t elementCount, const ZrSafeArrayBound* bounds);

  ZrSafeArrayDescriptor* descriptor_ = nullptr;
  ZrSafeArrayBound* bounds_ = nullptr;
  std::atomic<int32_t> lock_{0};
  CZrSafeArrayAccessorBase* accessor_ = nullptr;  // null if elements cannot have the tag
};
