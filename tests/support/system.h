// What the tests ask of the system that they run on. Its answers differ; the tests that ask don't.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "zrcore/base.h"

// A variable of the environment, here and in the processes that this one starts. Null takes it away.
void SetEnvironment(const char* name, const char* value);

// Puts this process into a time zone, by its rule or its name; null, back into the user's. False if the runtime can't
// follow that rule or knows no names.
bool SetTimeZone(const char* zone);

// How far the system's clock for local time is ahead, in seconds, in a zone that was set and is `standard` ahead.
int64_t LocalClockOffset(int64_t standard);

// A user's locale with more than ASCII letters, for the library to find when it first looks for one.
void ChooseUnicodeLocale();

// A user's locale that the system hasn't got. False if it would not let its user have one.
bool ChooseMissingLocale();

// One character in the other case, by the system's own mapping in the user's locale.
WCHAR SystemLower(WCHAR unit);
WCHAR SystemUpper(WCHAR unit);

// What the action sends to the channel of debuggers; on some systems only ASCII arrives there unchanged.
std::string DebugOutputOf(const std::function<void()>& action);

// Loadable files. Null if it can't be loaded, or has no such function.
void* OpenLibrary(const char* path);
void* FindInLibrary(void* library, const char* name);
void CloseLibrary(void* library);
bool IsLibraryLoaded(const char* path);

// Files that can't be loaded: one isn't there, one is no module, one needs what nobody has. How the loader says so.
struct Unloadable {
  const char *module, *words;
};
extern const Unloadable kUnloadable[3];

// Whole pages of memory, of which only the first can be touched. The size of one page.
inline constexpr std::size_t kPageSize = 4096;
char* ReserveGuardedPage();
void ReleaseGuardedPage(char* page);

// The standard output stream of another program, and whether it ended well.
struct ProgramOutput {
  std::string text;
  bool isGood = false;
};
ProgramOutput OutputOfProgram(const std::string& path, const std::string& argument);
