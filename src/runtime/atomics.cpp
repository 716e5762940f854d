// The atomic exports. A U form does the same on the bits as its signed form; one template serves all.

#include <atomic>

#include "zrcore/atomic.h"

template <class Integer>
static Integer Increment(Integer* address) noexcept {
  if (address == nullptr) return 0;
  // Unsigned arithmetic, so that the largest value plus 1 is the smallest in the signed forms too.
  return static_cast<Integer>(static_cast<std::make_unsigned_t<Integer>>(std::atomic_ref(*address).fetch_add(1)) + 1);
}

template <class Integer>
static Integer Decrement(Integer* address) noexcept {
  if (address == nullptr) return 0;
  return static_cast<Integer>(static_cast<std::make_unsigned_t<Integer>>(std::atomic_ref(*address).fetch_sub(1)) - 1);
}

template <class Integer>
static Integer Exchange(Integer* address, const Integer* value) noexcept {
  if (address == nullptr || value == nullptr) return 0;
  return std::atomic_ref(*address).exchange(*value);
}

int32_t ZrInterlockedIncrement32(int32_t* address) noexcept { return Increment(address); }
uint32_t ZrInterlockedIncrementU32(uint32_t* address) noexcept { return Increment(address); }
int64_t ZrInterlockedIncrement64(int64_t* address) noexcept { return Increment(address); }
uint64_t ZrInterlockedIncrementU64(uint64_t* address) noexcept { return Increment(address); }

int32_t ZrInterlockedDecrement32(int32_t* address) noexcept { return Decrement(address); }
uint32_t ZrInterlockedDecrementU32(uint32_t* address) noexcept { return Decrement(address); }
int64_t ZrInterlockedDecrement64(int64_t* address) noexcept { return Decrement(address); }
uint64_t ZrInterlockedDecrementU64(uint64_t* address) noexcept { return Decrement(address); }

int32_t ZrInterlockedExchange32(int32_t* address, const int32_t* value) noexcept { return Exchange(address, value); }
uint32_t ZrInterlockedExchangeU32(uint32_t* address, const uint32_t* value) noexcept {
  return Exchange(address, value);
}
int64_t ZrInterlockedExchange64(int64_t* address, const int64_t* value) noexcept { return Exchange(address, value); }
uint64_t ZrInterlockedExchangeU64(uint64_t* address, const uint64_t* value) noexcept {
  return Exchange(address, value);
}
