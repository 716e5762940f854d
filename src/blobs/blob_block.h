// The storage of blobs: a buffer, the length of its content, and the position. Elements share it; see blob_handle.h.
//
//     bytes: | content ... | 0 or 0xFE ... | 0 |
//            0          length         capacity     one byte more than the capacity, see 3
//
//     Create(3, "abc")     length 3, position 3, capacity 1024    "abc" and zeros
//     Write("de", 2)       length 5, position 5                   "abcde" and zeros
//     Remove(1, 3)         length 2, position 5                   "ae", then 0xFE 0xFE 0xFE, and zeros
//
// Invariants:
//   1. length <= capacity. The position may be past the end of the content: a removal does not move it.
//   2. Every byte of the buffer is initialised: after the content there are zeros, or 0xFE where content was removed.
//   3. A blob can become exactly full, and a reader may read the byte at the index that equals the length. So the
//      buffer has one byte more than the capacity. This byte is always 0.
//   4. A block must not be changed unless the caller has the only reference. The operations here do not check it; the
//      manager calls tagZRBLOB::ExclusiveBlock, which does.
//   5. An operation that throws leaves length, position and content as they were.
//
// The reference count is an atomic integer. The other fields are plain: a shared block is only read.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "zrcore/base.h"

// The contract fixes the order of the fields.
struct ZrBlobBlock {
  uint32_t length;
  uint32_t capacity;
  uint32_t position;
  int32_t refCount;  // number of elements that share this block
  uint8_t* bytes;    // the buffer, capacity + 1 bytes

  // Create makes a block of `size` bytes; null `bytes` means zeros. Duplicate makes a copy with the same position; the
  // bytes after the content are zeros, even where the original has 0xFE. Both return a block with one reference and
  // throw std::bad_alloc.
  [[nodiscard]] static ZrBlobBlock* Create(uint32_t size, const void* bytes);
  [[nodiscard]] static ZrBlobBlock* Duplicate(const ZrBlobBlock& original);

  // A thread that reads 1 here may write to the block. Other threads may have read the block before they released their
  // references, so their reads must happen before that write. Therefore the load is an acquire, which pairs with the
  // release of the decrement. On common processors it costs the same as a plain load.
  int32_t RefCount() const noexcept {
    return std::atomic_ref(const_cast<int32_t&>(refCount)).load(std::memory_order_acquire);
  }
  // The caller must own a reference, so the count can't reach 0 at the same time.
  void AddReference() noexcept { std::atomic_ref(refCount).fetch_add(1); }
  void Release() noexcept {
    // The owner of the only reference needs no atomic decrement: no other thread can change the count then.
    if (RefCount() == 1 || std::atomic_ref(refCount).fetch_sub(1) == 1) Free();
  }

  // Copies up to `count` bytes from `offset`; a short read is a success. ZR_R_NOT_EXISTING if no byte follows the
  // offset.
  [[nodiscard]] ZRRESULT ReadAt(uint32_t offset, void* buffer, uint32_t count) const noexcept;
  // The comparison is <=, not <: the byte after the content may be read and may be 0xFE. Greater indices return 0.
  uint8_t ByteAt(uint32_t index) const noexcept { return index <= length ? bytes[index] : uint8_t{0}; }
  bool HasSameContent(const ZrBlobBlock& other) const noexcept;

  // The operations that change the block. Read and Seek are among them, because the position is part of the block.
  // Write, Insert and Append throw std::bad_alloc.
  [[nodiscard]] ZRRESULT Read(void* buffer, uint32_t count) noexcept;
  [[nodiscard]] ZRRESULT Write(const void* source, uint32_t count);
  [[nodiscard]] ZRRESULT Seek(uint32_t offset, uint8_t origin, uint8_t direction) noexcept;
  [[nodiscard]] ZRRESULT Insert(uint32_t offset, const void* source, uint32_t count);
  void Append(const void* source, uint32_t count);
  void Append(const ZrBlobBlock& other);  // `other` may be this block
  [[nodiscard]] ZRRESULT Remove(uint32_t offset, uint32_t count) noexcept;

 private:
  // The number of bytes from `offset` to the end of the content, at most `count`; 0 if the offset is past the end.
  uint32_t Available(uint32_t offset, uint32_t count) const noexcept;
  void EnsureCapacity(uint32_t needed) {
    if (needed > capacity) [[unlikely]]
      Grow(needed);
  }
  // Not inlined: the registers that it needs would be saved by every call that appends or writes.
  [[gnu::noinline]] void Grow(uint32_t needed);
  void Free() noexcept;
};
static_assert(offsetof(ZrBlobBlock, capacity) == 4 && offsetof(ZrBlobBlock, position) == 8 &&
              offsetof(ZrBlobBlock, refCount) == 12 && offsetof(ZrBlobBlock, bytes) == 16);

// Returns the next multiple of 1024 that is greater than `needed`: 0 -> 1024, 1023 -> 1024, 1024 -> 2048.
//
// needed & ~1023 rounds down to a multiple, so adding 1024 makes it strictly greater. For the last 1024 values the sum
// is 2^32, which wraps around to 0. Then the capacity is UINT32_MAX, which is not a multiple and, for `needed`
// UINT32_MAX, not greater.
constexpr uint32_t BlobCapacityFor(uint32_t needed) noexcept {
  constexpr uint32_t kGranule = 1024;
  const uint32_t capacity = (needed & ~(kGranule - 1)) + kGranule;
  return capacity != 0 ? capacity : UINT32_MAX;
}
static_assert(BlobCapacityFor(1) == 1024 && BlobCapacityFor(1023) == 1024 && BlobCapacityFor(1024) == 2048);
static_assert(BlobCapacityFor(UINT32_MAX) == UINT32_MAX);
