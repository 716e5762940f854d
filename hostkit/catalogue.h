// A catalogue: what one reading of the folders and the configuration file found. It never changes once it is read, so
// any number of threads may use it.

#ifndef HOSTKIT_CATALOGUE_H
#define HOSTKIT_CATALOGUE_H

#include <array>
#include <bit>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "hostkit/manifest.h"
#include "hostkit/problem.h"
#include "zr/configuration.hpp"
#include "zr/ptr.hpp"
#include "zr/string.hpp"
#include "zr/uuid.hpp"

/// What a catalogue is read from. All paths are absolute.
struct Sources {
  std::vector<std::filesystem::path> folders;
  bool isFolderOptional = false;  ///< a folder that doesn't exist is no problem
  bool isOutsideAllowed = false;
  std::optional<std::filesystem::path> configurationFile;
};

struct CatalogueClass {
  ManifestClass entry;  ///< without its configurations
  const Manifest* manifest;
  std::map<zr::String, zr::Ptr<zr::ConfigurationTable>> configurations;
};

class CCatalogue {
 public:
  /// Reads everything. Throws std::bad_alloc; what is wrong with a file becomes a problem.
  explicit CCatalogue(const Sources& sources);

  CCatalogue(const CCatalogue&) = delete;
  CCatalogue& operator=(const CCatalogue&) = delete;

  /// The class with this identifier or name, or null. The time is logarithmic in the number of classes.
  [[nodiscard]] const CatalogueClass* Find(const zr::Uuid& id) const noexcept;
  [[nodiscard]] const CatalogueClass* Find(zr::StringView name) const noexcept;

  /// The configuration "ZrCore" of the library itself; null without settings.
  [[nodiscard]] const zr::Ptr<zr::ConfigurationTable>& LibraryConfiguration() const noexcept { return library_; }

  /// All classes, sorted by name.
  [[nodiscard]] std::vector<const CatalogueClass*> Classes() const;
  [[nodiscard]] const std::vector<Problem>& Problems() const noexcept { return problems_.Rows(); }

 private:
  void ReadFolder(const std::filesystem::path& folder, const Sources& sources);
  void AddManifest(Manifest manifest);
  void ReadConfigurations(const Sources& sources);

  std::set<std::filesystem::path> realFolders_;  // those that have been read
  // Any order will do for a map of identifiers. This one costs no call.
  struct ByBits {
    using Halves = std::array<uint64_t, 2>;
    bool operator()(const zr::Uuid& left, const zr::Uuid& right) const noexcept {
      return std::bit_cast<Halves>(left) < std::bit_cast<Halves>(right);
    }
  };

  // The order of code units, for any names in a time that doesn't depend on a hash.
  struct ByUnits {
    bool operator()(zr::StringView left, zr::StringView right) const noexcept;
  };

  std::deque<Manifest> manifests_;  // their classes have been moved to classes_
  std::deque<CatalogueClass> classes_;
  std::map<zr::Uuid, const CatalogueClass*, ByBits> byId_;
  std::map<zr::StringView, CatalogueClass*, ByUnits> byName_;
  zr::Ptr<zr::ConfigurationTable> library_;
  CProblems problems_;
};

#endif
