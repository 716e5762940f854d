// The heap of failing_heap.h for a program that links shared libraries: only operator new fails. The libraries use the
// program's, except on Windows.

#include <cstddef>
#include <cstdlib>
#include <new>

#include "tests/support/failing_heap.h"

static thread_local int g_countdown = 0;
static thread_local bool g_failed = false;

void FailAllocation(int n) {
  g_countdown = n;
  g_failed = false;
}

bool AllocationFailed() {
  g_countdown = 0;
  return g_failed;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (g_countdown == 0 || --g_countdown != 0) return std::malloc(size != 0 ? size : 1);
  g_failed = true;
  return nullptr;
}
void* operator new(std::size_t size) {
  void* const block = operator new(size, std::nothrow);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }  // if a constructor throws
