// These functions are in a shared library of their own, so that the compiler can't inline them.

#include "boundary.h"

#include <cstdlib>

void BoundaryNothing() noexcept {}

void BoundaryRetain(std::atomic<uint32_t>* count) noexcept { count->fetch_add(1, std::memory_order_relaxed); }

void BoundaryRelease(std::atomic<uint32_t>* count) noexcept {
  if (count->fetch_sub(1, std::memory_order_acq_rel) == 1) std::abort();  // the owner of the count keeps one reference
}

int32_t BoundaryIncrement(std::atomic<int32_t>* value) noexcept {
  return value == nullptr ? 0 : value->fetch_add(1) + 1;
}
