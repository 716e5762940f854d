// Lock is a recursive lock of the library (zrcore/lock.h). It meets BasicLockable, so std::lock_guard works with it.

#ifndef ZR_LOCK_HPP
#define ZR_LOCK_HPP

#include "zrcore/lock.h"

namespace zr {

class Lock {
 public:
  /// Throws std::bad_alloc when out of memory.
  Lock() { (void)ZrInitializeCriticalSection(&lock_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  /// No thread may hold the lock or wait for it.
  ~Lock() { (void)ZrDeleteCriticalSection(&lock_); }

  // The names of the standard's lockable types.
  void lock() noexcept { (void)ZrEnterCriticalSection(&lock_); }
  void unlock() noexcept { (void)ZrLeaveCriticalSection(&lock_); }
  [[nodiscard]] bool try_lock() noexcept {
    uint8_t acquired = 0;
    (void)ZrTryEnterCriticalSection(&lock_, &acquired);
    return acquired != 0;
  }

  [[nodiscard]] ZRCRITICALSECTION* Get() noexcept { return &lock_; }

 private:
  ZRCRITICALSECTION lock_ = nullptr;
};
static_assert(sizeof(Lock) == sizeof(ZRCRITICALSECTION), "a Lock is its handle");

}  // namespace zr

#endif
