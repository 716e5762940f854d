// The host's list of classes: identifier, name and module file of each. The library asks it where a class lives.

#ifndef EXAMPLES_HOST_DISCOVERY_H
#define EXAMPLES_HOST_DISCOVERY_H

#include <zrcore/zrcore.h>

#include <vector>

#include "host/settings.h"
#include "owners.h"

/// CTableDiscovery starts with one reference, which belongs to its creator. The last Release deletes it.
///
/// Call Add and Settings().Add before registering the discovery, never afterwards: they have no lock, and the library
/// may call the discovery from any thread, so a later Add is a data race.
class CTableDiscovery final : public IZrComponentDiscovery {
 public:
  CTableDiscovery() = default;
  CTableDiscovery(const CTableDiscovery&) = delete;
  CTableDiscovery& operator=(const CTableDiscovery&) = delete;

  /// Settings is the configuration "ZrCore", which the library reads when the discovery is registered.
  CSettings& Settings() { return *settings_; }

  /// Add lists a class. The discovery keeps its own references to both strings.
  void Add(const ZRUUID& classId, ZRSTR className, ZRSTR modulePath);

  /// LastModulePath lends the module path that QueryComponent returned most recently; null if it has returned none.
  ZRSTR LastModulePath() const { return lastModulePath_; }

  uint32_t AddRef() override;
  uint32_t Release() override;
  ZRRESULT QueryInterface(const ZRUUID* interfaceId, void** object) override;
  ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints* entryPoints) override;
  ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** configuration) override;
  ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) override;
  ZRRESULT QueryClassName(const ZRUUID* classId, ZRSTR* className) override;

 private:
  struct Entry {
    ZRUUID classId;
    StringOwner className;
    StringOwner modulePath;
  };

  ~CTableDiscovery() { settings_->Release(); }  // private: only the last Release may delete the object
  const Entry* Find(const ZRUUID* classId) const;

  uint32_t references_ = 1;
  std::vector<Entry> entries_;
  ZRSTR lastModulePath_ = nullptr;  // owned by an entry
  CSettings* settings_ = new CSettings;
};

#endif
