// The element object: it owns a descriptor, its bounds, its storage and its accessor, from creation to destruction.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "arrays/array_records.h"
#include "runtime/heap.h"
#include "zrcore/array.h"

class CZrSafeArrayAccessorBase;

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
