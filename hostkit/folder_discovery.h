// The discovery of the kit: an object that passes the library's questions to the newest catalogue.

#ifndef HOSTKIT_FOLDER_DISCOVERY_H
#define HOSTKIT_FOLDER_DISCOVERY_H

#include <memory>
#include <mutex>

#include "hostkit/catalogue.h"
#include "zr/object.hpp"
#include "zrcore/component.h"

/// The interface by which the exports recognise an object of this class. It has no operations of its own. Another major
/// version of the kit needs another identifier: both can be loaded in one process.
struct IFolderDiscovery : IZrComponentDiscovery {
  static constexpr zr::Uuid kId{"1B506DF5-DF79-41E3-9C8D-4E52E89145B9"};

 protected:
  ~IFolderDiscovery() = default;
};

class CFolderDiscovery final : public zr::Object<IFolderDiscovery> {
 public:
  explicit CFolderDiscovery(Sources sources);

  /// The object if it is of this class, otherwise null. The pointer is valid as long as `discovery`.
  [[nodiscard]] static CFolderDiscovery* From(IZrComponentDiscovery* discovery) noexcept;

  /// Reads everything again. Throws std::bad_alloc; the old catalogue remains then. One thread at a time reads, so that
  /// an older reading never replaces a newer one.
  void Refresh();

  [[nodiscard]] std::shared_ptr<const CCatalogue> Catalogue() const;
  [[nodiscard]] const Sources& ReadFrom() const noexcept { return sources_; }

  ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints* entryPoints) override;
  ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** configuration) override;
  ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) override;
  ZRRESULT QueryClassName(const ZRUUID* classId, ZRSTR* className) override;

 private:
  const Sources sources_;
  std::mutex refreshMutex_;   // locked before mutex_
  mutable std::mutex mutex_;  // protects the pointer, not the catalogue
  std::shared_ptr<const CCatalogue> catalogue_;
};

#endif
