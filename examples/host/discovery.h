// The host's own list of classes, as the library asks for it: identifier, name, module file.

#ifndef EXAMPLES_HOST_DISCOVERY_H
#define EXAMPLES_HOST_DISCOVERY_H

#include <zrcore/zrcore.h>

#include <vector>

#include "host/settings.h"
#include "owners.h"

/// CTableDiscovery is made with one reference, for its maker, and frees itself with the last one.
///
/// Fill it before it is registered: the library calls it under its management lock, but Add has no lock.
class CTableDiscovery final : public IZrComponentDiscovery {
 public:
  CTableDiscovery() = default;
  CTableDiscovery(const CTableDiscovery&) = delete;
  CTableDiscovery& operator=(const CTableDiscovery&) = delete;

  /// Settings are what the library is given as its configuration "ZrCore".
  CSettings& Settings() { return *settings_; }

  /// Add lists a class. The strings are lent; the discovery takes references of its own.
  void Add(const ZRUUID& classId, ZRSTR className, ZRSTR modulePath);

  /// Answered is the module path that QueryComponent gave most recently, lent; null if it was never asked.
  ZRSTR Answered() const { return answered_; }

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

  ~CTableDiscovery() { settings_->Release(); }  // by the last Release only
  const Entry* Find(const ZRUUID* classId) const;

  uint32_t references_ = 1;
  std::vector<Entry> entries_;
  ZRSTR answered_ = nullptr;  // lent by an entry
  CSettings* settings_ = new CSettings;
};

#endif
