// The tests' services of the operating system. Each system has its own implementation; the tests are the same on all.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "zrcore/base.h"

// Sets the time zone of this process by a TZ rule; null restores the user's zone. Returns false if the runtime does not
// support the rule.
bool SetTimeZone(const char* zone);

// Returns the offset of the system's local clock from UTC in seconds, after SetTimeZone set a zone whose offset is
// `standard`.
int64_t LocalClockOffset(int64_t standard);

// Selects a locale with more than ASCII letters as the user's locale. Must run before the library first reads the
// locale.
void ChooseUnicodeLocale();

// Maps one code unit to the other case with the system's own function, in the user's locale.
WCHAR SystemLower(WCHAR unit);
WCHAR SystemUpper(WCHAR unit);

// Returns the debug output of the action. On some systems only ASCII arrives unchanged.
std::string DebugOutputOf(const std::function<void()>& action);

// Loads a library and finds its functions. Null if the file cannot be loaded, or has no such function.
void* OpenLibrary(const char* path);
void* FindInLibrary(void* library, const char* name);
void CloseLibrary(void* library);

// Returns a page of memory between two pages that must not be touched. kPageSize is a multiple of the page size of
// every system, because some systems have pages of 64 KiB.
inline constexpr std::size_t kPageSize = 65536;
char* ReserveGuardedPage();
void ReleaseGuardedPage(char* page);
