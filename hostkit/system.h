// What the kit needs from the operating system. The folders posix/ and windows/ have the two implementations.

#ifndef HOSTKIT_SYSTEM_H
#define HOSTKIT_SYSTEM_H

#include <filesystem>
#include <system_error>
#include <vector>

#include "zr/string.hpp"

/// The text of a path. On POSIX systems a name can be any bytes: if they are not UTF-8, each byte above 127 becomes
/// U+FFFD.
[[nodiscard]] zr::String TextOfPath(const std::filesystem::path& path);

/// The folders of the environment variable ZRCORE_MODULE_PATH, without empty ones.
[[nodiscard]] std::vector<std::filesystem::path> EnvironmentFolders();

/// The names of the entries of a folder, in no particular order. Sets `error` if they can't be read, or not all of
/// them, and clears it otherwise.
[[nodiscard]] std::vector<std::filesystem::path> NamesIn(const std::filesystem::path& folder, std::error_code& error);

/// The absolute path of the file that contains this code, or an empty path.
[[nodiscard]] std::filesystem::path LibraryFile();

/// The absolute path of an existing file or folder without symbolic links. Sets `error` if it can't be determined, and
/// clears it otherwise.
[[nodiscard]] std::filesystem::path RealPath(const std::filesystem::path& path, std::error_code& error);

#endif
