// The linker's option --wrap redirects the allocation functions; operator new and operator delete are replaced.

#include "tests/support/failing_heap.h"

#include <cstddef>
#include <cstdlib>
#include <new>

static thread_local int g_countdown = 0;
static thread_local bool g_failed = false;
void (*g_onFree)(const void* block) = nullptr;

void FailAllocation(int n) {
  g_countdown = n;
  g_failed = false;
}

bool AllocationFailed() {
  g_countdown = 0;
  return g_failed;
}

static bool Fails() {
  if (g_countdown == 0 || --g_countdown != 0) return false;
  g_failed = true;
  return true;
}

// The linker redirects every call of malloc, calloc, realloc and free in this program's own objects to these wrappers.
extern "C" {
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) { return Fails() ? nullptr : __real_malloc(size); }

void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size) { return Fails() ? nullptr : __real_calloc(count, size); }

void __real_free(void* block);
void __wrap_free(void* block) {
  if (g_onFree != nullptr) g_onFree(block);
  __real_free(block);
}

void* __real_realloc(void* block, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size) { return Fails() ? nullptr : __real_realloc(block, size); }
}

void* operator new(std::size_t size) {
  void* block = Fails() ? nullptr : __real_malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
