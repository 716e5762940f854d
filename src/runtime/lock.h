// Locks: the recursive one that callers get, a plain mutex, and the guard for both.
//
// The recursive lock is a plain mutex with an owner word and a depth. What holds:
//   1. owner_ is written by the thread that holds mutex_ only, and cleared before it lets go.
//   2. So a thread that reads its own id there holds the lock, and one that doesn't reads anything else. Re-entry needs
//      no atomic instruction but a load.
//   3. depth_ belongs to the owner.
//   4. A thread leaves the lock before it ends. Its identifier may be given to a later thread, which would read it
//   there.

#pragma once

#include <atomic>
#include <cassert>
#include <cstdint>
#include <mutex>
#include <thread>

#include "runtime/thread_annotations.h"
#include "zrcore/lock.h"

struct ZR_CAPABILITY("lock") tagZRCRITICALSECTION {
  tagZRCRITICALSECTION() = default;
  tagZRCRITICALSECTION(const tagZRCRITICALSECTION&) = delete;
  tagZRCRITICALSECTION& operator=(const tagZRCRITICALSECTION&) = delete;

  void Enter() ZR_ACQUIRE() ZR_UNCHECKED {
    const std::thread::id self = std::this_thread::get_id();
    if (owner_.load(std::memory_order_relaxed) != self) {
      mutex_.lock();
      owner_.store(self, std::memory_order_relaxed);
    }
    ++depth_;
  }

  [[nodiscard]] bool TryEnter() ZR_TRY_ACQUIRE(true) ZR_UNCHECKED {
    const std::thread::id self = std::this_thread::get_id();
    if (owner_.load(std::memory_order_relaxed) != self) {
      if (!mutex_.try_lock()) return false;
      owner_.store(self, std::memory_order_relaxed);
    }
    ++depth_;
    return true;
  }

  void Leave() ZR_RELEASE() ZR_UNCHECKED {
    if (--depth_ != 0) return;
    owner_.store(std::thread::id(), std::memory_order_relaxed);
    mutex_.unlock();
  }

  // Whether the calling thread holds the lock.
  [[nodiscard]] bool IsOwn() const noexcept {
    return owner_.load(std::memory_order_relaxed) == std::this_thread::get_id();
  }

  // For the body of a lambda, which the analysis reads on its own.
  void AssertHeld() const noexcept ZR_ASSERT_HELD { assert(IsOwn()); }

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_{};
  uint32_t depth_ = 0;
};

// Inside the library the lock is a member, not a block behind a handle: the library's own state then needs no memory,
// and can't fail to come up.
using CRecursiveLock = tagZRCRITICALSECTION;

// The standard library's plain mutex, with the claims that the analysis needs.
class ZR_CAPABILITY("mutex") CMutex {
 public:
  void Enter() ZR_ACQUIRE() ZR_UNCHECKED { mutex_.lock(); }
  void Leave() ZR_RELEASE() ZR_UNCHECKED { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

template <class Lock>
class ZR_SCOPED_CAPABILITY CLockGuard {
 public:
  explicit CLockGuard(Lock& lock) ZR_ACQUIRE(lock) : lock_(lock) { lock_.Enter(); }
  CLockGuard(const CLockGuard&) = delete;
  CLockGuard& operator=(const CLockGuard&) = delete;
  ~CLockGuard() ZR_RELEASE() { lock_.Leave(); }

 private:
  Lock& lock_;
};
