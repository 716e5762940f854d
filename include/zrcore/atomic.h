// ZrCore: atomic counters and exchange.
//
// Each function is one read-modify-write operation with full ordering on both sides (sequentially consistent), and one
// test for null. The results are the integers themselves, not result codes: a null address changes nothing and answers
// 0, which can't be told from a real 0. Wrap-around is not guarded: the largest value plus 1 is the smallest.
//
// An increment and a decrement answer the new value, an exchange the old one. The U forms do the same on the bits.
// Addresses must be aligned to their width. Any thread, any time, before ZrInitialize too.

#ifndef ZRCORE_ATOMIC_H
#define ZRCORE_ATOMIC_H

#include "zrcore/base.h"

/// ZrInterlockedIncrement... adds 1 to `*address` and answers the new value; 0 if `address` is null.
ZR_API int32_t ZrInterlockedIncrement32(int32_t* address) ZR_NOEXCEPT;
ZR_API uint32_t ZrInterlockedIncrementU32(uint32_t* address) ZR_NOEXCEPT;
ZR_API int64_t ZrInterlockedIncrement64(int64_t* address) ZR_NOEXCEPT;
ZR_API uint64_t ZrInterlockedIncrementU64(uint64_t* address) ZR_NOEXCEPT;

/// ZrInterlockedDecrement... takes 1 from `*address` and answers the new value; 0 if `address` is null.
ZR_API int32_t ZrInterlockedDecrement32(int32_t* address) ZR_NOEXCEPT;
ZR_API uint32_t ZrInterlockedDecrementU32(uint32_t* address) ZR_NOEXCEPT;
ZR_API int64_t ZrInterlockedDecrement64(int64_t* address) ZR_NOEXCEPT;
ZR_API uint64_t ZrInterlockedDecrementU64(uint64_t* address) ZR_NOEXCEPT;

/// ZrInterlockedExchange... stores `*value` in `*address` and answers what stood there; 0, with nothing changed, if
/// either pointer is null. The new value is passed by address and read with a plain load ahead of the exchange.
ZR_API int32_t ZrInterlockedExchange32(int32_t* address, const int32_t* value) ZR_NOEXCEPT;
ZR_API uint32_t ZrInterlockedExchangeU32(uint32_t* address, const uint32_t* value) ZR_NOEXCEPT;
ZR_API int64_t ZrInterlockedExchange64(int64_t* address, const int64_t* value) ZR_NOEXCEPT;
ZR_API uint64_t ZrInterlockedExchangeU64(uint64_t* address, const uint64_t* value) ZR_NOEXCEPT;

#endif
