// What the tests ask of the system that they run on. Its answers differ; the tests that ask don't.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "zrcore/base.h"

// Puts this process into a time zone, by its rule; null, back into the user's. False if the runtime can't follow that
// rule.
bool SetTimeZone(const char* zone);

// How far the system's clock for local time is ahead, in seconds, in a zone that was set and is `standard` ahead.
int64_t LocalClockOffset(int64_t standard);

// A user's locale with more than ASCII letters, for the library to find when it first looks for one.
void ChooseUnicodeLocale();

// One character in the other case, by the system's own mapping in the user's locale.
WCHAR SystemLower(WCHAR unit);
WCHAR SystemUpper(WCHAR unit);

// What the action sends to the channel of debuggers; on some systems only ASCII arrives there unchanged.
std::string DebugOutputOf(const std::function<void()>& action);

// Loadable files. Null if it can't be loaded, or has no such function.
void* OpenLibrary(const char* path);
void* FindInLibrary(void* library, const char* name);
void CloseLibrary(void* library);

// Whole pages of memory, of which only the first can be touched. The size of one page.
inline constexpr std::size_t kPageSize = 4096;
char* ReserveGuardedPage();
void ReleaseGuardedPage(char* page);
