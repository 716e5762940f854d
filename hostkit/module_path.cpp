#include "hostkit/module_path.h"

#include <algorithm>
#include <system_error>

#include "hostkit/problem.h"
#include "hostkit/system.h"
#include "zr/string.hpp"

std::filesystem::path PathOf(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

bool IsText(const std::filesystem::path& path) {
  const std::u8string bytes = path.u8string();
  return bool(zr::String::FromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
}

std::string Utf8Of(const std::filesystem::path& path) {
  const std::u8string bytes = path.u8string();
  std::string utf8(bytes.begin(), bytes.end());
  if (IsText(path)) return utf8;
  std::string readable;
  for (const char byte : utf8) readable += static_cast<unsigned char>(byte) < 0x80 ? std::string(1, byte) : "\uFFFD";
  return readable;
}

// Whether `inner` is `folder` or below it. Both are absolute and normal.
static bool IsWithin(const std::filesystem::path& inner, const std::filesystem::path& folder) {
  return std::mismatch(folder.begin(), folder.end(), inner.begin(), inner.end()).first == folder.end();
}

bool FindModuleFile(const std::filesystem::path& manifest, const std::string& utf8, bool isOutsideAllowed,
                    std::filesystem::path& module, std::string& reason) {
  const std::string name = "the module " + Quoted(utf8);
  if (utf8.empty() || utf8.find('\0') != std::string::npos) {
    reason = "the path of the module is empty or contains a zero";
    return false;
  }
  const std::filesystem::path relative = PathOf(utf8);
  if (!isOutsideAllowed && (relative.has_root_path() || std::find(relative.begin(), relative.end(), "..") != relative.end())) {
    reason = name + " must be a path below the folder of the manifest, not an absolute path or one with \"..\"";
    return false;
  }
  const std::filesystem::path folder = manifest.parent_path();
  module = (folder / relative).lexically_normal();
  std::error_code error;
  if (!std::filesystem::is_regular_file(module, error)) {
    reason = name + (error && error != std::errc::no_such_file_or_directory ? " can't be read: " + error.message()
                                                                            : " doesn't exist, or is not a file");
    return false;
  }
  if (isOutsideAllowed) return true;
  const std::filesystem::path realFolder = std::filesystem::canonical(folder, error);
  for (const std::filesystem::path& file : {manifest, module}) {
    if (!error && !IsWithin(std::filesystem::canonical(file, error), realFolder)) {
      reason = "the symbolic link " + Quoted(Utf8Of(file.filename())) + " leaves the folder";
      return false;
    }
  }
  if (error) reason = name + " can't be read: " + error.message();
  return !error;
}

std::vector<std::filesystem::path> DefaultFolders() {
  std::vector<std::filesystem::path> folders = EnvironmentFolders();
  if (!folders.empty()) return folders;
  const std::filesystem::path library = LibraryFile();
  if (!library.empty()) folders.push_back((library.parent_path() / ZRHOST_MODULE_FOLDER).lexically_normal());
  return folders;
}
