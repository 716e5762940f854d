// What the faults of a module need from the operating system.

#ifndef TESTS_ZRMODULE_FAULT_SYSTEM_H
#define TESTS_ZRMODULE_FAULT_SYSTEM_H

#if defined(_WIN32)
#include <windows.h>

inline void SleepForever() { Sleep(INFINITE); }
inline void StartProcess() {}
inline DWORD WINAPI RunThread(void*) {
  SleepForever();
  return 0;
}
inline void StartThread() { CloseHandle(CreateThread(nullptr, 0, RunThread, nullptr, 0, nullptr)); }

/// Loads the module of a function once more, so that it isn't unloaded.
inline void LoadAgain(void* function) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<const wchar_t*>(function), &module);
}
#else
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

inline void SleepForever() {
  while (true) pause();
}
inline void StartProcess() {
  if (fork() == 0) SleepForever();
}
inline void* RunThread(void*) {
  SleepForever();
  return nullptr;
}
inline void StartThread() {
  pthread_t thread;
  if (pthread_create(&thread, nullptr, RunThread, nullptr) == 0) pthread_detach(thread);
}

/// Loads the module of a function once more, so that it isn't unloaded.
inline void LoadAgain(void* function) {
  Dl_info info;
  if (dladdr(function, &info) != 0) (void)dlopen(info.dli_fname, RTLD_NOW);
}
#endif

#endif
