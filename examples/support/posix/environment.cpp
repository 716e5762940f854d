// The demo's platform layer for POSIX systems. PathInProgramFolder needs Linux's /proc.

#include "support/environment.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>

std::vector<std::string> CommandLine(int count, char** values) { return {values + 1, values + count}; }

std::string PathInProgramFolder(const std::string& fileName) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / fileName).string();
}

std::size_t OutputWidth() {
  constexpr std::size_t kDefaultWidth = 120;
  winsize size = {};
  const bool isKnown = isatty(STDOUT_FILENO) == 1 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : kDefaultWidth;
}
