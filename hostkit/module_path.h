// Paths and their texts, the rules for the path of a module file in a manifest, and the folders that are searched.

#ifndef HOSTKIT_MODULE_PATH_H
#define HOSTKIT_MODULE_PATH_H

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "zr/string.hpp"

/// The path that a caller names, as an absolute path; nothing if the text is empty or not UTF-16. Throws
/// std::filesystem::filesystem_error if the current folder of the process can't be determined.
[[nodiscard]] std::optional<std::filesystem::path> AbsolutePathOf(const WCHAR* text);

/// Whether a path has an exact text, so that a module can be loaded by it. File names need not be valid Unicode.
[[nodiscard]] bool HasText(const std::filesystem::path& path);

/// Whether a file is in a folder or below it after all symbolic links are followed. `folder` has no symbolic links.
/// Sets `error` and returns false if the links can't be followed.
[[nodiscard]] bool IsWithin(const std::filesystem::path& file, const std::filesystem::path& folder,
                            std::error_code& error);

/// FindModuleFile makes an absolute path of what a manifest says, which is relative to the folder of the manifest. The
/// file must exist. If `realFolder` is not empty, it is the manifest's folder without symbolic links, and the file must
/// be within it. Returns nothing, with a reason, otherwise.
[[nodiscard]] std::optional<std::filesystem::path> FindModuleFile(const std::filesystem::path& manifest,
                                                                  const std::filesystem::path& realFolder,
                                                                  const std::string& utf8, std::string& reason);

/// The folders from which modules are loaded if no folder is named: the one of ZRCORE_LOCAL_MODULE_FOLDER, if the build
/// has one, and the one of the installation, if it is known.
[[nodiscard]] std::vector<std::filesystem::path> InstalledModuleFolders();

#endif
