// The demo's platform layer for Windows. Paths and arguments are UTF-8 outside this file and UTF-16 in system calls.

#include <windows.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "support/environment.h"

static std::string Utf8(const std::filesystem::path& path) { return path.u8string(); }

// The arguments of main are in the system's code page, which lacks most characters, so the command line is read as
// UTF-16.
std::vector<std::string> CommandLine(int, char**) {
  SetConsoleOutputCP(CP_UTF8);  // the demo writes UTF-8
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&LocalFree)> values(CommandLineToArgvW(GetCommandLineW(), &count),
                                                               &LocalFree);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(Utf8(values.get()[i]));
  return arguments;
}

std::string PathInProgramFolder(const std::string& fileName) {
  std::wstring program(32768, L'\0');  // the longest path on Windows
  const DWORD length = GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
  program.resize(length);
  return Utf8(std::filesystem::path(program).parent_path() / std::filesystem::u8path(fileName));
}

std::size_t OutputWidth() {
  constexpr std::size_t kDefaultWidth = 120;
  CONSOLE_SCREEN_BUFFER_INFO screen;
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &screen)) return kDefaultWidth;
  return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
}
