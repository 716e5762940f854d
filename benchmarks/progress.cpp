// The estimate of the time left assumes that the remaining runs take as long as the average of those done.

#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

using Clock = std::chrono::steady_clock;

static constexpr int kDescriptor = 3;
static constexpr double kSecondsBeforeEstimate = 2;

static std::uint64_t g_runs = 0;  // 0 until ShowProgress is called: nothing is shown
static std::uint64_t g_runsDone = 0;
static Clock::time_point g_start, g_lastShown;

void ShowProgress(std::uint64_t runs) {
  g_runs = runs;
  g_start = Clock::now();
}

static void Show(Clock::time_point now) {
  char left[32] = "";
  const double used = std::chrono::duration<double>(now - g_start).count();
  if (used >= kSecondsBeforeEstimate) {
    const double seconds = used * static_cast<double>(g_runs - g_runsDone) / static_cast<double>(g_runsDone);
    const bool isShort = seconds < 90;
    std::snprintf(left, sizeof left, ", %.0f %s left", isShort ? seconds : seconds / 60, isShort ? "s" : "min");
  }
  char line[96];
  const int length = std::snprintf(line, sizeof line, "\r%ju of %ju runs%s\033[K",  // erases the rest of a longer line
                                   std::uintmax_t{g_runsDone}, std::uintmax_t{g_runs}, left);
  (void)!write(kDescriptor, line, static_cast<std::size_t>(length));
}

void CRunCounter::Count(const benchmark::State& state) {
  if (g_runs == 0 || state.thread_index() != 0) return;
  // Each attempt has more iterations than the one before. The last attempt becomes the first run, and all further runs
  // have as many iterations. So the first call counts as the first run, and further attempts don't count.
  const bool isFurtherAttempt = iterations_ != 0 && state.max_iterations > iterations_;
  iterations_ = state.max_iterations;
  if (isFurtherAttempt) return;
  g_runsDone = std::min(g_runsDone + 1, g_runs);

  const Clock::time_point now = Clock::now();
  if (now - g_lastShown < std::chrono::milliseconds(100) && g_runsDone < g_runs) return;
  g_lastShown = now;
  Show(now);
}
