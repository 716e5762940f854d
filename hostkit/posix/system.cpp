#include "hostkit/system.h"

#include <dlfcn.h>

#include <cstdlib>
#include <string>
#include <system_error>

std::vector<std::filesystem::path> EnvironmentFolders() {
  std::vector<std::filesystem::path> folders;
  const char* const value = std::getenv("ZRCORE_MODULE_PATH");
  std::string rest = value != nullptr ? value : "";
  while (!rest.empty()) {
    const std::size_t end = rest.find(':');
    if (end != 0) folders.emplace_back(rest.substr(0, end));
    rest.erase(0, end == std::string::npos ? end : end + 1);
  }
  return folders;
}

std::filesystem::path LibraryFile() {
  Dl_info info = {};
  static const char inThisFile = 0;
  if (dladdr(&inThisFile, &info) == 0 || info.dli_fname == nullptr) return {};
  std::error_code error;
  return std::filesystem::absolute(info.dli_fname, error);
}
