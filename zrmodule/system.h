// What the tool needs from the operating system beyond the standard library.

#ifndef ZRMODULE_SYSTEM_H
#define ZRMODULE_SYSTEM_H

#include <filesystem>
#include <string>
#include <vector>

/// The arguments of main in UTF-8, without the program's name. Also prepares the console for UTF-8.
[[nodiscard]] std::vector<std::string> CommandLine(int count, char** values);

/// Whether standard output is a terminal that shows colours. The environment variable NO_COLOR, if it is not empty,
/// turns colours off (no-color.org).
[[nodiscard]] bool IsColourTerminal();

/// The name and version of the operating system, as it names itself.
[[nodiscard]] std::string SystemName();

/// The file of the library that contains the address, without symbolic links; empty if it isn't known.
[[nodiscard]] std::filesystem::path LibraryOf(const void* address);

#endif
