// Allocates and releases the records of references. REFs and SREFs are small and short-lived, so each kind has an item
// allocator (runtime/item_allocator.h), which keeps released records in a cache.

#pragma once

#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "runtime/item_allocator.h"
#include "zrcore/reference.h"

extern CItemAllocator g_refAllocator;
extern CItemAllocator g_srefAllocator;

// The results are never null. Both throw std::bad_alloc when out of memory.
[[nodiscard]] inline ZRREF* AllocateRef(const ZRREF& value) {
  return ::new (g_refAllocator.Allocate(sizeof(ZRREF))) ZRREF(value);
}
[[nodiscard]] inline ZRSREF* AllocateSref(const ZRSREF& value) {
  return ::new (g_srefAllocator.Allocate(sizeof(ZRSREF))) ZRSREF(value);
}

// Overwrites a record with zeros, because a released record must not disclose its content. Without the fence, a
// compiler removes the stores: nothing reads the record between them and its release. The fence costs no instruction.
template <class Record>
inline void WipeRecord(Record* record) noexcept {
  std::memset(record, 0, sizeof *record);
  std::atomic_signal_fence(std::memory_order_seq_cst);
}

// Release a record, which must not be null. The caller releases the ref and the text of an SREF first.
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

// Owns a record and releases it at the end of the scope.
using CRefHolder = std::unique_ptr<ZRREF, CRefRecycler>;
