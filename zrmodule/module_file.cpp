#include "zrmodule/module_file.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

struct FileKind {
  std::string_view beginning;
  const char* description;
};
static constexpr std::array<FileKind, 6> kKinds = {{{"\x7f"
                                                     "ELF",
                                                     "a file for Linux (ELF)"},
                                                    {"MZ", "a file for Windows"},
                                                    {"!<arch>", "a static library"},
                                                    {"\xcf\xfa\xed\xfe", "a file for macOS"},
                                                    {"PK", "an archive"},
                                                    {"{", "a JSON file, perhaps a manifest"}}};

std::string DescribeFile(const std::filesystem::path& file) {
  std::string bytes(256, '\0');
  std::ifstream stream(file, std::ios::binary);
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(stream.gcount()));
  if (bytes.empty()) return "an empty file";
  for (const FileKind& kind : kKinds) {
    if (bytes.starts_with(kind.beginning)) return kind.description;
  }
  const bool isText = std::none_of(bytes.begin(), bytes.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\r' && c != '\t';
  });
  return isText ? "a text file" : "a file of another format";
}
