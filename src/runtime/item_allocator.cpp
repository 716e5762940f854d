// Slow paths of the item allocators: list of allocators, contention, single-threaded mode, caps, statistics. The paths
// that every item takes are inline in the header.
//
// How a thread gets hold of an allocator:
//
//     mode             state of the flag or owner      result
//     multi-threaded   flag free                       Hold::ByFlag, inline
//     multi-threaded   flag taken                      up to 100 attempts with a yield before each, then Hold::None
//     single-threaded  no owner thread yet             the calling thread becomes the owner: Hold::ByThread
//     single-threaded  owner is the calling thread     Hold::ByThread
//     single-threaded  owner is another thread         Hold::None
//
// Hold::None is not an error: the caller then uses the heap.

#include "runtime/item_allocator.h"

#include <cassert>
#include <ostream>
#include <string>

// The list of allocators has no lock. Allocators are constructed while the library is loaded, by one thread.
CItemAllocator::CItemAllocator(const char* name, bool isThreadSafe, uint64_t itemSize, uint32_t cap) noexcept
    : itemSize_(itemSize), cap_(cap), isThreadSafe_(isThreadSafe), name_(name), next_(g_itemAllocators.head) {
  assert(itemSize >= sizeof(CFreeItem));
  if (next_ != nullptr) next_->previous_ = this;
  g_itemAllocators.head = this;
}

void CItemAllocator::Teardown() noexcept {
  while (freeList_ != nullptr) FreeFirst();
  unused_ = 0;
  if (g_itemAllocators.head == this) g_itemAllocators.head = next_;
  if (previous_ != nullptr) previous_->next_ = next_;
  if (next_ != nullptr) next_->previous_ = previous_;
  itemSize_.store(0, std::memory_order_relaxed);  // from now on neither PopCached nor PushCached uses the cache
}

// Waits a limited time. The holder of the flag executes only a few instructions, but the system may have suspended it
// in the middle of them. A thread that waited without limit could then wait for a whole time slice or, with real-time
// priorities, for ever.
CItemAllocator::Hold CItemAllocator::AcquireSlowPath() noexcept {
  if (!g_itemAllocators.isMultiThreaded.load(std::memory_order_relaxed)) {
    return IsOwnerThread() ? Hold::ByThread : Hold::None;
  }
  for (int round = 0; round < 100; ++round) {
    if (!PlatformYield()) PlatformGiveUpTimeSlice();  // nothing else was ready
    if (TryFlag()) return Hold::ByFlag;
  }
  return Hold::None;
}

// Whether the calling thread may use the caches in single-threaded mode. The first thread that uses any allocator in
// this mode becomes the owner of all of them, until the process ends.
//
// A thread must take the flag before it claims the ownership, so it can't become the owner while another thread is in
// this allocator. The flag does not decide which thread wins: two threads may hold the flags of two allocators at the
// same time. The compare-exchange of the owner word decides.
bool CItemAllocator::IsOwnerThread() noexcept {
  std::atomic<uint32_t>& owner = g_itemAllocators.ownerThread;
  uint32_t current = owner.load(std::memory_order_relaxed);
  if (current != kNoThread) return current == PlatformThreadId();
  if (!TryFlag()) return false;
  const bool isFirst = owner.compare_exchange_strong(current, PlatformThreadId(), std::memory_order_relaxed);
  Release(Hold::ByFlag);
  return isFirst;
}

// Requires a hold or, in Teardown and SetCap, that no other thread uses the allocator. The list must not be empty.
void CItemAllocator::FreeFirst() noexcept {
  CFreeItem* item = freeList_;
  freeList_ = item->next;
  SetCached(Cached() - 1);
  std::free(item);
}

// Lowering the cap below the number of cached items leaves `cap` - 1 of them: the loop compares with >=. The contract
// fixes this number. A cap of 0 frees all items, because the comparison is always true then; the check for the end of
// the list stops the loop.
//
//     cap 8 -> 3, 5 cached   2 are left        cap 0 -> 3, 5 cached   5 are left: the old cap is less
//     cap 8 -> 5, 5 cached   5 are left        cap 8 -> 0, 5 cached   none is left
void CItemAllocator::SetCap(uint32_t cap) noexcept {
  if (cap < cap_.load(std::memory_order_relaxed) && Cached() > cap) {
    while (freeList_ != nullptr && Cached() >= cap) FreeFirst();
  }
  cap_.store(cap, std::memory_order_relaxed);
}

// The text is fixed: "NAME : CACHED/CAP/BYTES" per allocator. The numbers are converted by std::to_string, because a
// stream may be set to another base or to grouping.
//
// The counts are read without a hold. While other threads use the allocators, each is right for some moment only.
void CItemAllocator::WriteStatistics(std::ostream& out) {
  out << "-- Allocator statistics : number of cached items/max size/memory usage (in bytes)" << std::endl;
  for (const CItemAllocator* allocator = g_itemAllocators.head; allocator != nullptr; allocator = allocator->next_) {
    const uint64_t cached = allocator->Cached();
    out << allocator->name_ << " : " << std::to_string(cached) << "/" << std::to_string(allocator->CapInForce()) << "/"
        << std::to_string(allocator->itemSize_.load(std::memory_order_relaxed) * cached) << std::endl;
  }
}
