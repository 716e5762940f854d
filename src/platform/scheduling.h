// Threads of the system: yielding the processor, and identifying the calling thread.

#pragma once

#include <cstdint>

// Lets another thread run on this processor, if one is ready. Returns whether one did.
bool PlatformYield() noexcept;

// Ends the calling thread's time slice. The thread stays ready to run; it doesn't sleep.
void PlatformGiveUpTimeSlice() noexcept;

// No thread has this identifier.
inline constexpr uint32_t kNoThread = 0xFFFFFFFF;

// Returns an identifier of the calling thread that no other living thread of the process has. The system may give the
// identifier of a thread that has ended to a new one.
[[nodiscard]] uint32_t PlatformThreadId() noexcept;

// Returns another identifier with the same properties, never 0. On systems with ELF one instruction reads it: it is the
// address of the thread's local storage. It must not be compared with PlatformThreadId.
[[nodiscard]] inline std::uintptr_t PlatformThreadWord() noexcept {
#if defined(__ELF__)
  return reinterpret_cast<std::uintptr_t>(__builtin_thread_pointer());
#else
  return PlatformThreadId();
#endif
}
