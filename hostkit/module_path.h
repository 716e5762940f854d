// The rules for the path of a module file in a manifest, and for the folders that are searched.

#ifndef HOSTKIT_MODULE_PATH_H
#define HOSTKIT_MODULE_PATH_H

#include <filesystem>
#include <string>
#include <vector>

/// FindModuleFile makes an absolute path of what a manifest says, which is relative to the folder of the manifest. The
/// file must exist. Unless `isOutsideAllowed`, it must be in that folder or below it, also after symbolic links are
/// followed, both of the manifest and of the module. Returns false with a reason otherwise.
[[nodiscard]] bool FindModuleFile(const std::filesystem::path& manifest, const std::string& utf8, bool isOutsideAllowed,
                                  std::filesystem::path& module, std::string& reason);

/// The path of UTF-8.
[[nodiscard]] std::filesystem::path PathOf(const std::string& utf8);

/// The UTF-8 of a path. On POSIX systems a name can be any bytes: if it is not UTF-8, each byte above 127 becomes U+FFFD.
[[nodiscard]] std::string Utf8Of(const std::filesystem::path& path);

/// Whether a path is text, so that a module can be loaded by it.
[[nodiscard]] bool IsText(const std::filesystem::path& path);

/// The folders of the environment variable ZRCORE_MODULE_PATH; if there are none, the module folder of the installation.
[[nodiscard]] std::vector<std::filesystem::path> DefaultFolders();

#endif
