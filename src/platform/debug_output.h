// One text to the channel that a debugger shows.

#pragma once

#include <string_view>

#include "zrcore/base.h"

// Sends `text` as it stands, in one piece. Output that can't be made or delivered is lost: a diagnostic must not turn
// into a second failure.
void PlatformDebugOutput(std::basic_string_view<WCHAR> text) noexcept;
