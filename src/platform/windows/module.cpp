// Modules through the system's loader.

#include "platform/module.h"

#include <windows.h>

ModuleHandle PlatformLoadModule(const WCHAR* path, std::wstring& reason) {
  ModuleHandle module = LoadLibraryW(path);
  if (module != nullptr) return module;
  const DWORD error = GetLastError();  // before any other call overwrites it
  // The text on one line. Placeholders for names stay in the text, because the names aren't known here.
  constexpr DWORD kPlainLine =
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
  WCHAR text[kModuleReasonUnits + 1];
  reason.assign(text, FormatMessageW(kPlainLine, nullptr, error, 0, text, kModuleReasonUnits + 1, nullptr));
  return nullptr;
}

ModuleFunction PlatformFindFunction(ModuleHandle module, const char* name) noexcept {
  return reinterpret_cast<ModuleFunction>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void PlatformReleaseModule(ModuleHandle module) noexcept {
  if (module != nullptr) (void)FreeLibrary(static_cast<HMODULE>(module));  // a caller could do nothing about a failure
}
