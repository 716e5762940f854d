// ZrCore: recursive locks.
//
// A lock is a heap block behind a pointer-sized variable of the caller's. Every function takes the address of that
// variable: creation fills it, deletion clears it, so a deleted lock reads as "no lock". The owner may enter again and
// leaves once for each entry. The lock excludes threads of one process.
//
// A null address (or null `acquired`) gives ZR_R_INVALID_ARGUMENTS, a variable that holds null
// ZR_R_INVALID_OBJECT_STATE; both leave everything as it was.
//
// These are errors of the caller that nothing detects. Each is undefined behaviour:
//   - leaving a lock that the calling thread does not hold;
//   - deleting a lock that a thread holds or waits for;
//   - ending a thread that still holds a lock. No other thread can leave that lock, so the threads that wait for it
//     deadlock. A later thread to which the system gives the same identifier enters the lock as its owner.
//
// Works before ZrInitialize. Any thread, any time; but ZrDeleteCriticalSection must be the only call on its variable.

#ifndef ZRCORE_LOCK_H
#define ZRCORE_LOCK_H

#include "zrcore/base.h"

/// ZRCRITICALSECTION is a lock, or null for none.
typedef struct tagZRCRITICALSECTION* ZRCRITICALSECTION;

/// ZrInitializeCriticalSection makes a lock that nobody holds.
///
/// @param lock  receives the lock, which ZrDeleteCriticalSection frees. An old value is overwritten unseen.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `lock` is null.
/// @throws std::bad_alloc if there is no memory for the lock; the variable is unchanged then. See "Exceptions" in
///         base.h.
ZR_API ZRRESULT ZrInitializeCriticalSection(ZRCRITICALSECTION* lock);

/// ZrDeleteCriticalSection frees the lock and sets the variable to null.
///
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `lock` is null; ZR_R_INVALID_OBJECT_STATE if it holds null, such as after
///         an earlier deletion.
ZR_API ZRRESULT ZrDeleteCriticalSection(ZRCRITICALSECTION* lock) ZR_NOEXCEPT;

/// ZrEnterCriticalSection waits until the lock is free or the thread's own, and enters it.
///
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `lock` is null; ZR_R_INVALID_OBJECT_STATE if it holds null.
ZR_API ZRRESULT ZrEnterCriticalSection(ZRCRITICALSECTION* lock) ZR_NOEXCEPT;

/// ZrLeaveCriticalSection takes back one entry of the calling thread.
///
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `lock` is null; ZR_R_INVALID_OBJECT_STATE if it holds null.
ZR_API ZRRESULT ZrLeaveCriticalSection(ZRCRITICALSECTION* lock) ZR_NOEXCEPT;

/// ZrTryEnterCriticalSection enters the lock if that needs no waiting. It succeeds for the current owner.
///
/// @param acquired  receives 1 if the lock was entered, else 0. Untouched by a failure.
/// @return ZR_R_OK, entered or not. Failures are looked for in this order: ZR_R_INVALID_ARGUMENTS if `lock` is null,
///         the same if `acquired` is null, ZR_R_INVALID_OBJECT_STATE if the variable holds null.
ZR_API ZRRESULT ZrTryEnterCriticalSection(ZRCRITICALSECTION* lock, uint8_t* acquired) ZR_NOEXCEPT;

#endif
