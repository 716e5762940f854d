// Item allocators: each keeps freed items of one size in a list and serves requests from it before it uses the heap.
//
//     freeList_ --> | next | old content | --> | next | old content | --> null         cached_ items, most recent first
//
//     Recycle(a), Recycle(b), Allocate(size) -> b, Allocate(size) -> a, Allocate(size) -> a new block of the heap
//
// Invariants:
//   1. Every item was allocated with malloc and may be released with free, whether it was cached or not. So the caches
//      may be switched on and off at any time, even between the allocation of an item and its recycling.
//   2. No thread waits for an allocator without limit: after 100 failed attempts it uses the heap.
//   3. Only the thread that has a hold reads or writes freeList_ and writes cached_. SetCap and Teardown work without a
//      hold: during these calls no other thread may use the allocator.
//   4. An allocator that has been torn down has item size 0: it finds no item for a request and caches no item. So
//      items that are released late, while the process ends, go to the heap.
//
// Because of 4 the class has no destructor. The compiler may drop the stores of a destructor, since reading an object
// after its destruction is undefined behaviour. CItemAllocatorTeardown, another object, calls Teardown instead.
//
// The switch is tested first, so a cache that is off costs one load. Settings and counts are atomic because they are
// read without a hold. They order nothing, so all their operations are relaxed. The flag busy_ alone orders: acquire
// when it is taken, release when it is cleared.

#pragma once

#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <new>
#include <type_traits>

#include "platform/scheduling.h"
#include "runtime/heap.h"

class CItemAllocator;

// The settings that all allocators share, and the list of all allocators.
struct CItemAllocatorSettings {
  CItemAllocator* head = nullptr;                // the one that was constructed last
  std::atomic<bool> isEnabled{false};            // off until a configuration turns it on
  std::atomic<bool> isMultiThreaded{true};       // if false, only one thread uses the caches: the first
  std::atomic<uint32_t> ownerThread{kNoThread};  // that first thread
  std::atomic<uint64_t> defaultCap{1024};        // for allocators whose cap is 0
};

extern constinit CItemAllocatorSettings g_itemAllocators;

class CItemAllocator {
 public:
  // `name` must have static storage, and `itemSize` must be at least the size of a pointer. A `cap` of 0 means the
  // default cap. The new allocator becomes the head of the list of allocators, so two constructions that overlap are a
  // data race.
  CItemAllocator(const char* name, bool isThreadSafe, uint64_t itemSize, uint32_t cap) noexcept;
  CItemAllocator(const CItemAllocator&) = delete;
  CItemAllocator& operator=(const CItemAllocator&) = delete;

  // Frees all cached items and removes the allocator from the list of allocators. It works without a hold: if another
  // thread uses the allocator meanwhile, it is a data race. Afterwards the allocator uses only the heap.
  void Teardown() noexcept;

  // Returns a cached item. It has its old content, except for the link in its first bytes. Returns null if there is
  // none, if `size` is not the item size, if the caches are off or if another thread has the hold. Never allocates.
  [[nodiscard]] void* PopCached(uint64_t size) noexcept {
    if (!IsEnabled() || size != itemSize_.load(std::memory_order_relaxed)) return nullptr;
    const Hold hold = Acquire();
    if (hold == Hold::None) return nullptr;
    CFreeItem* item = freeList_;
    if (item != nullptr) {
      freeList_ = item->next;
      SetCached(Cached() - 1);
    }
    Release(hold);
    return item;
  }

  // Returns an item from the cache, else from the heap. Never null: throws std::bad_alloc.
  [[nodiscard]] void* Allocate(uint64_t size) {
    void* item = PopCached(size);
    return item != nullptr ? item : AllocateOrThrow(size);
  }

  // Fixed by contract. Returns an item from the cache, else from the heap; null if out of memory.
  [[nodiscard]] void* AllocateWithoutThrow(uint64_t size) noexcept {
    void* item = PopCached(size);
    return item != nullptr ? item : AllocateOrNull(size);
  }

  // Takes an item. It goes into the cache if the number of cached items is below the cap, else to the heap. The cache
  // overwrites the first bytes of the item with its link. Null is ignored.
  void Recycle(void* item) noexcept {
    if (!IsEnabled() || !PushCached(item)) std::free(item);
  }
  void Recycle(void* item, uint64_t /*size*/) noexcept { Recycle(item); }  // Fixed by contract.

  // Stores the cap. If the new cap is less than the old cap and less than the number of cached items, items are freed
  // until one fewer than the new cap is left. An old cap of 0, which means the default, counts as 0: nothing is freed.
  //
  // Items are freed without a hold. If another thread allocates or recycles at that moment, it is a data race that
  // corrupts the list. A cap must be lowered only while the caches are off and no thread is in the allocator any more.
  void SetCap(uint32_t cap) noexcept;

