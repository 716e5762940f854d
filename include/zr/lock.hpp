// Lock is a recursive lock of the library (zrcore/lock.h). It meets BasicLockable, so std::lock_guard works with it.

#ifndef ZR_LOCK_HPP
#define ZR_LOCK_HPP

#include "zrcore/lock.h"

namespace zr {

/// Lock is a recursive lock: the thread that has it may take it again. It can be neither copied nor moved.
class Lock {
 public:
  /// Throws std::bad_alloc when out of memory.
  Lock() { (void)ZrInitializeCriticalSection(&lock_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  /// No thread may hold the lock or wait for it.
  ~Lock() { (void)ZrDeleteCriticalSection(&lock_); }

  /// lock waits until no other thread has the lock. The names are those of the standard's lockable types.
  void lock() noexcept { (void)ZrEnterCriticalSection(&lock_); }
  /// unlock ends one lock or try_lock of this thread. On a thread that does not have the lock it is
  /// undefined behaviour.
  void unlock() noexcept { (void)ZrLeaveCriticalSection(&lock_); }
  /// try_lock returns whether it has taken the lock. It does not wait.
  [[nodiscard]] bool try_lock() noexcept {
    uint8_t acquired = 0;
    (void)ZrTryEnterCriticalSection(&lock_, &acquired);
    return acquired != 0;
  }

  /// Get lends the lock to functions of the C boundary.
  [[nodiscard]] ZRCRITICALSECTION* Get() noexcept { return &lock_; }

 private:
  ZRCRITICALSECTION lock_ = nullptr;
};
static_assert(sizeof(Lock) == sizeof(ZRCRITICALSECTION), "a Lock is its handle");

}  // namespace zr

#endif
