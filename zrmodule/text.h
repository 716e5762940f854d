// Texts of the tool are UTF-8, on every system.

#ifndef ZRMODULE_TEXT_H
#define ZRMODULE_TEXT_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

[[nodiscard]] std::filesystem::path PathOf(const std::string& utf8);
[[nodiscard]] std::string Utf8(const std::filesystem::path& path);

/// The text in quotation marks, for a reason.
[[nodiscard]] inline std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

/// "1 thread" or "2 threads".
[[nodiscard]] std::string Counted(std::size_t count, const std::string& noun);

/// The first names of a list, and how many more there are.
[[nodiscard]] std::string Names(const std::vector<std::string>& names);

/// Replaces each byte that is not part of UTF-8 by U+FFFD. File names and texts of modules can have such bytes.
[[nodiscard]] std::string ValidUtf8(const std::string& bytes);

/// ValidUtf8 without control characters: a text from a file can't change the terminal then.
[[nodiscard]] std::string Printable(const std::string& bytes);

#endif
