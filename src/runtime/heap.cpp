// The allocating loops. Each tries the C runtime, and between two attempts it calls the new-handler:
//
//     malloc -> block                                       returned
//     malloc -> null, no handler is set                     std::bad_alloc
//     malloc -> null, the handler returns                   malloc is tried again
//     malloc -> null, the handler throws or ends the process
//
// A handler that returns without freeing anything makes the loop endless. The same holds for the global operator new.

#include "runtime/heap.h"

#include <cassert>

// The handler is read anew for each attempt, because a handler may install another one or none.
static void CallNewHandlerOrThrow() {
  std::new_handler handler = std::get_new_handler();
  if (handler == nullptr) throw std::bad_alloc();
  handler();
}

void* AllocateOrThrow(std::size_t size) {
  for (;; CallNewHandlerOrThrow()) {
    // malloc(0) may return null, which is not out of memory.
    if (void* block = std::malloc(size != 0 ? size : 1)) return block;
  }
}

void* AllocateZeroedOrThrow(std::size_t count, std::size_t size) {
  for (;; CallNewHandlerOrThrow()) {
    if (void* block = std::calloc(count, size)) return block;
  }
}

void* ReallocateOrThrow(void* block, std::size_t size) {
  assert(size != 0);  // realloc to 0 may free the block and return null
  for (;; CallNewHandlerOrThrow()) {
    if (void* moved = std::realloc(block, size)) return moved;
  }
}
