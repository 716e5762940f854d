// Yielding the processor, and the thread's identifier. Each function is one call of the system.

#include "platform/scheduling.h"

#include <windows.h>

bool PlatformYield() noexcept { return SwitchToThread() != 0; }

void PlatformGiveUpTimeSlice() noexcept { Sleep(0); }

uint32_t PlatformThreadId() noexcept { return GetCurrentThreadId(); }
