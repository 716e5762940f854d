// What can be read from a module file without loading it, in terms that ELF files and DLLs share.

#ifndef ZRMODULE_MODULE_FILE_H
#define ZRMODULE_MODULE_FILE_H

#include <filesystem>
#include <string>
#include <vector>

struct ModuleSymbol {
  std::string name;
  std::string version;  ///< on POSIX systems; empty for a symbol without a version
  std::string library;  ///< that must define the symbol, on Windows; empty for any library
};

/// A version of symbols that a library must define.
struct RequiredVersion {
  std::string library;
  std::string version;
};

struct ModuleFile {
  std::filesystem::path file;
  std::string processor;         ///< "x86-64", "arm64", or the number that the file names
  bool isLibrary = false;        ///< a shared library, not a program or an object file
  bool isNeverUnloaded = false;  ///< the file says so by a flag
  bool hasExecutableStack = false;
  bool hasTextRelocations = false;
  std::vector<ModuleSymbol> exports;       ///< all symbols that other files can use
  std::vector<std::string> uniqueSymbols;  ///< exports that exist once in the process; they keep the file in memory
  std::vector<ModuleSymbol> undefined;     ///< symbols that other files must define
  std::vector<std::string> needed;         ///< the names of the libraries that it needs
  std::vector<RequiredVersion> requiredVersions;
  std::vector<std::string> definedVersions;
  std::vector<std::filesystem::path> searchedFirst;  ///< folders for libraries, also for those that its libraries need
  std::vector<std::filesystem::path> searchedLater;  ///< folders for its libraries, after those of the environment
};

/// ReadModuleFile reads a file, which may be damaged in any way. Returns false with a reason if it is not a library of
/// this system or can't be read. The file of another processor is read as far as possible.
[[nodiscard]] bool ReadModuleFile(const std::filesystem::path& file, ModuleFile& module, std::string& reason);

/// The processor for which this program was built, as ModuleFile::processor names it.
[[nodiscard]] std::string OwnProcessor();

/// The name of the library libzrcore as modules need it, and the part of it that all versions share.
struct LibraryName {
  std::string name;
  std::string prefix;
};
[[nodiscard]] LibraryName OwnLibrary();

/// FindLibrary finds a library as the system's loader would in a host. Returns an empty path if it doesn't exist.
///
/// @param neededBy  the file that needs the library
/// @param module    the module that is checked: `neededBy`, or the file for which `neededBy` is loaded
[[nodiscard]] std::filesystem::path FindLibrary(const std::string& name, const ModuleFile& neededBy,
                                                const ModuleFile& module);

/// Describes the beginning of a file that is not a library of this system, such as "a text file".
[[nodiscard]] std::string DescribeFile(const std::filesystem::path& file);

#endif
