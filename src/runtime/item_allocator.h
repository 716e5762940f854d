// Item allocators: a cache of freed items of one size, in front of the heap.
//
//     freeList_ --> | next | old content | --> | next | old content | --> null         cached_ items, most recent first
//
// What holds everywhere below:
//   1. Items come from malloc and go to free, cached or not. So the cache may be switched on and off at any time, and
//      an item that was made under one setting may be given back under another.
//   2. The cache never waits: who can't get hold of the allocator within some hundred yields goes to the heap.
//   3. An allocator that has been torn down has item size 0, which no request matches: what is released late in the
//      process's end goes to the heap. Therefore the class has no destructor (what a destructor stores is nobody's to
//      read): Teardown is called by an object of its own, CItemAllocatorTeardown.
//
// The switch is the first thing that is looked at, so that a cache that is off costs one load. Settings and counts are
// atomic so that they can be read without a hold; none of them orders anything.

#pragma once

#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <new>
#include <type_traits>

#include "platform/scheduling.h"
#include "runtime/heap.h"

class CItemAllocator;

// What all allocators share.
struct CItemAllocatorSettings {
  CItemAllocator* head = nullptr;                // the one that was constructed last
  std::atomic<bool> isEnabled{false};            // off until a configuration turns it on
  std::atomic<bool> isMultiThreaded{true};       // else the first thread to come is the only one to use the caches
  std::atomic<uint32_t> ownerThread{kNoThread};  // that thread
  std::atomic<uint64_t> defaultCap{1024};        // for allocators whose cap is 0
};

extern constinit CItemAllocatorSettings g_itemAllocators;

class CItemAllocator {
 public:
  // `name` has static storage and `itemSize` at least the size of a pointer; `cap` 0 stands for the default cap.
  // The new allocator becomes the head of the list of allocators: one thread at a time.
  CItemAllocator(const char* name, bool isThreadSafe, uint64_t itemSize, uint32_t cap) noexcept;
  CItemAllocator(const CItemAllocator&) = delete;
  CItemAllocator& operator=(const CItemAllocator&) = delete;

  // Frees what is cached and leaves the list of allocators, without a hold: no other thread may use the allocator
  // meanwhile. Afterwards it serves from the heap and to the heap.
  void Teardown() noexcept;

  // A cached item with its old content, for a request of the item size; or null, never from the heap.
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

  // From the cache, else from the heap: throws std::bad_alloc.
  [[nodiscard]] void* Allocate(uint64_t size) {
    void* item = PopCached(size);
    return item != nullptr ? item : AllocateOrThrow(size);
  }

  // Fixed by contract. From the cache, else from the heap, else null.
  [[nodiscard]] void* AllocateWithoutThrow(uint64_t size) noexcept {
    void* item = PopCached(size);
    return item != nullptr ? item : AllocateOrNull(size);
  }

  // Takes an item, into the cache if there is room, else to the heap. Null is ignored.
  void Recycle(void* item) noexcept {
    if (!IsEnabled() || !PushCached(item)) std::free(item);
  }
  void Recycle(void* item, uint64_t /*size*/) noexcept { Recycle(item); }  // Fixed by contract.

  // Stores the cap. If it is lower than the one before and than the number of cached items, frees items until one fewer
  // than the new cap is left. A cap before of 0, which stands for the default, trims nothing.
  //
  // Trims without a hold: a thread that takes or gives at the same moment corrupts the list. Lower a cap when the
  // caches are off and nobody is inside any more.
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

  // Fixed by contract. A headline, then a line for each allocator from the head of the list on: name, cached items, cap
  // in force, bytes.
  static void WriteStatistics(std::ostream& out);

 private:
  friend struct CItemAllocatorProbe;  // a test that holds the flag

  struct CFreeItem {
    CFreeItem* next;
  };

  enum class Hold : uint8_t { None, ByFlag, ByThread };  // by thread: nobody else may use the caches, nothing to leave

  static bool IsEnabled() noexcept { return g_itemAllocators.isEnabled.load(std::memory_order_relaxed); }

  uint64_t CapInForce() const noexcept {
    const uint32_t cap = cap_.load(std::memory_order_relaxed);
    return cap != 0 ? cap : g_itemAllocators.defaultCap.load(std::memory_order_relaxed);
  }

  // One writer at a time, the holder, so that no locked instruction is needed.
  uint32_t Cached() const noexcept { return cached_.load(std::memory_order_relaxed); }
  void SetCached(uint32_t cached) noexcept { cached_.store(cached, std::memory_order_relaxed); }

  [[nodiscard]] bool TryFlag() noexcept {
    return busy_.load(std::memory_order_relaxed) == 0 && busy_.exchange(1, std::memory_order_acquire) == 0;
  }

  [[nodiscard]] Hold Acquire() noexcept {
    if (g_itemAllocators.isMultiThreaded.load(std::memory_order_relaxed) && TryFlag()) return Hold::ByFlag;
    return AcquireSlowly();
  }
  [[nodiscard]] Hold AcquireSlowly() noexcept;
  [[nodiscard]] bool IsOwnerThread() noexcept;

  // What the hold was taken by, not what the settings say by now.
  void Release(Hold hold) noexcept {
    if (hold == Hold::ByFlag) busy_.store(0, std::memory_order_release);
  }

  // Whether the item went into the cache.
  [[nodiscard]] bool PushCached(void* item) noexcept {
    if (item == nullptr || itemSize_.load(std::memory_order_relaxed) == 0) return false;
    const Hold hold = Acquire();
    if (hold == Hold::None) return false;
    const bool hasRoom = Cached() < CapInForce();
    if (hasRoom) {
      freeList_ = ::new (item) CFreeItem{freeList_};
      SetCached(Cached() + 1);
    }
    Release(hold);
    return hasRoom;
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

// Tears the allocator down at its own place in the order of destruction.
class CItemAllocatorTeardown {
 public:
  explicit CItemAllocatorTeardown(CItemAllocator& allocator) noexcept : allocator_(allocator) {}
  CItemAllocatorTeardown(const CItemAllocatorTeardown&) = delete;
  CItemAllocatorTeardown& operator=(const CItemAllocatorTeardown&) = delete;
  ~CItemAllocatorTeardown() { allocator_.Teardown(); }

 private:
  CItemAllocator& allocator_;
};
