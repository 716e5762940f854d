// What test modules were called for, as one line of words such as "good.init good.create".

#pragma once

#if defined(_WIN32)
#ifdef module_log_EXPORTS
#define MODULE_LOG_API __declspec(dllexport)
#else
#define MODULE_LOG_API __declspec(dllimport)
#endif
#else
#define MODULE_LOG_API __attribute__((visibility("default")))
#endif

#include <string>

MODULE_LOG_API void WriteModuleLog(const char* module, const char* event);
MODULE_LOG_API std::string TakeModuleLog();  // and empties it
