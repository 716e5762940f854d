// Memory blocks, and the cache of freed items that the library uses before the heap. The library doesn't export the
// cache, so its sources are compiled into this program, which has its own copy of the cache's settings.

#include "zrcore/memory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

#include "row.h"
#include "runtime/item_allocator.h"

#if BENCH_BOOST
#include <boost/pool/pool.hpp>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif

constinit CItemAllocatorSettings g_itemAllocators;
static CItemAllocator g_items("items", true, 24, 0);

static void BlockRows(std::size_t size) {
  const std::string operation = "memory block create+destroy " + std::to_string(size) + " bytes";
  Row(operation, "ZrCore", [size] {
    void* block = ZrCreateMemory(static_cast<uint32_t>(size));
    Consume(block);
    ZrDestroyMemory(block);
  });
  Row(operation, "calloc+free", [size] {
    void* block = std::calloc(1, size);
    Consume(block);
    std::free(block);
  });
#if BENCH_GLIB
  Row(operation, "g_malloc0+g_free", [size] {
    void* block = g_malloc0(size);
    Consume(block);
    g_free(block);
  });
#endif
  Row(operation, "lower bound", [size] {
    auto* block = static_cast<char*>(std::malloc(size + 4));
    std::memset(block, 1, 4);  // not zero, or the compiler would turn malloc and memset into calloc
    std::memset(block + 4, 0, size);
    Consume(block);
    std::free(block);
  });
}

static void CacheRows() {
  const std::string operation = "item allocate+free 24 bytes";
  const auto allocateAndFree = [](bool isEnabled) {
    CItemAllocator::SetEnabled(isEnabled);  // here, because the rows run in random order; it costs only a store
    void* item = g_items.Allocate(24);
    Consume(item);
    g_items.Recycle(item);
  };
  RowOnOneAndTwoThreads(operation, "ZrCore", [allocateAndFree] { allocateAndFree(true); });
  Row(operation, "ZrCore, cache off (heap)", [allocateAndFree] { allocateAndFree(false); });
  RowOnOneAndTwoThreads(operation, "malloc+free", [] {
    void* item = std::malloc(24);
    Consume(item);
    std::free(item);
  });
#if BENCH_BOOST
  auto pool = std::make_shared<boost::pool<>>(24);
  Row(operation, "boost::pool (no lock)", [pool] {
    void* item = pool->malloc();
    Consume(item);
    pool->free(item);
  });
  auto mutex = std::make_shared<std::mutex>();
  RowOnOneAndTwoThreads(operation, "boost::pool, mutex", [pool, mutex] {
    void* item;
    {
      const std::lock_guard hold(*mutex);
      item = pool->malloc();
    }
    Consume(item);
    const std::lock_guard hold(*mutex);
    pool->free(item);
  });
#endif
#if BENCH_GLIB
  Row(operation, "g_slice", [] {
    void* item = g_slice_alloc(24);
    Consume(item);
    g_slice_free1(24, item);
  });
#endif
  struct Item {
    Item* next;
    uint64_t rest[2];
  };
  struct FreeList {
    std::atomic<uint8_t> busy{0};
    Item item{};
    Item* first = &item;
  };
  auto list = std::make_shared<FreeList>();
  Row(operation, "lower bound", [list] {
    Item* item = list->first;
    list->first = item->next;
    Consume(item);
    item->next = list->first;
    list->first = item;
    Consume(list);
  });
  Row(operation, "lower bound by contract", [list] {  // sets and clears the flag twice
    Consume(list->busy.exchange(1, std::memory_order_acquire));
    Item* item = list->first;
    list->first = item->next;
    list->busy.store(0, std::memory_order_release);
    Consume(item);
    Consume(list->busy.exchange(1, std::memory_order_acquire));
    item->next = list->first;
    list->first = item;
    list->busy.store(0, std::memory_order_release);
    Consume(list);
  });
}

void MemoryRows() {
  BlockRows(16);
  BlockRows(4096);
  CacheRows();
}
