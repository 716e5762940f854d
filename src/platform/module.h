// Loadable modules of the system.

#pragma once

#include <cstddef>
#include <string>

#include "zrcore/base.h"

// A loaded module: one reference on it, given up by PlatformReleaseModule. Null for none.
using ModuleHandle = void*;

// A function of a module, to be cast to what it is.
using ModuleFunction = void (*)();

// The longest reason a failure comes with, in code units, without a terminator.
inline constexpr std::size_t kModuleReasonUnits = 299;

// Loads the module at `path`, which is zero-terminated, and runs its static initialisation: hold no lock.
//
// Null if it can't be loaded. `reason` then holds why, in the system's words, on one line and without the path itself
// in front; empty if the system has no words for it.
[[nodiscard]] ModuleHandle PlatformLoadModule(const WCHAR* path, std::basic_string<WCHAR>& reason);

// The function that the module itself exports under `name`, or null. Libraries that it needs don't count.
[[nodiscard]] ModuleFunction PlatformFindFunction(ModuleHandle module, const char* name) noexcept;

// Null is ignored. Module code may run.
void PlatformReleaseModule(ModuleHandle module) noexcept;
