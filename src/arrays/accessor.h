// Accessors: what depends on the type of an array's elements. Each array has one; the array code knows no type.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "arrays/array_records.h"
#include "runtime/heap.h"

// How an element lies in the storage.
enum class Storage : uint8_t {
  Signed8,
  Unsigned8,
  Signed16,
  Unsigned16,
  Signed32,
  Unsigned32,
  Signed64,
  Unsigned64,
  Real32,
  Real64,
  Currency,
  Uuid,
  Blob,
  Interface,
  Variant,
  String,
  Ref,
  Sref,
  None,  // elements can't have the tag
};

constexpr bool IsNumber(Storage storage) noexcept { return storage <= Storage::Currency; }

// The storage of a tag without flags, and the width of an element in it, in bytes.
[[nodiscard]] Storage StorageOf(uint16_t tag) noexcept;
[[nodiscard]] std::size_t ElementWidth(uint16_t tag) noexcept;

// The order of the operations is that of their slots and must not change. Dimensions, bounds and storage of the array
// are passed in on each call; the accessor knows the type alone.
class CZrSafeArrayAccessorBase {
 public:
  explicit CZrSafeArrayAccessorBase(uint16_t tag) noexcept : tag_(tag) {}
  CZrSafeArrayAccessorBase(const CZrSafeArrayAccessorBase&) = delete;
  CZrSafeArrayAccessorBase& operator=(const CZrSafeArrayAccessorBase&) = delete;
  virtual ~CZrSafeArrayAccessorBase() = default;

  // The tag of the elements, which tells apart those that share a class.
  virtual const uint16_t* AccessorType() const noexcept { return &tag_; }
  // Stores a block of zero elements, or null if there are none.
  virtual ZRRESULT AllocateData(uint32_t dimensions, const ZrSafeArrayBound* bounds, void** storage) const = 0;
  // As AllocateData, with copies of the elements of `source`, which may be null.
  virtual ZRRESULT CopyData(uint32_t dimensions, const ZrSafeArrayBound* bounds, const void* source,
                            void** storage) const = 0;
  virtual ZRRESULT DestroyData(void* storage, uint32_t dimensions, const ZrSafeArrayBound* bounds) const = 0;
  // Fixed by contract.
  virtual void* ElementAddress(void* storage, int32_t index) const noexcept = 0;
  virtual ZRRESULT GetElementValue(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                                   const uint32_t* indices, void* value) const = 0;
  virtual ZRRESULT PutElementValue(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                                   const uint32_t* indices, const void* value) const = 0;
  virtual uint32_t CountElements(uint32_t dimensions, const ZrSafeArrayBound* bounds,
                                 uint64_t* bytes) const noexcept = 0;
  // Negative if the offset comes out so, and for no dimensions.
  virtual int32_t LinearIndex(uint32_t dimensions, const ZrSafeArrayBound* bounds,
                              const uint32_t* indices) const noexcept = 0;
  // Replaces the storage, which `source` knows, by a converted one: ZR_R_OK, 1 if not all elements converted, or a
  // failure with all as it was.
  virtual ZRRESULT ConvertFrom(ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                               const CZrSafeArrayAccessorBase* source) const = 0;
  // Leaves the descriptor with null bounds: the caller stores the new ones.
  virtual ZRRESULT RedimData(ZrSafeArrayDescriptor* descriptor, uint32_t dimensions, const ZrSafeArrayBound* bounds,
                             const ZrSafeArrayBound* oldBounds) const = 0;
  virtual ZRRESULT CompareData(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayDescriptor* other,
                               const ZrSafeArrayBound* bounds, uint8_t* equal) const = 0;

  static void* operator new(std::size_t size) { return AllocateOrThrow(size); }
  static void operator delete(void* accessor) noexcept { std::free(accessor); }

 protected:
  uint16_t Tag() const noexcept { return tag_; }

 private:
  const uint16_t tag_;
};

// A new accessor; null if elements can't have the tag, which has no flags.
[[nodiscard]] CZrSafeArrayAccessorBase* CreateAccessorForTag(uint16_t tag);

// Storage that isn't an array's yet: destroyed at the end of the scope.
class CStorageHolder {
 public:
  CStorageHolder(const CZrSafeArrayAccessorBase& accessor, uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept
      : accessor_(accessor), dimensions_(dimensions), bounds_(bounds) {}
  CStorageHolder(const CStorageHolder&) = delete;
  CStorageHolder& operator=(const CStorageHolder&) = delete;
  ~CStorageHolder() { (void)accessor_.DestroyData(storage_, dimensions_, bounds_); }

  void* Get() const noexcept { return storage_; }
  void** Receive() noexcept { return &storage_; }
  [[nodiscard]] void* Detach() noexcept { return std::exchange(storage_, nullptr); }

 private:
  const CZrSafeArrayAccessorBase& accessor_;
  uint32_t dimensions_;
  const ZrSafeArrayBound* bounds_;
  void* storage_ = nullptr;
};