  static void SetEnabled(bool isEnabled) noexcept {
    g_itemAllocators.isEnabled.store(isEnabled, std::memory_order_relaxed);
  }
  // Fixed by contract.
  static void SetMultiThreaded(bool isMultiThreaded) noexcept {
    g_itemAllocators.isMultiThreaded.store(isMultiThreaded, std::memory_order_relaxed);
  }
  // Fixed by contract.
  static void SetDefaultCap(uint32_t cap) noexcept {
    g_itemAllocators.defaultCap.store(cap, std::memory_order_relaxed);
  }

  // Fixed by contract. Writes a headline and then one line per allocator, from the head of the list on: name, number of
  // cached items, cap in force, bytes of the cached items.
  static void WriteStatistics(std::ostream& out);

 private:
  friend struct CItemAllocatorProbe;  // a test that sets the flag and reads the count

  struct CFreeItem {
    CFreeItem* next;
  };

  // The right to use the list. ByFlag: the thread has set busy_ and must clear it. ByThread: single-threaded mode, in
  // which no other thread may use the caches; nothing has to be released.
  enum class Hold : uint8_t { None, ByFlag, ByThread };

  static bool IsEnabled() noexcept { return g_itemAllocators.isEnabled.load(std::memory_order_relaxed); }

  uint64_t CapInForce() const noexcept {
    const uint32_t cap = cap_.load(std::memory_order_relaxed);
    return cap != 0 ? cap : g_itemAllocators.defaultCap.load(std::memory_order_relaxed);
  }

  // Only the thread with the hold writes the count, so a load and a store suffice; no atomic increment is needed.
  uint32_t Cached() const noexcept { return cached_.load(std::memory_order_relaxed); }
  void SetCached(uint32_t cached) noexcept { cached_.store(cached, std::memory_order_relaxed); }

  // Tries once to set the flag. The plain load comes first, because a failed exchange would take the cache line away
  // from the thread that has the flag.
  [[nodiscard]] bool TryFlag() noexcept {
    return busy_.load(std::memory_order_relaxed) == 0 && busy_.exchange(1, std::memory_order_acquire) == 0;
  }

  // The mode may change between this function and the slow path; each reads it anew.
  [[nodiscard]] Hold Acquire() noexcept {
    if (g_itemAllocators.isMultiThreaded.load(std::memory_order_relaxed) && TryFlag()) return Hold::ByFlag;
    return AcquireSlowPath();
  }
  [[nodiscard]] Hold AcquireSlowPath() noexcept;
  [[nodiscard]] bool IsOwnerThread() noexcept;

  // Decides by how the hold was acquired. The mode may have been changed since, so it must not be read again.
  void Release(Hold hold) noexcept {
    if (hold == Hold::ByFlag) busy_.store(0, std::memory_order_release);
  }

  // Returns whether the item went into the cache. If not, the caller still owns it.
  [[nodiscard]] bool PushCached(void* item) noexcept {
    if (item == nullptr || itemSize_.load(std::memory_order_relaxed) == 0) return false;
    const Hold hold = Acquire();
    if (hold == Hold::None) return false;
    const bool isBelowCap = Cached() < CapInForce();
    if (isBelowCap) {
      freeList_ = ::new (item) CFreeItem{freeList_};
      SetCached(Cached() + 1);
    }
    Release(hold);
    return isBelowCap;
  }

  void FreeFirst() noexcept;

  std::atomic<uint64_t> itemSize_;
  std::atomic<uint32_t> cached_{0};
  std::atomic<uint32_t> cap_;
  std::atomic<uint8_t> busy_{0};
  [[maybe_unused]] bool isThreadSafe_;  // Fixed by contract.
  const char* name_;
  CFreeItem* freeList_ = nullptr;
  CItemAllocator* previous_ = nullptr;  // nearer the head
  CItemAllocator* next_;
  uint64_t unused_ = 0;  // Fixed by contract.
};
static_assert(std::is_trivially_destructible_v<CItemAllocator>);

// Calls Teardown when this object is destroyed, which gives the teardown a place in the order of destruction.
class CItemAllocatorTeardown {
 public:
  explicit CItemAllocatorTeardown(CItemAllocator& allocator) noexcept : allocator_(allocator) {}
  CItemAllocatorTeardown(const CItemAllocatorTeardown&) = delete;
  CItemAllocatorTeardown& operator=(const CItemAllocatorTeardown&) = delete;
  ~CItemAllocatorTeardown() { allocator_.Teardown(); }

 private:
  CItemAllocator& allocator_;
};
