// ZrCore: recursive locks.
//
// A ZRCRITICALSECTION is a lock on the heap. The caller has a variable of this type, and every function takes the
// address of the variable. Creation stores a lock in the variable and deletion stores null, so that later calls find no
// lock. The thread that is in the lock, its owner, may enter it again, and must leave it once for each entry. The lock
// works between the threads of one process.
//
//     ZRCRITICALSECTION lock = 0;
//     ZRRESULT result = ZrInitializeCriticalSection(&lock);
//     result = ZrEnterCriticalSection(&lock);
//     ...                                                        // one thread at a time
//     result = ZrLeaveCriticalSection(&lock);
//     result = ZrDeleteCriticalSection(&lock);
//
// In this family a null address (also a null `acquired`) returns ZR_R_INVALID_ARGUMENTS, and a variable that contains
// null returns ZR_R_INVALID_OBJECT_STATE. Nothing changes in either case. Only ZrInitializeCriticalSection does not
// check what the variable contains.
//
// The library does not detect the following errors. Each is undefined behaviour:
//   - to leave a lock that the calling thread has not entered;
//   - to delete a lock that a thread has entered or waits for;
//   - to end a thread that has not left a lock. Threads that wait for the lock then deadlock. A later thread to which
//     the system assigns the same identifier enters the lock as its owner.
//
// Two threads that enter the same two locks in different order may deadlock.
//
// Any thread, any time, before ZrInitialize too. But while ZrInitializeCriticalSection or ZrDeleteCriticalSection runs,
// no other call may use the same variable: that is a data race.

#ifndef ZRCORE_LOCK_H
#define ZRCORE_LOCK_H

#include "zrcore/base.h"

/// ZRCRITICALSECTION is a lock. Null is not a lock.
typedef struct tagZRCRITICALSECTION* ZRCRITICALSECTION;

/// ZrInitializeCriticalSection creates a lock that no thread has entered.
///
/// @param lock  gives a lock (ZrDeleteCriticalSection). Leak: a lock that the variable contained is not freed.
/// @return
///   - ZR_R_OK                 `*lock` was written.
///   - ZR_R_INVALID_ARGUMENTS  `lock` is null.
/// @throws std::bad_alloc if there is no memory for the lock; the variable is unchanged then. See "Exceptions" in
///         base.h.
///
/// One allocation.
ZR_API ZRRESULT ZrInitializeCriticalSection(ZRCRITICALSECTION* lock);

/// ZrDeleteCriticalSection frees the lock and sets the variable to null.
///
/// @param lock  takes the lock in the variable. No thread may be in it or wait for it: otherwise the behaviour is
///              undefined.
/// @return
///   - ZR_R_OK                    the lock was freed.
///   - ZR_R_INVALID_ARGUMENTS     `lock` is null.
///   - ZR_R_INVALID_OBJECT_STATE  the variable contains null, such as after an earlier deletion.
ZR_API ZRRESULT ZrDeleteCriticalSection(ZRCRITICALSECTION* lock) ZR_NOEXCEPT;

/// ZrEnterCriticalSection enters the lock. It waits while another thread is in the lock; the owner enters at once.
///
/// @return
///   - ZR_R_OK                    the calling thread is in the lock.
///   - ZR_R_INVALID_ARGUMENTS     `lock` is null.
///   - ZR_R_INVALID_OBJECT_STATE  the variable contains null.
///
/// If the system cannot lock a mutex, the process is terminated.
ZR_API ZRRESULT ZrEnterCriticalSection(ZRCRITICALSECTION* lock) ZR_NOEXCEPT;

/// ZrLeaveCriticalSection cancels one entry of the calling thread. When all its entries are cancelled, another thread
/// can enter.
///
/// The calling thread must be in the lock: otherwise the behaviour is undefined.
///
/// @return
///   - ZR_R_OK                    one entry was cancelled.
///   - ZR_R_INVALID_ARGUMENTS     `lock` is null.
///   - ZR_R_INVALID_OBJECT_STATE  the variable contains null.
ZR_API ZRRESULT ZrLeaveCriticalSection(ZRCRITICALSECTION* lock) ZR_NOEXCEPT;

/// ZrTryEnterCriticalSection enters the lock if it can do so without waiting. The owner can always enter.
///
/// @param acquired  receives 1 if the lock was entered, else 0; unchanged after a failure.
/// @return The first code that applies.
///   - ZR_R_INVALID_ARGUMENTS     `lock` or `acquired` is null.
///   - ZR_R_INVALID_OBJECT_STATE  the variable contains null.
///   - ZR_R_OK                    `*acquired` was written, whether or not the lock was entered. If it is 0, the calling
///                                thread must not leave the lock.
ZR_API ZRRESULT ZrTryEnterCriticalSection(ZRCRITICALSECTION* lock, uint8_t* acquired) ZR_NOEXCEPT;

#endif
