// Counted strings: one block, two header words in front of the characters, the handle points between them.
//
//     | refCount | byteLen | c0 c1 c2 ... 0 |
//     '----- 8 bytes ------^ ZRSTR
//
// What holds everywhere below:
//   1. byteLen counts the terminator and never changes. Length comes from it, never from a scan: zeros may lie inside.
//   2. Characters are written before the creator returns and never after. That is why readers need no lock.
//   3. Only the thread that takes refCount to zero frees. Nobody else can hold the block then.
//   4. A reader of whole units always finds a zero unit inside the allocation, also behind an odd number of bytes.
//
// The shared empty string is an ordinary block whose first reference is never given up: balanced callers can't free it.

#pragma once

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
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

inline uint32_t StringByteLen(ZRSTR string) noexcept {
  return string != nullptr ? StringHeader(string)->byteLen - uint32_t{sizeof(WCHAR)} : 0;
}

inline uint32_t StringLen(ZRSTR string) noexcept {
  return string != nullptr ? (StringHeader(string)->byteLen >> 1) - 1 : 0;
}

// The units of a string, zero units inside included; empty for null. The view is valid while the string lives.
inline CTextView ViewOf(ZRSTR string) noexcept { return {string, StringLen(string)}; }

// A block with one reference whose character area, terminator included, has `areaBytes` bytes for the caller to fill;
// null when memory is exhausted. byteLen takes what fits 32 bits.
[[nodiscard]] inline ZRSTR AllocateString(std::size_t areaBytes) noexcept {
  const std::size_t wholeUnits = (areaBytes + 1) & ~std::size_t{1};
  void* block = AllocateOrNull(sizeof(CStringHeader) + wholeUnits);
  if (block == nullptr) return nullptr;
  auto* header = ::new (block) CStringHeader{1, static_cast<uint32_t>(areaBytes)};
  auto* characters = reinterpret_cast<WCHAR*>(header + 1);
  if (wholeUnits != areaBytes) reinterpret_cast<char*>(characters)[areaBytes] = 0;
  return characters;
}

// A block of `length` units and a terminator, for the caller to write digits straight into their place: a copy from a
// buffer would have to wait until what was stored there piece by piece can be read as a whole.
[[nodiscard]] inline ZRSTR AllocateText(std::size_t length) noexcept {
  ZRSTR string = AllocateString((length + 1) * sizeof(WCHAR));
  if (string != nullptr) string[length] = 0;
  return string;
}

inline ZRSTR ShareString(ZRSTR string) noexcept {
  if (string == nullptr) string = &g_emptyString.terminator;
  std::atomic_ref(StringHeader(string)->refCount).fetch_add(1);
  return string;
}

inline void ReleaseString(ZRSTR string) noexcept {
  if (string == nullptr) return;
  std::atomic_ref refCount(StringHeader(string)->refCount);
  // The only holder of a reference needs no locked instruction to give it up: nobody else can raise the count.
  if (refCount.load(std::memory_order_acquire) != 1 && refCount.fetch_sub(1) != 1) return;
  if (string == &g_emptyString.terminator) {  // released once too often; static data can't go back to the heap
    refCount.store(1);
    return;
  }
  std::free(StringHeader(string));
}

// ZrCompareString without its test: by bytes, a prefix comes first, null is empty.
[[nodiscard]] int32_t CompareStrings(ZRSTR left, ZRSTR right) noexcept;

// One reference on a counted string, given up at the end of the scope. Null stays null: unlike ZrCopyString, a holder
// never turns nothing into the shared empty string.
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
    std::swap(string_, taken.string_);  // what this held goes with `taken`
    return *this;
  }
  ~CStringHolder() { ReleaseString(string_); }

  ZRSTR Get() const noexcept { return string_; }
  [[nodiscard]] ZRSTR Detach() noexcept { return std::exchange(string_, nullptr); }
  ZRSTR* Receive() noexcept {  // for an out-parameter
    assert(string_ == nullptr);
    return &string_;
  }

 private:
  explicit CStringHolder(ZRSTR string) noexcept : string_(string) {}
  ZRSTR string_ = nullptr;
};
