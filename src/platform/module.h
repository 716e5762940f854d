// Loadable modules: shared objects on POSIX systems, DLLs on Windows.
//
// Loading and releasing run the module's own code, its static initialisation and teardown, which may call this library
// again. Callers must not hold a lock that this code could need: it would deadlock.

#pragma once

#include <cstddef>
#include <string>

#include "zrcore/base.h"

// One reference on a loaded module, which PlatformReleaseModule releases; or null.
using ModuleHandle = void*;

// A function of a module. The caller casts it to its real type.
using ModuleFunction = void (*)();

// The maximal length of the reason for a failure, in code units without a terminator.
inline constexpr std::size_t kModuleReasonUnits = 299;

// Loads the module at `path`, which is zero-terminated.
//
// Returns null if it can't be loaded, and stores the reason in the system's own words: one line, which doesn't begin
// with the path. The reason is empty if the system has no text for it. After a success, `reason` is unchanged.
[[nodiscard]] ModuleHandle PlatformLoadModule(const WCHAR* path, std::basic_string<WCHAR>& reason);

// Returns the function that the module itself exports under `name`, or null. A function of a library that the module
// depends on doesn't count.
[[nodiscard]] ModuleFunction PlatformFindFunction(ModuleHandle module, const char* name) noexcept;

// Releases a reference; the last one unloads the module. Null is ignored, and so are errors.
void PlatformReleaseModule(ModuleHandle module) noexcept;
