// What the kit needs from the operating system. The folders posix/ and windows/ have the two implementations.

#ifndef HOSTKIT_SYSTEM_H
#define HOSTKIT_SYSTEM_H

#include <filesystem>
#include <vector>

/// The folders of the environment variable ZRCORE_MODULE_PATH, without empty ones.
[[nodiscard]] std::vector<std::filesystem::path> EnvironmentFolders();

/// The absolute path of the file that contains this code, or an empty path.
[[nodiscard]] std::filesystem::path LibraryFile();

#endif
