// Recursive locks: the owner may enter again. All peers except std::mutex are recursive too; std::mutex does less work.

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "row.h"
#include "zrcore/lock.h"

#if BENCH_QT
#include <QRecursiveMutex>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif
#if BENCH_POCO
#include <Poco/Mutex.h>
#endif

// The lower bound of a recursive lock: the platform's plain mutex, its owner and a depth.
class COwnedMutex {
 public:
  void lock() {
    const std::thread::id self = std::this_thread::get_id();
    if (owner_.load(std::memory_order_relaxed) != self) {
      mutex_.lock();
      owner_.store(self, std::memory_order_relaxed);
    }
    ++depth_;
  }
  void unlock() {
    if (--depth_ != 0) return;
    owner_.store(std::thread::id(), std::memory_order_relaxed);
    mutex_.unlock();
  }

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_{};
  unsigned depth_ = 0;
};

// Adapters that give ZrCore's and GLib's locks the member functions lock and unlock.
struct ZrLock {
  ZRCRITICALSECTION section = nullptr;
  ZrLock() { Require(ZR_SUCCEEDED(ZrInitializeCriticalSection(&section)), "a lock is made"); }
  ~ZrLock() { (void)ZrDeleteCriticalSection(&section); }
  ZrLock(const ZrLock&) = delete;
  ZrLock& operator=(const ZrLock&) = delete;
  void lock() { Consume(ZrEnterCriticalSection(&section)); }
  void unlock() { Consume(ZrLeaveCriticalSection(&section)); }
};

#if BENCH_GLIB
struct GLock {
  GRecMutex mutex;
  GLock() { g_rec_mutex_init(&mutex); }
  ~GLock() { g_rec_mutex_clear(&mutex); }
  GLock(const GLock&) = delete;
  GLock& operator=(const GLock&) = delete;
  void lock() { g_rec_mutex_lock(&mutex); }
  void unlock() { g_rec_mutex_unlock(&mutex); }
};
#endif

// A lock and the value that it protects, each on cache lines of its own.
template <class Lock>
struct alignas(64) Guarded {
  Lock lock;
  alignas(64) uint64_t value = 0;
};

template <class Lock>
static void PlainRows(const std::string& library) {
  auto guarded = std::make_shared<Guarded<Lock>>();
  RowOnOneAndTwoThreads("lock enter+leave", library, [guarded] {
    guarded->lock.lock();
    Consume(++guarded->value);
    guarded->lock.unlock();
  });
}

template <class Lock>
static void RecursiveRows(const std::string& library) {
  PlainRows<Lock>(library);
  auto guarded = std::make_shared<Guarded<Lock>>();
  Row("lock enter twice+leave twice", library, [guarded] {
    guarded->lock.lock();
    guarded->lock.lock();
    Consume(++guarded->value);
    guarded->lock.unlock();
    guarded->lock.unlock();
  });
}

void LockRows() {
  RecursiveRows<ZrLock>("ZrCore");
  RecursiveRows<std::recursive_mutex>("std::recursive_mutex");
  PlainRows<std::mutex>("std::mutex (not recursive)");
#if BENCH_QT
  RecursiveRows<QRecursiveMutex>("QRecursiveMutex");
#endif
#if BENCH_GLIB
  RecursiveRows<GLock>("GRecMutex");
#endif
#if BENCH_POCO
  RecursiveRows<Poco::Mutex>("Poco::Mutex");
#endif
  RecursiveRows<COwnedMutex>("lower bound");
}
