// A log of the calls of test modules, as one line of words such as "good.init good.create". Modules write it and tests
// read it.

#pragma once

#include <functional>
#include <string>

#include "zrcore/base.h"

ZR_EXPORT void WriteModuleLog(const char* module, const char* event);
ZR_EXPORT std::string DrainModuleLog();  // returns the log and empties it

// Sets an action for the next ZrExitModule of a test module to call once.
ZR_EXPORT void SetNextExit(std::function<void()> action);
ZR_EXPORT void RunNextExit();
