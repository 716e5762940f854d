// ZrCore: atomic counters and exchange.
//
// Each function is one atomic read-modify-write operation on an integer of the caller, with full ordering on both sides
// (sequentially consistent). An increment and a decrement return the new value; an exchange returns the old value. The
// functions with a U in their names do the same with unsigned integers.
//
//     int32_t users = 0;
//     ZrInterlockedIncrement32(&users);
//     int isLast = ZrInterlockedDecrement32(&users) == 0;
//
// The results are the integers themselves, not result codes. In this family a null pointer changes nothing and returns
// 0, which cannot be distinguished from a real 0. Overflow wraps around: the largest value plus 1 is the smallest.
//
// An integer must be aligned to its width: otherwise the behaviour is undefined. Any thread, any time, before
// ZrInitialize too. A plain read or write of the integer at the same time as one of these calls is a data race.

#ifndef ZRCORE_ATOMIC_H
#define ZRCORE_ATOMIC_H

#include "zrcore/base.h"

/// ZrInterlockedIncrement... adds 1 to `*address`.
///
/// @return the new value; 0 if `address` is null.
ZR_API int32_t ZrInterlockedIncrement32(int32_t* address) ZR_NOEXCEPT;
ZR_API uint32_t ZrInterlockedIncrementU32(uint32_t* address) ZR_NOEXCEPT;
ZR_API int64_t ZrInterlockedIncrement64(int64_t* address) ZR_NOEXCEPT;
ZR_API uint64_t ZrInterlockedIncrementU64(uint64_t* address) ZR_NOEXCEPT;

/// ZrInterlockedDecrement... subtracts 1 from `*address`.
///
/// @return the new value; 0 if `address` is null.
ZR_API int32_t ZrInterlockedDecrement32(int32_t* address) ZR_NOEXCEPT;
ZR_API uint32_t ZrInterlockedDecrementU32(uint32_t* address) ZR_NOEXCEPT;
ZR_API int64_t ZrInterlockedDecrement64(int64_t* address) ZR_NOEXCEPT;
ZR_API uint64_t ZrInterlockedDecrementU64(uint64_t* address) ZR_NOEXCEPT;

/// ZrInterlockedExchange... stores `*value` in `*address`.
///
/// @param value  reads the new value before the exchange, with a plain load. If another thread writes `*value` at the
///               same time, it is a data race.
/// @return the old value; 0 if a pointer is null, and nothing changed then.
ZR_API int32_t ZrInterlockedExchange32(int32_t* address, const int32_t* value) ZR_NOEXCEPT;
ZR_API uint32_t ZrInterlockedExchangeU32(uint32_t* address, const uint32_t* value) ZR_NOEXCEPT;
ZR_API int64_t ZrInterlockedExchange64(int64_t* address, const int64_t* value) ZR_NOEXCEPT;
ZR_API uint64_t ZrInterlockedExchangeU64(uint64_t* address, const uint64_t* value) ZR_NOEXCEPT;

#endif
