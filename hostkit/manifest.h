// A manifest: the JSON file NAME.zrmodule, which describes a module and its classes. docs/manifests.md is its manual.

#ifndef HOSTKIT_MANIFEST_H
#define HOSTKIT_MANIFEST_H

#include <filesystem>
#include <optional>
#include <vector>

#include "hostkit/problem.h"
#include "hostkit/setting.h"
#include "zr/string.hpp"
#include "zr/uuid.hpp"

inline constexpr const char* kManifestSuffix = ".zrmodule";

struct ManifestInterface {
  zr::Uuid id;
  zr::String name;  ///< may be empty
};

struct ManifestClass {
  zr::Uuid id;
  zr::String name;
  TextPlace place;
  zr::String description;
  std::vector<ManifestInterface> interfaces;
  Configurations configurations;
};

struct Manifest {
  zr::String file;    ///< the absolute path of the manifest
  zr::String module;  ///< the absolute path of the module
  zr::String version;
  std::vector<ManifestClass> classes;
};

/// ReadManifest reads a manifest. What is wrong with it becomes problems. Returns nothing if the file, its schema or
/// the module file can't be used; a class that is not valid is left out.
///
/// @param file        an absolute path.
/// @param realFolder  the folder of the file without symbolic links, if manifest and module must be within it;
/// otherwise
///                    empty.
[[nodiscard]] std::optional<Manifest> ReadManifest(const std::filesystem::path& file,
                                                   const std::filesystem::path& realFolder, CProblems& problems);

#endif
