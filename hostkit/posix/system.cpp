#include "hostkit/system.h"

#include <dirent.h>
#include <dlfcn.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "hostkit/text.h"

zr::String TextOfPath(const std::filesystem::path& path) { return TextOf(std::string_view(path.native())); }

std::vector<std::filesystem::path> EnvironmentFolders() {
  std::vector<std::filesystem::path> folders;
  // Null in a process with more rights than its user: the user must not choose which code it runs.
  const char* const value = secure_getenv("ZRCORE_MODULE_PATH");
  std::string rest = value != nullptr ? value : "";
  while (!rest.empty()) {
    const std::size_t end = rest.find(':');
    if (end != 0) folders.emplace_back(rest.substr(0, end));
    rest.erase(0, end == std::string::npos ? end : end + 1);
  }
  return folders;
}

// Without std::filesystem::directory_iterator, which terminates the process if out of memory.
std::vector<std::filesystem::path> NamesIn(const std::filesystem::path& folder, std::error_code& error) {
  std::vector<std::filesystem::path> names;
  const auto close = [](DIR* open) { (void)closedir(open); };
  const std::unique_ptr<DIR, decltype(close)> open(opendir(folder.c_str()), close);
  errno = open == nullptr ? errno : 0;
  while (open != nullptr) {
    const dirent* const entry = readdir(open.get());  // null with errno 0 at the end
    if (entry == nullptr) break;
    names.emplace_back(entry->d_name);
    errno = 0;
  }
  error.assign(errno, std::generic_category());
  return names;
}

std::filesystem::path LibraryFile() {
  Dl_info info = {};
  static const char inThisFile = 0;
  if (dladdr(&inThisFile, &info) == 0 || info.dli_fname == nullptr) return {};
  std::error_code error;
  return std::filesystem::absolute(info.dli_fname, error);
}

std::filesystem::path RealPath(const std::filesystem::path& path, std::error_code& error) {
  return std::filesystem::canonical(path, error);
}
