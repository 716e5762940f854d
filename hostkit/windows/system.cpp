#include "hostkit/system.h"

#include <windows.h>

#include <cstdlib>
#include <string>

std::vector<std::filesystem::path> EnvironmentFolders() {
  std::vector<std::filesystem::path> folders;
  const wchar_t* const value = _wgetenv(L"ZRCORE_MODULE_PATH");
  std::wstring rest = value != nullptr ? value : L"";
  while (!rest.empty()) {
    const std::size_t end = rest.find(L';');
    if (end != 0) folders.emplace_back(rest.substr(0, end));
    rest.erase(0, end == std::wstring::npos ? end : end + 1);
  }
  return folders;
}

std::filesystem::path LibraryFile() {
  static const char inThisFile = 0;
  HMODULE module = nullptr;
  const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&inThisFile), &module) == 0) return {};
  std::wstring path(32768, L'\0');   // the longest path that the system knows
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return path;
}
