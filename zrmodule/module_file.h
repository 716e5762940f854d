// What can be read from a module file without loading it, in terms that ELF files and DLLs share.

#ifndef ZRMODULE_MODULE_FILE_H
#define ZRMODULE_MODULE_FILE_H

#include <filesystem>
#include <string>
#include <vector>

struct ModuleFile {
  std::string processor;                    ///< "x86-64", "arm64", or the number that the file names
  bool isLoadable = false;                  ///< a shared library, not a program or an object file
  std::vector<std::string> exports;         ///< all symbols that other files can use
  std::vector<std::string> uniqueSymbols;   ///< exports that are unique in the process, so the file is never unloaded
  std::vector<std::string> undefined;       ///< symbols that other files must define
  std::vector<std::string> needed;          ///< the names of the libraries that it needs
  std::vector<std::filesystem::path> searched;  ///< folders that the file names for its libraries
  bool isPinned = false;                    ///< the file says that it must never be unloaded
  bool hasExecutableStack = false;
  bool hasTextRelocations = false;
};

/// ReadModuleFile reads a file. Returns false with a reason if the file is not a library of this system, is truncated or
/// can't be read.
[[nodiscard]] bool ReadModuleFile(const std::filesystem::path& file, ModuleFile& module, std::string& reason);

/// The processor for which this program was built, as ModuleFile::processor names it.
[[nodiscard]] std::string OwnProcessor();

/// FindLibrary finds a needed library as the system's loader would for `module`. Returns an empty path if it doesn't
/// exist.
[[nodiscard]] std::filesystem::path FindLibrary(const std::string& name, const std::filesystem::path& file,
                                                const ModuleFile& module);

#endif
