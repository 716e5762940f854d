#include "runtime/heap.h"

#include <cassert>

static void MakeRoomOrThrow() {
  std::new_handler handler = std::get_new_handler();
  if (handler == nullptr) throw std::bad_alloc();
  handler();
}

void* AllocateOrThrow(std::size_t size) {
  for (;; MakeRoomOrThrow()) {
    if (void* block = std::malloc(size != 0 ? size : 1)) return block;
  }
}

void* AllocateZeroedOrThrow(std::size_t count, std::size_t size) {
  for (;; MakeRoomOrThrow()) {
    if (void* block = std::calloc(count, size)) return block;
  }
}

void* ReallocateOrThrow(void* block, std::size_t size) {
  assert(size != 0);
  for (;; MakeRoomOrThrow()) {
    if (void* moved = std::realloc(block, size)) return moved;
  }
}
