// The atomic exports: increment, decrement and exchange of 32-bit and 64-bit integers.
//
// One template per operation serves the signed and the unsigned form: in two's complement both do the same to the bits.
//
//     value 0x7FFFFFFF   ZrInterlockedIncrement32   -> 0x80000000 is stored, -2147483648 is returned
//     null address       any of the functions       -> nothing is stored, 0 is returned
//
// std::atomic_ref makes a plain integer of the caller atomic for one operation. Its default order is sequentially
// consistent, which the public header promises.

#include <atomic>

#include "zrcore/atomic.h"

// Returns the new value, whereas fetch_add returns the old one.
//
// fetch_add wraps around for signed integers too. The plain addition must wrap in the same way, but a signed overflow
// is undefined behaviour there. Therefore it is done with the unsigned type of the same width.
template <class Integer>
static Integer Increment(Integer* address) noexcept {
  if (address == nullptr) return 0;
  return static_cast<Integer>(static_cast<std::make_unsigned_t<Integer>>(std::atomic_ref(*address).fetch_add(1)) + 1);
}

// Like Increment: new value = old value - 1, modulo 2^32 or 2^64.
template <class Integer>
static Integer Decrement(Integer* address) noexcept {
  if (address == nullptr) return 0;
  return static_cast<Integer>(static_cast<std::make_unsigned_t<Integer>>(std::atomic_ref(*address).fetch_sub(1)) - 1);
}

// Returns the old value. The load of `*value` is plain: only the exchange at `address` is atomic.
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
