// The lock exports. All take the address of the caller's variable, so one function tells a lock from the two ways of
// not having one.

#include "runtime/lock.h"

#include "runtime/heap.h"

static ZRRESULT CheckLock(const ZRCRITICALSECTION* lock) noexcept {
  if (lock == nullptr) return ZR_R_INVALID_ARGUMENTS;
  if (*lock == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  return ZR_R_OK;
}

ZRRESULT ZrInitializeCriticalSection(ZRCRITICALSECTION* lock) {
  if (lock == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *lock = HeapNew<tagZRCRITICALSECTION>();
  return ZR_R_OK;
}

ZRRESULT ZrDeleteCriticalSection(ZRCRITICALSECTION* lock) noexcept {
  const ZRRESULT result = CheckLock(lock);
  if (result != ZR_R_OK) return result;
  HeapDelete(*lock);
  *lock = nullptr;
  return ZR_R_OK;
}

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

ZRRESULT ZrTryEnterCriticalSection(ZRCRITICALSECTION* lock, uint8_t* acquired) noexcept ZR_UNCHECKED {
  if (lock == nullptr || acquired == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const ZRRESULT result = CheckLock(lock);
  if (result != ZR_R_OK) return result;
  *acquired = (*lock)->TryEnter() ? 1 : 0;
  return ZR_R_OK;
}
