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

// The same, but as cheap as the compiler can make it: where it can, one instruction reads the address of the thread's
// local storage. Never 0. The two identifiers have nothing to do with each other.
[[nodiscard]] inline std::uintptr_t PlatformThreadWord() noexcept {
#if defined(__ELF__)
  return reinterpret_cast<std::uintptr_t>(__builtin_thread_pointer());
#else
  return PlatformThreadId();
#endif
}
