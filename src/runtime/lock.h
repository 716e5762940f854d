// Locks: the recursive lock that callers get, a plain mutex for the library itself, and one guard for both.
//
// The recursive lock is a plain mutex, the identifier of its owner, and the number of entries:
//
//                             mutex_     owner_     depth_
//     nobody is inside        unlocked   none       0
//     thread A enters         locked     A          1
//     thread A enters again   locked     A          2        no operation on mutex_
//
// Invariants:
//   1. Only the thread that holds mutex_ writes owner_. It clears owner_ before it unlocks mutex_.
//   2. A thread that reads its own identifier from owner_ holds the lock. A thread that does not hold the lock reads
//      another identifier or none: it cleared its own when it left. A thread always sees its own writes in order, so a
//      relaxed load decides this, and a second entry needs no other atomic operation.
//   3. Only the owner reads or writes depth_.
//   4. A thread must leave the lock before it ends. Otherwise the system may assign its identifier to a later thread,
//      which would then read its own identifier from owner_ and enter a lock that it does not hold.
//
// mutex_ orders the memory accesses of successive owners. owner_ orders nothing, so all its operations are relaxed.

#pragma once

#include <atomic>
#include <cassert>
#include <cstdint>
#include <mutex>

#include "platform/scheduling.h"
#include "runtime/thread_annotations.h"
#include "zrcore/lock.h"

struct ZR_CAPABILITY("lock") tagZRCRITICALSECTION {
  tagZRCRITICALSECTION() = default;
  tagZRCRITICALSECTION(const tagZRCRITICALSECTION&) = delete;
  tagZRCRITICALSECTION& operator=(const tagZRCRITICALSECTION&) = delete;

  // Throws std::system_error if the system can't lock a mutex.
  void Enter() ZR_ACQUIRE() ZR_UNCHECKED {
    const std::uintptr_t self = PlatformThreadWord();
    if (owner_.load(std::memory_order_relaxed) != self) {
      mutex_.lock();
      owner_.store(self, std::memory_order_relaxed);
    }
    ++depth_;
  }

  [[nodiscard]] bool TryEnter() ZR_TRY_ACQUIRE(true) ZR_UNCHECKED {
    const std::uintptr_t self = PlatformThreadWord();
    if (owner_.load(std::memory_order_relaxed) != self) {
      if (!mutex_.try_lock()) return false;
      owner_.store(self, std::memory_order_relaxed);
    }
    ++depth_;
    return true;
  }

  // The calling thread must be the owner. This is not checked: otherwise the behaviour is undefined.
  void Leave() ZR_RELEASE() ZR_UNCHECKED {
    if (--depth_ != 0) return;
    owner_.store(kNoOwner, std::memory_order_relaxed);
    mutex_.unlock();
  }

  // Whether the calling thread holds the lock.
  [[nodiscard]] bool IsOwn() const noexcept { return owner_.load(std::memory_order_relaxed) == PlatformThreadWord(); }

  // For the body of a lambda, which clang analyses without the locks of the function around it.
  void AssertHeld() const noexcept ZR_ASSERT_HELD { assert(IsOwn()); }

 private:
  static constexpr std::uintptr_t kNoOwner = 0;

  std::mutex mutex_;
  std::atomic<std::uintptr_t> owner_{kNoOwner};
  uint32_t depth_ = 0;
};

// Callers get a lock as a heap block with a handle. The library's own locks are members instead: making them needs no
// memory, so the library's state can't fail to be constructed.
using CRecursiveLock = tagZRCRITICALSECTION;

// std::mutex with the attributes that the analysis needs. Not recursive: a second Enter on one thread deadlocks.
class ZR_CAPABILITY("mutex") CMutex {
 public:
  void Enter() ZR_ACQUIRE() ZR_UNCHECKED { mutex_.lock(); }
  void Leave() ZR_RELEASE() ZR_UNCHECKED { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

// Holds a lock until the end of the scope, which exceptions reach too. The lock must outlive the guard.
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
