// Where the records of references come from and go to: the two item allocators, through four functions.

#pragma once

#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "runtime/item_allocator.h"
#include "zrcore/reference.h"

extern CItemAllocator g_refAllocator;
extern CItemAllocator g_srefAllocator;

// Never null: throws std::bad_alloc.
[[nodiscard]] inline ZRREF* AllocateRef(const ZRREF& value) {
  return ::new (g_refAllocator.Allocate(sizeof(ZRREF))) ZRREF(value);
}
[[nodiscard]] inline ZRSREF* AllocateSref(const ZRSREF& value) {
  return ::new (g_srefAllocator.Allocate(sizeof(ZRSREF))) ZRSREF(value);
}

// Overwrites a record with zeros, so that a released one tells nothing. The fence is for the compiler alone, which
// would take the zeros for dead in front of a release.
template <class Record>
inline void WipeRecord(Record* record) noexcept {
  std::memset(record, 0, sizeof *record);
  std::atomic_signal_fence(std::memory_order_seq_cst);
}

// Not null. An SREF's ref and text are the caller's to release before.
inline void RecycleRef(ZRREF* ref) noexcept {
  WipeRecord(ref);
  g_refAllocator.Recycle(ref);
}
inline void RecycleSref(ZRSREF* sref) noexcept {
  WipeRecord(sref);
  g_srefAllocator.Recycle(sref);
}

struct CRefRecycler {
  void operator()(ZRREF* ref) const noexcept { RecycleRef(ref); }
};

// One record, given back at the end of the scope.
using CRefHolder = std::unique_ptr<ZRREF, CRefRecycler>;
