// The demo's platform layer for POSIX systems. PathInProgramFolder needs Linux's /proc.

#include "host/environment.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>

std::vector<std::string> CommandLine(int count, char** values) { return {values + 1, values + count}; }

std::string ModuleFileName(const std::string& module) { return module + ".so"; }

std::string PathInProgramFolder(const std::string& fileName) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / fileName).string();
}

std::string AbsolutePath(const std::string& path) { return std::filesystem::absolute(path).string(); }

std::FILE* OpenToRead(const std::string& path) { return std::fopen(path.c_str(), "rb"); }

uint32_t OutputWidth() {
  constexpr uint32_t kDefaultWidth = 120;
  winsize size = {};
  const bool isKnown = isatty(STDOUT_FILENO) == 1 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : kDefaultWidth;
}
