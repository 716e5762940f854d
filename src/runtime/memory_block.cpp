// Memory blocks: heap allocations that begin with their size.
//
//     | size (4) | payload ... |
//     ^          ^ the pointer that the caller gets
//     '- the address of the allocation
//
// Invariants:
//   1. The size word contains the requested size, whatever was allocated.
//   2. The allocation has size + 4 bytes, computed in 32 bits. For the four largest sizes this sum wraps around to 0
//      to 3. Then only the size word is allocated, and the block has no payload. Such a request succeeds, although the
//      size word promises 4 GiB: zrcore/memory.h documents it.
//   3. So the size word alone must not be used as the number of payload bytes. PayloadBytes returns that number.

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "runtime/heap.h"
#include "zrcore/memory.h"

static constexpr uint32_t kSizeWord = sizeof(uint32_t);

// size + 4 modulo 2^32. The sum has wrapped around exactly if it is less than 4: for sizes from 0xFFFFFFFC.
static constexpr uint32_t WrappedSize(uint32_t size) noexcept { return size + kSizeWord; }
static_assert(WrappedSize(0xFFFFFFFF) < kSizeWord && WrappedSize(0xFFFFFFFC) == 0 && WrappedSize(0xFFFFFFFB) != 0);

// The number of bytes after the size word: `size`, or 0 if the sum has wrapped around.
static constexpr uint32_t PayloadBytes(uint32_t size) noexcept { return WrappedSize(size) < kSizeWord ? 0 : size; }

// The address of the allocation from the caller's pointer.
static char* Allocation(void* block) noexcept { return static_cast<char*>(block) - kSizeWord; }

static void* CreateBlock(uint32_t size) noexcept {
  const std::size_t bytes = std::max(WrappedSize(size), kSizeWord);  // the word always fits
  auto* allocation = static_cast<char*>(AllocateOrNull(bytes));
  if (allocation == nullptr) return nullptr;
  std::memcpy(allocation, &size, sizeof size);
  // Only the payload is filled. Compilers turn malloc and a memset of the whole block into calloc, which is slower than
  // malloc for small blocks.
  std::memset(allocation + kSizeWord, 0, bytes - kSizeWord);
  return allocation + kSizeWord;
}

void* ZrCreateMemory(uint32_t size) noexcept { return CreateBlock(size); }

// Always makes a new block. realloc would keep the address for some sizes and would not fill the new bytes with zeros;
// the public header promises a new address and zeros. The old block is freed last: when out of memory, the caller still
// owns it.
void* ZrRecreateMemory(void* block, uint32_t size) noexcept {
  if (block == nullptr) return CreateBlock(size);
  if (size == 0) {
    std::free(Allocation(block));
    return nullptr;
  }
  void* created = CreateBlock(size);
  if (created == nullptr) return nullptr;
  uint32_t oldSize;
  std::memcpy(&oldSize, Allocation(block), sizeof oldSize);
  std::memcpy(created, block, std::min(PayloadBytes(size), PayloadBytes(oldSize)));
  std::free(Allocation(block));
  return created;
}

void ZrDestroyMemory(void* block) noexcept {
  if (block != nullptr) std::free(Allocation(block));
}
