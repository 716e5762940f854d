#include "frame/heap.h"

void* AllocateOrThrow(std::size_t size) {
  for (;;) {
    if (void* block = std::malloc(size != 0 ? size : 1)) return block;
    std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}
