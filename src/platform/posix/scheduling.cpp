// Yielding the processor, and the thread's identifier.

#include "platform/scheduling.h"

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

// Returns how often the thread has lost its processor to another while it was ready to run. A yield counts among these
// if it hands the processor over, which sched_yield itself doesn't report.
static long InvoluntarySwitches() noexcept {
  rusage usage{};
  return getrusage(RUSAGE_THREAD, &usage) == 0 ? usage.ru_nivcsw : 0;
}

bool PlatformYield() noexcept {
  const long before = InvoluntarySwitches();
  (void)sched_yield();  // it never fails
  return InvoluntarySwitches() != before;
}

void PlatformGiveUpTimeSlice() noexcept { (void)sched_yield(); }

uint32_t PlatformThreadId() noexcept { return static_cast<uint32_t>(gettid()); }
