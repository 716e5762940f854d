#include "platform/scheduling.h"

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

// How often the thread has lost its processor to another while it was ready to go on. A yield that hands the processor
// over counts among these.
static long Switches() noexcept {
  rusage usage{};
  return getrusage(RUSAGE_THREAD, &usage) == 0 ? usage.ru_nivcsw : 0;
}

bool PlatformYield() noexcept {
  const long before = Switches();
  (void)sched_yield();  // it never fails
  return Switches() != before;
}

void PlatformGiveUpTimeSlice() noexcept { (void)sched_yield(); }

uint32_t PlatformThreadId() noexcept { return static_cast<uint32_t>(gettid()); }
