#include "zrmodule/system.h"

#include <dlfcn.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

std::vector<std::string> CommandLine(int count, char** values) {
  return {values + (count > 0 ? 1 : 0), values + count};
}

bool IsColourTerminal() {
  const char* const off = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && (off == nullptr || *off == 0) && terminal != nullptr &&
         std::string_view(terminal) != "dumb";
}

std::string SystemName() {
  utsname names = {};
  return uname(&names) == 0 ? std::string(names.sysname) + " " + names.release : "unknown";
}

std::filesystem::path LibraryOf(const void* address) {
  Dl_info info = {};
  std::error_code error;
  if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
  return std::filesystem::canonical(info.dli_fname, error);
}
