// Text for the developer of a program: standard error on POSIX systems, the debugger's output on Windows.

#pragma once

#include <string_view>

#include "zrcore/base.h"

// Writes `text` in one piece, without adding a newline. Errors are ignored, out of memory included: a diagnostic must
// not become a second failure.
void PlatformDebugOutput(std::basic_string_view<WCHAR> text) noexcept;
