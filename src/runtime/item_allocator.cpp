// What of the item allocators is not on the road of every item.

#include "runtime/item_allocator.h"

#include <cassert>
#include <ostream>
#include <string>

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
  itemSize_.store(0, std::memory_order_relaxed);
}

CItemAllocator::Hold CItemAllocator::AcquireSlowly() noexcept {
  if (!g_itemAllocators.isMultiThreaded.load(std::memory_order_relaxed)) {
    return IsOwnerThread() ? Hold::ByThread : Hold::None;
  }
  for (int round = 0; round < 100; ++round) {
    if (!PlatformYield()) PlatformGiveUpTimeSlice();  // nothing else was ready
    if (TryFlag()) return Hold::ByFlag;
  }
  return Hold::None;
}

// The first thread wins, for all allocators. The exchange of the owner word decides: the flag keeps off only those who
// are in this allocator.
bool CItemAllocator::IsOwnerThread() noexcept {
  std::atomic<uint32_t>& owner = g_itemAllocators.ownerThread;
  uint32_t current = owner.load(std::memory_order_relaxed);
  if (current != kNoThread) return current == PlatformThreadId();
  if (!TryFlag()) return false;
  const bool isFirst = owner.compare_exchange_strong(current, PlatformThreadId(), std::memory_order_relaxed);
  Release(Hold::ByFlag);
  return isFirst;
}

void CItemAllocator::FreeFirst() noexcept {
  CFreeItem* item = freeList_;
  freeList_ = item->next;
  SetCached(Cached() - 1);
  std::free(item);
}

void CItemAllocator::SetCap(uint32_t cap) noexcept {
  if (cap < cap_.load(std::memory_order_relaxed) && Cached() > cap) {
    // Down to one fewer than the cap, as long as there are any.
    while (freeList_ != nullptr && Cached() >= cap) FreeFirst();
  }
  cap_.store(cap, std::memory_order_relaxed);
}

void CItemAllocator::WriteStatistics(std::ostream& out) {
  out << "-- Allocator statistics : number of cached items/max size/memory usage (in bytes)" << std::endl;
  for (const CItemAllocator* at = g_itemAllocators.head; at != nullptr; at = at->next_) {
    const uint64_t cached = at->Cached();
    // As texts, so that the numbers are decimal whatever the stream is set to.
    out << at->name_ << " : " << std::to_string(cached) << "/" << std::to_string(at->CapInForce()) << "/"
        << std::to_string(at->itemSize_.load(std::memory_order_relaxed) * cached) << std::endl;
  }
}
