// Threads of the system: giving way, and telling one from another.

#pragma once

#include <cstdint>

// Lets another thread that is ready run on this processor, if there is one. Whether any did.
bool PlatformYield() noexcept;

// Gives up the rest of the calling thread's time slice. It doesn't sleep.
void PlatformGiveUpTimeSlice() noexcept;

// No thread has this identifier.
inline constexpr uint32_t kNoThread = 0xFFFFFFFF;

// The calling thread's identifier: differs from that of every other thread of the process that lives.
[[nodiscard]] uint32_t PlatformThreadId() noexcept;
