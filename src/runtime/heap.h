// The one heap behind everything that crosses the boundary: malloc and free of the C runtime, shared with the callers.
//
// Two ways to ask, for the two ways in which families report exhaustion: a null, or std::bad_alloc as from the global
// allocation function. What either gives is released with std::free.

#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

[[nodiscard]] inline void* AllocateOrNull(std::size_t size) noexcept { return std::malloc(size); }

// Calls the new-handler until the heap gives way or there is no handler; then throws std::bad_alloc.
[[nodiscard]] void* AllocateOrThrow(std::size_t size);

// The same with zeros, which a large block that is new to the process has for nothing.
[[nodiscard]] void* AllocateZeroedOrThrow(std::size_t count, std::size_t size);

// The block with its content, extended or moved to have a new `size` above 0. It is unchanged if this throws.
[[nodiscard]] void* ReallocateOrThrow(void* block, std::size_t size);

struct HeapFree {
  void operator()(void* block) const noexcept { std::free(block); }
};

// A constructed object on the heap, for HeapDelete. A constructor that throws leaves no block behind.
template <class T, class... Arguments>
[[nodiscard]] T* HeapNew(Arguments&&... arguments) {
  static_assert(alignof(T) <= alignof(std::max_align_t));
  std::unique_ptr<void, HeapFree> block(AllocateOrThrow(sizeof(T)));
  T* object = ::new (block.get()) T(std::forward<Arguments>(arguments)...);
  (void)block.release();  // the object owns it now
  return object;
}

template <class T>
void HeapDelete(T* object) noexcept {
  if (object == nullptr) return;
  object->~T();
  std::free(object);
}
