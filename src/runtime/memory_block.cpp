// Memory blocks: the size word in front of what the caller gets.

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "runtime/heap.h"
#include "zrcore/memory.h"

static constexpr uint32_t kSizeWord = sizeof(uint32_t);

// What malloc is asked for. It wraps in 32 bits, and a sum that wrapped is smaller than the word alone.
static constexpr uint32_t WrappedSize(uint32_t size) noexcept { return size + kSizeWord; }
static_assert(WrappedSize(0xFFFFFFFF) < kSizeWord && WrappedSize(0xFFFFFFFC) == 0 && WrappedSize(0xFFFFFFFB) != 0);

// The bytes that lie behind the word, which for a wrapped size are none, whatever the word says.
static constexpr uint32_t PayloadBytes(uint32_t size) noexcept { return WrappedSize(size) < kSizeWord ? 0 : size; }

static char* Allocation(void* block) noexcept { return static_cast<char*>(block) - kSizeWord; }

static void* CreateBlock(uint32_t size) noexcept {
  const std::size_t bytes = std::max(WrappedSize(size), kSizeWord);  // the word always fits
  auto* allocation = static_cast<char*>(AllocateOrNull(bytes));
  if (allocation == nullptr) return nullptr;
  std::memcpy(allocation, &size, sizeof size);
  // The payload alone: of malloc and a memset of all of it, compilers make calloc, which for small blocks takes the C
  // library's long road.
  std::memset(allocation + kSizeWord, 0, bytes - kSizeWord);
  return allocation + kSizeWord;
}

void* ZrCreateMemory(uint32_t size) noexcept { return CreateBlock(size); }

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
