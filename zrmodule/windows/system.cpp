#include "zrmodule/system.h"

#include <windows.h>
// after windows.h
#include <shellapi.h>

#include <cstdlib>

#include "zrmodule/text.h"

std::vector<std::string> CommandLine(int count, char** values) {
  SetConsoleOutputCP(CP_UTF8);
  int wideCount = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &wideCount);  // `values` are in the code page
  if (wide == nullptr) return {values + (count > 0 ? 1 : 0), values + count};
  std::vector<std::string> arguments;
  for (int index = 1; index < wideCount; ++index) arguments.push_back(Utf8(std::filesystem::path(wide[index])));
  LocalFree(wide);
  return arguments;
}

bool IsColourTerminal() {
  const char* const off = std::getenv("NO_COLOR");
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return (off == nullptr || *off == 0) && GetConsoleMode(output, &mode) != 0 &&
         SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

std::string SystemName() {
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof version;
  if (GetVersionExW(&version) == 0) return "Windows";
  return "Windows " + std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) + "." +
         std::to_string(version.dwBuildNumber);
}

std::filesystem::path LibraryOf(const void* address) {
  HMODULE module = nullptr;
  const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (GetModuleHandleExW(flags, static_cast<const wchar_t*>(address), &module) == 0) return {};
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return path;
}
