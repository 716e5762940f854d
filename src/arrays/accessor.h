// Accessors: the part of an array that depends on the type of its elements.
//
// Each array has one accessor, chosen by its tag, and calls it for everything that touches the storage: allocate, copy,
// destroy, get, put, convert, resize, compare. The rest of the array code does not know the type. A new element type
// needs a row in accessor.cpp and, unless its elements are plain bytes, a traits class in element_traits.h.
//
// The storage is one block without gaps. What an element of it is depends on the tag:
//
//     ZR_VT_I4            | 4 bytes | 4 bytes | ...     numbers, and UUIDs with 16 bytes: the value itself
//     ZR_VT_STR           | pointer | pointer | ...     strings, blobs, REFs, SREFs, interface pointers; may be null
//     ZR_VT_VARIANT       | record  | record  | ...     variants, 16 bytes

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "arrays/array_records.h"
#include "runtime/heap.h"

// The representation of an element in the storage. Tags with the same representation share one: ZR_VT_UI1, ZR_VT_BYTE
// and ZR_VT_BOOL are all Unsigned8. Numbers come first, Currency last among them: IsNumber and the table of loops in
// element_conversion.cpp rely on the order.
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
  None,  // elements cannot have the tag
};

constexpr bool IsNumber(Storage storage) noexcept { return storage <= Storage::Currency; }

// The representation for a tag without flags, and the width of an element in bytes; None and 0 if elements cannot have
// the tag.
[[nodiscard]] Storage StorageOf(uint16_t tag) noexcept;
[[nodiscard]] std::size_t ElementWidth(uint16_t tag) noexcept;

// The operations are virtual and their order is part of the contract: it must not change.
//
// An accessor has no state but its tag: dimensions, bounds and storage of the array are arguments of each call.
// Operations that need a pointer return ZR_R_INVALID_POINTER if it is null. They may throw std::bad_alloc; the array is
// unchanged then, except for PutElementValue.
//
// Accessors are made in the memory of a CAccessorHolder, and no one deletes them. They are a HeapObject only because a
// virtual destructor refers to an operator delete, and that must not be the global one.
class CZrSafeArrayAccessorBase : public HeapObject {
 public:
  explicit CZrSafeArrayAccessorBase(uint16_t tag) noexcept : tag_(tag) {}
  CZrSafeArrayAccessorBase(const CZrSafeArrayAccessorBase&) = delete;
  CZrSafeArrayAccessorBase& operator=(const CZrSafeArrayAccessorBase&) = delete;
  virtual ~CZrSafeArrayAccessorBase() = default;  // Fixed by contract: virtual.

  // The tag of the elements. It distinguishes tags that share a class, such as ZR_VT_UI4 and ZR_VT_DWORD.
  virtual const uint16_t* AccessorType() const noexcept { return &tag_; }
  // Stores a block of elements that are zero, null or empty variants, or stores null if there are no elements. Without
  // dimensions it fails.
  virtual ZRRESULT AllocateData(uint32_t dimensions, const ZrSafeArrayBound* bounds, void** storage) const = 0;
  // As AllocateData, but the elements are copies of those in `source`. If that is null, they are as from AllocateData.
  virtual ZRRESULT CopyData(uint32_t dimensions, const ZrSafeArrayBound* bounds, const void* source,
                            void** storage) const = 0;
  // Releases all elements and frees the block. Null returns ZR_R_INVALID_POINTER and is otherwise ignored.
  virtual ZRRESULT DestroyData(void* storage, uint32_t dimensions, const ZrSafeArrayBound* bounds) const = 0;
  // Fixed by contract. The address of the element at an offset, which is not checked; null without storage.
  virtual void* ElementAddress(void* storage, int32_t index) const noexcept = 0;
  // Get and put copy one element into or out of a variable of the element type. They return 1 if the array has no
  // storage; the comments of ZrSafeArrayGetElement and ZrSafeArrayPutElement have the other results.
  virtual ZRRESULT GetElementValue(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                                   const uint32_t* indices, void* value) const = 0;
  virtual ZRRESULT PutElementValue(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                                   const uint32_t* indices, const void* value) const = 0;
  // Returns the product of the counts, and stores their size in bytes in `*bytes` unless that is null.
  virtual uint32_t CountElements(uint32_t dimensions, const ZrSafeArrayBound* bounds,
                                 uint64_t* bytes) const noexcept = 0;
  // The offset of an element. It may be negative, which the callers refuse; -1 without dimensions. See linear_index.h.
  virtual int32_t LinearIndex(uint32_t dimensions, const ZrSafeArrayBound* bounds,
                              const uint32_t* indices) const noexcept = 0;
  // Converts the elements to this accessor's type; `source` is the accessor that has created the storage. Replaces the
  // storage and the descriptor's tag. Returns ZR_R_OK, 1 if some elements did not convert and are zero now, or
  // ZR_R_FAILED with the array unchanged if it has no storage.
  virtual ZRRESULT ConvertFrom(ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                               const CZrSafeArrayAccessorBase* source) const = 0;
  // Changes the number of elements; those that remain keep their offset. Updates the descriptor, but leaves its bounds
  // null: the caller, who owns the bounds, stores the new ones.
  virtual ZRRESULT RedimData(ZrSafeArrayDescriptor* descriptor, uint32_t dimensions, const ZrSafeArrayBound* bounds,
                             const ZrSafeArrayBound* oldBounds) const = 0;
  // Stores 1 or 0 in `*equal`. Both arrays must have the shape that `bounds` describes. Arrays without storage are
  // equal.
  virtual ZRRESULT CompareData(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayDescriptor* other,
                               const ZrSafeArrayBound* bounds, uint8_t* equal) const = 0;

 protected:
  uint16_t Tag() const noexcept { return tag_; }

 private:
  const uint16_t tag_;
};

// Makes an accessor for a tag without flags in `memory`, which must be aligned and large enough for
// CZrSafeArrayAccessorBase. Returns null if elements cannot have the tag.
[[nodiscard]] CZrSafeArrayAccessorBase* CreateAccessorForTag(uint16_t tag, void* memory) noexcept;

// Owns an accessor, or none, and contains its memory. So an accessor needs no block of the heap. An accessor owns
// nothing, so its memory is reused and released without a call of its destructor.
class CAccessorHolder {
 public:
  CAccessorHolder() noexcept = default;
  explicit CAccessorHolder(uint16_t tag) noexcept { Make(tag); }
  CAccessorHolder(const CAccessorHolder&) = delete;
  CAccessorHolder& operator=(const CAccessorHolder&) = delete;

  // Replaces the accessor. The holder is empty if elements cannot have the tag.
  void Make(uint16_t tag) noexcept { accessor_ = CreateAccessorForTag(tag, memory_); }

  const CZrSafeArrayAccessorBase* Get() const noexcept { return accessor_; }
  const CZrSafeArrayAccessorBase* operator->() const noexcept { return accessor_; }
  explicit operator bool() const noexcept { return accessor_ != nullptr; }

 private:
  CZrSafeArrayAccessorBase* accessor_ = nullptr;  // first: the contract fixes that an element object contains it there
  alignas(CZrSafeArrayAccessorBase) std::byte memory_[sizeof(CZrSafeArrayAccessorBase)];
};

// Storage that is not yet part of an array. At the end of the scope it is destroyed with its elements, so an exception
// while it is being filled does not leak. `bounds` must outlive the holder.
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
