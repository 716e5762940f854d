// Runs the same function in several threads at once.

#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

inline constexpr int kThreads = 4;

// Runs `rounds` calls of the body in each of kThreads threads. The threads start together. (A std::latch would do, but
// one standard library may lose its wake-up.)
inline void Race(int rounds, const std::function<void(int thread)>& body) {
  std::mutex mutex;
  std::condition_variable opened;
  int missing = kThreads;
  const auto arrive = [&] {
    std::unique_lock hold(mutex);
    if (--missing == 0) opened.notify_all();
    opened.wait(hold, [&] { return missing == 0; });
  };
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      arrive();
      for (int round = 0; round < rounds; ++round) body(thread);
    });
  }
  for (std::thread& thread : threads) thread.join();
}
