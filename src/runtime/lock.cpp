// The lock exports. Each takes the address of the caller's variable, which contains a handle.
//
//     address null               -> ZR_R_INVALID_ARGUMENTS
//     address of a null handle   -> ZR_R_INVALID_OBJECT_STATE: not created yet, or deleted
//     address of a handle        -> the lock that it points to
//
// The functions that enter and leave are ZR_UNCHECKED: their callers decide when a lock is left, which no analysis of
// one function can follow.

#include "runtime/lock.h"

#include "runtime/heap.h"

// Makes the checks of the table above.
static ZRRESULT CheckLock(const ZRCRITICALSECTION* lock) noexcept {
  if (lock == nullptr) return ZR_R_INVALID_ARGUMENTS;
  if (*lock == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  return ZR_R_OK;
}

// Does not look at the old content of the variable, which may be uninitialised. A lock in it leaks.
ZRRESULT ZrInitializeCriticalSection(ZRCRITICALSECTION* lock) {
  if (lock == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *lock = HeapNew<tagZRCRITICALSECTION>();
  return ZR_R_OK;
}

// Clears the variable, so that later calls return ZR_R_INVALID_OBJECT_STATE. A call that overlaps with the deletion is
// a data race of the caller, against which this does not protect.
ZRRESULT ZrDeleteCriticalSection(ZRCRITICALSECTION* lock) noexcept {
  const ZRRESULT result = CheckLock(lock);
  if (result != ZR_R_OK) return result;
  HeapDelete(*lock);
  *lock = nullptr;
  return ZR_R_OK;
}

// noexcept: a mutex that the system can't lock terminates the process.
ZRRESULT ZrEnterCriticalSection(ZRCRITICALSECTION* lock) noexcept ZR_UNCHECKED {
  const ZRRESULT result = CheckLock(lock);
  if (result != ZR_R_OK) return result;
  (*lock)->Enter();
  return ZR_R_OK;
}

ZRRESULT ZrLeaveCriticalSection(ZRCRITICALSECTION* lock) noexcept ZR_UNCHECKED {
  const ZRRESULT result = CheckLock(lock);
  if (result != ZR_R_OK) return result;
  (*lock)->Leave();
  return ZR_R_OK;
}

// Both addresses are checked before the handle: a null `acquired` takes precedence over a null handle.
ZRRESULT ZrTryEnterCriticalSection(ZRCRITICALSECTION* lock, uint8_t* acquired) noexcept ZR_UNCHECKED {
  if (lock == nullptr || acquired == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const ZRRESULT result = CheckLock(lock);
  if (result != ZR_R_OK) return result;
  *acquired = (*lock)->TryEnter() ? 1 : 0;
  return ZR_R_OK;
}
