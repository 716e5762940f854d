// Counted strings: one block with two header words and then the characters. The handle (ZRSTR) points between them.
//
//     | refCount | byteLen | c0 c1 c2 ... 0 |
//     '----- 8 bytes ------^ ZRSTR
//
// Invariants:
//   1. byteLen counts the terminator and never changes. The length comes from it, never from a scan, because a string
//      may contain zero units.
//   2. Characters are written before the creator returns and never after. That is why readers need no lock.
//   3. Only the thread that releases the last reference frees the block. No other thread can use the block then.
//   4. A string may have an odd number of bytes. A padding byte then makes sure that a scan by units finds a zero unit
//      inside the allocation.
//
// The shared empty string is an ordinary block in static storage whose first reference is never released, so callers
// that release only what they own can't free it.

#pragma once

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "runtime/heap.h"
#include "text/code_units.h"
#include "zrcore/string.h"

struct CStringHeader {
  uint32_t refCount;
  uint32_t byteLen;
};
static_assert(sizeof(CStringHeader) == 8 && offsetof(CStringHeader, byteLen) == 4);

struct CSharedEmptyString {
  CStringHeader header{1, sizeof(WCHAR)};
  WCHAR terminator = 0;
};
static_assert(offsetof(CSharedEmptyString, terminator) == sizeof(CStringHeader));

extern constinit CSharedEmptyString g_emptyString;

inline CStringHeader* StringHeader(ZRSTR string) noexcept { return reinterpret_cast<CStringHeader*>(string) - 1; }

// The lengths without the terminator; 0 for null. An odd number of bytes is rounded down to whole units.
inline uint32_t StringByteLen(ZRSTR string) noexcept {
  return string != nullptr ? StringHeader(string)->byteLen - uint32_t{sizeof(WCHAR)} : 0;
}

inline uint32_t StringLen(ZRSTR string) noexcept {
  return string != nullptr ? (StringHeader(string)->byteLen >> 1) - 1 : 0;
}

// The units of a string, including zero units; empty for null. The view is valid as long as the string exists.
inline CTextView ViewOf(ZRSTR string) noexcept { return {string, StringLen(string)}; }

// Allocates a block with one reference. The caller fills its character area, which has `areaBytes` bytes including the
// terminator. Returns null when out of memory.
//
// An area of more than 32 bits is allocated in full, but byteLen contains only the low 32 bits of its size. Callers of
// the exports rely on getting such a string, which they may only destroy.
[[nodiscard]] inline ZRSTR AllocateString(std::size_t areaBytes) noexcept {
  const std::size_t wholeUnits = (areaBytes + 1) & ~std::size_t{1};
  void* block = AllocateOrNull(sizeof(CStringHeader) + wholeUnits);
  if (block == nullptr) return nullptr;
  auto* header = ::new (block) CStringHeader{1, static_cast<uint32_t>(areaBytes)};
  auto* characters = reinterpret_cast<WCHAR*>(header + 1);
  if (wholeUnits != areaBytes) reinterpret_cast<char*>(characters)[areaBytes] = 0;
  return characters;
}

// Allocates a block of `length` units and a terminator. The caller writes the units.
//
// Formatters use it to write digits straight to their places rather than into a buffer first. Copying such a buffer in
// wide vectors right after it was written in small pieces would stall the processor.
[[nodiscard]] inline ZRSTR AllocateText(std::size_t length) noexcept {
  ZRSTR string = AllocateString((length + 1) * sizeof(WCHAR));
  if (string != nullptr) string[length] = 0;
  return string;
}

// Makes a new string of the units from `begin` to `end`. Returns null when out of memory. (ZrCreateStringByteLen rather
// than ZrCreateStringLen, because the units need no terminator.)
[[nodiscard]] inline ZRSTR NewString(const WCHAR* begin, const WCHAR* end) noexcept {
  return ZrCreateStringByteLen(begin,
                               static_cast<uint32_t>((end - begin) * static_cast<std::ptrdiff_t>(sizeof(WCHAR))));
}

// ZrCopyString: adds a reference. For null it returns the shared empty string, so the result is never null.
inline ZRSTR ShareString(ZRSTR string) noexcept {
  if (string == nullptr) string = &g_emptyString.terminator;
  std::atomic_ref(StringHeader(string)->refCount).fetch_add(1);
  return string;
}

// ZrDestroyString: releases a reference. Null is ignored.
inline void ReleaseString(ZRSTR string) noexcept {
  if (string == nullptr) return;
  std::atomic_ref refCount(StringHeader(string)->refCount);
  // If the count is 1, this is the only reference, and no other thread can raise or lower the count. A plain load then
  // replaces the locked decrement, which costs several times as much.
  if (refCount.load(std::memory_order_acquire) != 1 && refCount.fetch_sub(1) != 1) return;
  if (string == &g_emptyString.terminator) {  // a caller has released it too often; static data must not be freed
    refCount.store(1);
    return;
  }
  std::free(StringHeader(string));
}

// ZrCompareString without the check of its arguments. Compares bytes; if one string is the beginning of the other, the
// shorter one comes first; null is empty.
//
// memcmp compares bytes, not units: callers rely on this order, in which U+0100 (00 01) comes before U+00FF (FF 00) on
// a little-endian machine.
[[nodiscard]] inline int32_t CompareStrings(ZRSTR left, ZRSTR right) noexcept {
  const uint32_t leftBytes = StringByteLen(left), rightBytes = StringByteLen(right);
  // Computed before memcmp is called, so that one value and not two lengths is kept during the call.
  const int32_t byLength = leftBytes == rightBytes ? 0 : leftBytes < rightBytes ? -1 : 1;
  const uint32_t common = byLength < 0 ? leftBytes : rightBytes;
  const int order = common != 0 ? std::memcmp(left, right, common) : 0;
  return order != 0 ? order : byLength;
}

// Whether CompareStrings would return 0. Strings of different lengths are not read.
[[nodiscard]] inline bool AreStringsEqual(ZRSTR left, ZRSTR right) noexcept {
  const uint32_t bytes = StringByteLen(left);
  return bytes == StringByteLen(right) && (bytes == 0 || std::memcmp(left, right, bytes) == 0);
}

// Owns one reference on a counted string and releases it at the end of the scope. Null stays null: unlike ZrCopyString,
// Share of null doesn't make the shared empty string.
//
//   Adopt(s)   takes over the caller's reference       Detach()    hands the reference over to the caller
//   Share(s)   adds a reference                        Receive()   the variable to pass as an out-parameter
class CStringHolder {
 public:
  CStringHolder() noexcept = default;
  static CStringHolder Adopt(ZRSTR string) noexcept { return CStringHolder(string); }
  static CStringHolder Share(ZRSTR string) noexcept {
    return CStringHolder(string != nullptr ? ShareString(string) : nullptr);
  }
  CStringHolder(CStringHolder&& other) noexcept : string_(other.Detach()) {}
  CStringHolder& operator=(CStringHolder&& other) noexcept {
    CStringHolder taken(std::move(other));
    std::swap(string_, taken.string_);  // the destructor of `taken` releases the old string
    return *this;
  }
  ~CStringHolder() { ReleaseString(string_); }

  ZRSTR Get() const noexcept { return string_; }
  [[nodiscard]] ZRSTR Detach() noexcept { return std::exchange(string_, nullptr); }
  ZRSTR* Receive() noexcept {
    assert(string_ == nullptr);  // the old reference would leak
    return &string_;
  }

 private:
  explicit CStringHolder(ZRSTR string) noexcept : string_(string) {}
  ZRSTR string_ = nullptr;
};
