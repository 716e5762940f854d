// Opens when so many have arrived. (As std::latch does, but for a standard library that may lose the wake-up.)

#pragma once

#include <condition_variable>
#include <mutex>

class CGate {
 public:
  explicit CGate(int missing) : missing_(missing) {}

  void Arrive() {
    const std::lock_guard hold(mutex_);
    if (--missing_ == 0) opened_.notify_all();
  }
  void Wait() {
    std::unique_lock hold(mutex_);
    opened_.wait(hold, [this] { return missing_ <= 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  int missing_;
};
