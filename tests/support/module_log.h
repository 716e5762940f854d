// What test modules were called for, as one line of words such as "good.init good.create".

#pragma once

#include <functional>
#include <string>

#include "zrcore/base.h"

ZR_EXPORT void WriteModuleLog(const char* module, const char* event);
ZR_EXPORT std::string TakeModuleLog();  // and empties it

// What the next ZrExitModule of a test module calls, once.
ZR_EXPORT void SetNextExit(std::function<void()> action);
ZR_EXPORT void RunNextExit();
