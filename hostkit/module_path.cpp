#include "hostkit/module_path.h"

#include <algorithm>
#include <iterator>
#include <system_error>

#include "hostkit/system.h"
#include "hostkit/text.h"

static bool HasUpwardPart(const std::filesystem::path& path) {
  return std::find(path.begin(), path.end(), "..") != path.end();
}

// Without "." parts. A path with ".." stays as it is: after a symbolic link, ".." is not the folder before the link.
static std::filesystem::path Tidy(const std::filesystem::path& path) {
  return HasUpwardPart(path) ? path : path.lexically_normal();
}

static std::filesystem::path PathOfUtf8(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::optional<std::filesystem::path> AbsolutePathOf(const WCHAR* text) {
  const zr::String units(text);
  const std::string utf8 = units.ToUtf8();  // a lone surrogate becomes U+FFFD
  if (units.IsEmpty()) return std::nullopt;
  if (TextOf(utf8) != units) return std::nullopt;
  return Tidy(std::filesystem::absolute(PathOfUtf8(utf8)));
}

bool HasText(const std::filesystem::path& path) {
  return PathOfUtf8(TextOfPath(path).ToUtf8()).native() == path.native();
}

bool IsWithin(const std::filesystem::path& file, const std::filesystem::path& folder, std::error_code& error) {
  const std::filesystem::path real = RealPath(file, error);
  auto end = folder.end();
  if (folder.begin() != end && std::prev(end)->empty()) --end;  // the root of a volume on Windows
  return !error && std::mismatch(folder.begin(), end, real.begin(), real.end()).first == end;
}

std::optional<std::filesystem::path> FindModuleFile(const std::filesystem::path& manifest,
                                                    const std::filesystem::path& realFolder, const std::string& utf8,
                                                    std::string& reason) {
  const auto fail = [&](const std::string& text) {
    reason = "the module " + Quoted(utf8) + text;
    return std::nullopt;
  };
  const std::filesystem::path relative = PathOfUtf8(utf8);
  if (relative.empty()) return fail(" has an empty path");
  if (!realFolder.empty() && (relative.has_root_path() || HasUpwardPart(relative))) {
    return fail(" must be below the folder of the manifest; absolute paths and \"..\" are not allowed");
  }
  std::filesystem::path module = Tidy(manifest.parent_path() / relative);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(module, error);
  if (!std::filesystem::exists(status)) {
    if (error && error != std::errc::no_such_file_or_directory) return fail(" can't be read: " + error.message());
    return fail(" doesn't exist");
  }
  if (!std::filesystem::is_regular_file(status)) return fail(" is not a regular file");
  if (!realFolder.empty() && !IsWithin(module, realFolder, error)) {
    if (error) return fail(" can't be read: " + error.message());
    return fail(" is outside the folder, through a symbolic link");
  }
  return module;
}

std::vector<std::filesystem::path> InstalledModuleFolders() {
  static constexpr const char* kLocal = ZRHOST_LOCAL_MODULE_FOLDER;
  std::vector<std::filesystem::path> folders;
  if constexpr (*kLocal != 0) folders.push_back(PathOfUtf8(kLocal));
  const std::filesystem::path library = LibraryFile();
  if (!library.empty()) folders.push_back((library.parent_path() / ZRHOST_MODULE_FOLDER).lexically_normal());
  return folders;
}
