#include "hostkit/system.h"

#include <windows.h>

#include <cstdlib>
#include <string>

static constexpr std::size_t kLongestPath = 32768;  // in units, as the system defines it

zr::String TextOfPath(const std::filesystem::path& path) { return path.native(); }

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

std::vector<std::filesystem::path> NamesIn(const std::filesystem::path& folder, std::error_code& error) {
  std::vector<std::filesystem::path> names;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    names.push_back(entry->path().filename());
  }
  return names;
}

std::filesystem::path LibraryFile() {
  static const char inThisFile = 0;
  HMODULE module = nullptr;
  const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&inThisFile), &module) == 0) return {};
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

// The standard library doesn't follow links on this system.
std::filesystem::path RealPath(const std::filesystem::path& path, std::error_code& error) {
  error.clear();
  const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);  // the flag opens folders
  std::wstring real(kLongestPath, L'\0');
  DWORD size = 0;
  if (file != INVALID_HANDLE_VALUE) {
    size = GetFinalPathNameByHandleW(file, real.data(), static_cast<DWORD>(real.size()), FILE_NAME_NORMALIZED);
  }
  if (size == 0 || size > real.size()) error.assign(static_cast<int>(GetLastError()), std::system_category());
  if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
  real.resize(error ? 0 : size);
  return real;
}
