// The heap of the library: malloc and free of the C runtime, which the callers share.
//
// Memory crosses the boundary in both directions, so it must not come from operator new: a caller may replace that
// operator in its own binary. All blocks of these functions are released with std::free.
//
//     AllocateOrNull           out of memory -> null
//     Allocate...OrThrow       out of memory -> calls the new-handler and tries again; without one, std::bad_alloc
//
// The families of the library report out of memory in one of these two ways. The second way is the same as that of the
// global operator new, which calls the new-handler until an allocation succeeds.

#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

// For a size of 0 the C runtime decides: null or a block.
[[nodiscard]] inline void* AllocateOrNull(std::size_t size) noexcept { return std::malloc(size); }

// Never null. A size of 0 returns a block too.
[[nodiscard]] void* AllocateOrThrow(std::size_t size);

// Returns a block of `count` * `size` zero bytes; the product must not be 0. A product that overflows is out of memory.
// For large blocks this is faster than filling: pages that are new to the process are already zero.
[[nodiscard]] void* AllocateZeroedOrThrow(std::size_t count, std::size_t size);

// Extends, shrinks or moves a block to a new `size`, which must not be 0. The content is kept as far as it fits. If
// this throws, the old block is unchanged and still valid.
[[nodiscard]] void* ReallocateOrThrow(void* block, std::size_t size);

// The deleter for std::unique_ptr of such a block.
struct HeapFree {
  void operator()(void* block) const noexcept { std::free(block); }
};

// A base for classes whose objects are made by `new` in blocks of this heap.
struct HeapObject {
  static void* operator new(std::size_t size) { return AllocateOrThrow(size); }
  static void operator delete(void* object) noexcept { std::free(object); }
};

// Constructs an object in a block of this heap. HeapDelete destroys it and frees the block. If the constructor throws,
// the block is freed.
template <class T, class... Arguments>
[[nodiscard]] T* HeapNew(Arguments&&... arguments) {
  static_assert(alignof(T) <= alignof(std::max_align_t));
  std::unique_ptr<void, HeapFree> block(AllocateOrThrow(sizeof(T)));
  T* object = ::new (block.get()) T(std::forward<Arguments>(arguments)...);
  (void)block.release();  // the object owns it now
  return object;
}

// Null is ignored.
template <class T>
void HeapDelete(T* object) noexcept {
  if (object == nullptr) return;
  object->~T();
  std::free(object);
}
