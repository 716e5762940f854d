// Memory owns a memory block that hosts and modules can pass to each other (zrcore/memory.h).

#ifndef ZR_MEMORY_HPP
#define ZR_MEMORY_HPP

#include <cstdint>
#include <utility>

#include "zr/result.hpp"
#include "zrcore/memory.h"

namespace zr {

/// Memory owns a block, or null. It can be moved, but not copied.
class Memory {
 public:
  Memory() noexcept = default;
  /// Makes a block of `size` bytes. Throws std::bad_alloc when out of memory.
  explicit Memory(uint32_t size) : block_(ZrCreateMemory(size)) {
    if (block_ == nullptr) detail::OutOfMemory();
  }
  Memory(Memory&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  Memory& operator=(Memory other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~Memory() { ZrDestroyMemory(block_); }

  /// Adopt takes a block that the caller owns.
  [[nodiscard]] static Memory Adopt(void* block) noexcept {
    Memory made;
    made.block_ = block;
    return made;
  }
  /// Get lends the block.
  [[nodiscard]] void* Get() const noexcept { return block_; }
  /// Detach gives the block to the caller, who destroys it with ZrDestroyMemory.
  [[nodiscard]] void* Detach() noexcept { return std::exchange(block_, nullptr); }

  /// Resize moves the content to a block of `size` bytes. If there is a block, a size of 0 frees it and leaves null.
  /// Throws std::bad_alloc, with the old block unchanged.
  void Resize(uint32_t size) {
    const bool frees = block_ != nullptr && size == 0;
    void* const resized = ZrRecreateMemory(block_, size);
    if (resized == nullptr && !frees) detail::OutOfMemory();
    block_ = resized;
  }

 private:
  void* block_ = nullptr;
};
static_assert(sizeof(Memory) == sizeof(void*), "a Memory is its pointer");

}  // namespace zr

#endif
