#include "hostkit/folder_discovery.h"

#include <utility>

#include "zr/result.hpp"
#include "zr/string.hpp"

static constexpr WCHAR kLibraryName[] = {'Z', 'r', 'C', 'o', 'r', 'e', 0};  // zrcore/configuration.h

CFolderDiscovery::CFolderDiscovery(Sources sources)
    : sources_(std::move(sources)), catalogue_(std::make_shared<const CCatalogue>(sources_)) {}

CFolderDiscovery* CFolderDiscovery::From(IZrComponentDiscovery* discovery) noexcept {
  void* found = nullptr;
  if (discovery == nullptr || zr::Failed(discovery->QueryInterface(&IFolderDiscovery::kId, &found)) ||
      found == nullptr) {
    return nullptr;
  }
  auto* const own = static_cast<IFolderDiscovery*>(found);
  (void)own->Release();  // the caller's reference keeps the object
  return static_cast<CFolderDiscovery*>(own);
}

void CFolderDiscovery::Refresh() {
  const std::lock_guard reading(refreshMutex_);
  auto fresh = std::make_shared<const CCatalogue>(sources_);
  const std::lock_guard lock(mutex_);
  catalogue_.swap(fresh);  // the old catalogue is released after the lock, since `fresh` was declared before it
}

std::shared_ptr<const CCatalogue> CFolderDiscovery::Catalogue() const {
  const std::lock_guard lock(mutex_);
  return catalogue_;
}

ZRRESULT CFolderDiscovery::QueryComponent(const ZRUUID* classId, ZRSTR* modulePath,
                                          ZrModuleEntryPoints* /*functions*/) {
  return zr::Guard([&]() -> ZRRESULT {
    const auto catalogue = Catalogue();
    const CatalogueClass* const found = catalogue->Find(zr::Uuid(*classId));
    if (found == nullptr) return ZR_R_UNKNOWN_IDENTIFIER;
    *modulePath = zr::String(found->manifest->module).Detach();
    return ZR_R_OK;
  });
}

ZRRESULT CFolderDiscovery::QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** configuration) {
  return zr::Guard([&]() -> ZRRESULT {
    const auto catalogue = Catalogue();
    const zr::String wanted = zr::String::Share(name);
    const zr::Uuid id(*classId);
    zr::Ptr<zr::ConfigurationTable> found;
    if (id.IsNil()) {
      if (wanted == kLibraryName) found = catalogue->LibraryConfiguration();
    } else if (const CatalogueClass* const row = catalogue->Find(id)) {
      const auto own = row->configurations.find(wanted);
      if (own != row->configurations.end()) found = own->second;
    }
    if (!found) return ZR_R_NOT_EXISTING;
    *configuration = found.Detach();
    return ZR_R_OK;
  });
}

ZRRESULT CFolderDiscovery::QueryClassId(ZRSTR className, ZRUUID* classId) {
  return zr::Guard([&]() -> ZRRESULT {
    const auto catalogue = Catalogue();
    const zr::String wanted = zr::String::Share(className);
    const CatalogueClass* const found = catalogue->Find(zr::StringView(wanted));
    if (found == nullptr) return ZR_R_NOT_EXISTING;
    *classId = found->entry.id;
    return ZR_R_OK;
  });
}

ZRRESULT CFolderDiscovery::QueryClassName(const ZRUUID* classId, ZRSTR* className) {
  return zr::Guard([&]() -> ZRRESULT {
    const auto catalogue = Catalogue();
    const CatalogueClass* const found = catalogue->Find(zr::Uuid(*classId));
    if (found == nullptr) return ZR_R_NOT_EXISTING;
    *className = zr::String(found->entry.name).Detach();
    return ZR_R_OK;
  });
}
