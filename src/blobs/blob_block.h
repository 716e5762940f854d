// The storage behind blobs: a buffer, the length of its content, and the position, shared by the elements on it.
//
//     bytes: | content ... | 0 or 0xFE ... | 0 |
//            0          length         capacity     one byte more than the capacity, see 3
//
// What holds everywhere below:
//   1. length <= capacity. The position may lie behind the length, after a removal.
//   2. Every byte of the buffer is defined: behind the content stand zeros, or 0xFE where content was removed.
//   3. A blob can become exactly full, and a reader may ask for the byte at an index equal to the length. So each
//      buffer has one byte more than its capacity, always 0.
//   4. Whoever changes a block holds the only reference on it. The operations here don't look; CZrBlobElement does.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "zrcore/base.h"

struct ZrBlobBlock {
  uint32_t length;
  uint32_t capacity;
  uint32_t position;
  int32_t refCount;  // the elements on this block
  uint8_t* bytes;

  // A block with one reference: of `size` bytes, or a deep copy. Removed bytes behind the content are not copied.
  [[nodiscard]] static ZrBlobBlock* Create(uint32_t size, const void* bytes);
  [[nodiscard]] static ZrBlobBlock* Duplicate(const ZrBlobBlock& original);

  // A shared block is never written to, so a thread that finds itself the only holder must also see the last reads of
  // the others as done: hence acquire, which is a plain load on common machines.
  int32_t RefCount() const noexcept {
    return std::atomic_ref(const_cast<int32_t&>(refCount)).load(std::memory_order_acquire);
  }
  void AddReference() noexcept { std::atomic_ref(refCount).fetch_add(1); }
  void Release() noexcept {
    // The only holder needs no locked instruction: nobody else can raise the count.
    if (RefCount() == 1 || std::atomic_ref(refCount).fetch_sub(1) == 1) Free();
  }

  [[nodiscard]] ZRRESULT ReadAt(uint32_t offset, void* buffer, uint32_t count) const noexcept;
  uint8_t ByteAt(uint32_t index) const noexcept { return index <= length ? bytes[index] : uint8_t{0}; }
  bool HasSameContent(const ZrBlobBlock& other) const noexcept;

  [[nodiscard]] ZRRESULT Read(void* buffer, uint32_t count) noexcept;
  [[nodiscard]] ZRRESULT Write(const void* source, uint32_t count);
  [[nodiscard]] ZRRESULT Seek(uint32_t offset, uint8_t origin, uint8_t direction) noexcept;
  [[nodiscard]] ZRRESULT Insert(uint32_t offset, const void* source, uint32_t count);
  void Append(const void* source, uint32_t count);
  void Append(const ZrBlobBlock& other);  // which may be this block
  [[nodiscard]] ZRRESULT Remove(uint32_t offset, uint32_t count) noexcept;

 private:
  uint32_t Available(uint32_t offset, uint32_t count) const noexcept;
  void EnsureCapacity(uint32_t needed) {
    if (needed > capacity) [[unlikely]]
      Grow(needed);
  }
  void Grow(uint32_t needed);
  void Free() noexcept;
};
static_assert(offsetof(ZrBlobBlock, capacity) == 4 && offsetof(ZrBlobBlock, position) == 8 &&
              offsetof(ZrBlobBlock, refCount) == 12 && offsetof(ZrBlobBlock, bytes) == 16);

// Strictly above the needed size, in steps of 1024, up to the last step that 32 bits can count: one short there.
constexpr uint32_t BlobCapacityFor(uint32_t needed) noexcept {
  constexpr uint32_t kGranule = 1024;
  const uint32_t capacity = (needed & ~(kGranule - 1)) + kGranule;
  return capacity != 0 ? capacity : UINT32_MAX;
}
static_assert(BlobCapacityFor(1) == 1024 && BlobCapacityFor(1023) == 1024 && BlobCapacityFor(1024) == 2048);
static_assert(BlobCapacityFor(UINT32_MAX) == UINT32_MAX);
