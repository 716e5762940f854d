// What the faults of a module need from the operating system.

#ifndef TESTS_ZRMODULE_FAULT_SYSTEM_H
#define TESTS_ZRMODULE_FAULT_SYSTEM_H

#if defined(_WIN32)
#include <windows.h>

inline void SleepForever() { Sleep(INFINITE); }
inline void StartProcess() {}

/// Loads the module of a function once more, so that it isn't unloaded.
inline void LoadAgain(void* function) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<const wchar_t*>(function), &module);
}
#else
#include <dlfcn.h>
#include <unistd.h>

inline void SleepForever() {
  while (true) pause();
}
inline void StartProcess() {
  if (fork() == 0) SleepForever();
}

/// Loads the module of a function once more, so that it isn't unloaded.
inline void LoadAgain(void* function) {
  Dl_info info;
  if (dladdr(function, &info) != 0) (void)dlopen(info.dli_fname, RTLD_NOW);
}
#endif

#endif
