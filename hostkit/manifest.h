// A manifest: the JSON file NAME.zrmodule, which describes a module and its classes. docs/manifests.md is its manual.

#ifndef HOSTKIT_MANIFEST_H
#define HOSTKIT_MANIFEST_H

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/problem.h"
#include "hostkit/setting.h"
#include "zr/uuid.hpp"

inline constexpr const char* kManifestSuffix = ".zrmodule";

struct ManifestInterface {
  zr::Uuid id;
  std::string name;  ///< may be empty
};

struct ManifestClass {
  zr::Uuid id;
  std::string name;
  TextPlace place;
  std::string description;
  std::vector<ManifestInterface> interfaces;
  std::map<std::string, std::vector<Setting>> configurations;  ///< by their names
};

struct Manifest {
  std::filesystem::path file;    ///< absolute
  std::filesystem::path module;  ///< absolute
  std::string version;
  std::string description;
  std::vector<ManifestClass> classes;
};

/// ReadManifest reads a manifest. What is wrong with it becomes problems. Returns nothing if the file, its schema or the
/// module file can't be used; a class that is not valid is left out.
[[nodiscard]] std::optional<Manifest> ReadManifest(const std::filesystem::path& file, bool isOutsideAllowed,
                                                   CProblems& problems);

#endif
