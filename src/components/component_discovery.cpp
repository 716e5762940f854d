#include "components/component_discovery.h"

#include <utility>

#include "text/counted_string.h"

CComponentDiscovery::~CComponentDiscovery() {
  try {
    Detach();
  } catch (...) {
    // A host's Release that throws has nobody left to tell.
  }
}

void CComponentDiscovery::Attach(uint32_t cookie, IZrComponentDiscovery* discovery) {
  cookie_ = cookie;
  discovery_ = discovery;  // before the call, which may come back with a lookup
  try {
    discovery->AddRef();
  } catch (...) {
    discovery_ = nullptr;  // no reference was taken
    throw;
  }
}

void CComponentDiscovery::Detach() {
  ForgetComponents();
  if (IZrComponentDiscovery* discovery = std::exchange(discovery_, nullptr)) discovery->Release();
}

ZRRESULT CComponentDiscovery::QueryComponent(const ZRUUID& classId, std::shared_ptr<CComponent>& component) {
  if (discovery_ == nullptr) return ZR_R_UNEXPECTED;
  const ZRUUID lentClassId = classId;
  CStringHolder modulePath;  // ours whatever the object answers
  ZrModuleEntryPoints entryPoints{};
  const ZRRESULT result = discovery_->QueryComponent(&lentClassId, modulePath.Receive(), &entryPoints);
  if (result >= 0) {
    component = std::make_shared<CComponent>(cookie_, classId, modulePath.Get(), entryPoints);
    components_.insert_or_assign(classId, component);
  }
  return result;
}

ZRRESULT CComponentDiscovery::QueryConfiguration(const ZRUUID& classId, ZRSTR name, IZrConfiguration** configuration) {
  const ZRUUID lentClassId = classId;
  return discovery_ != nullptr ? discovery_->QueryConfiguration(&lentClassId, name, configuration) : ZR_R_UNEXPECTED;
}

ZRRESULT CComponentDiscovery::QueryClassId(ZRSTR className, ZRUUID* classId) {
  return discovery_ != nullptr ? discovery_->QueryClassId(className, classId) : ZR_R_UNEXPECTED;
}

ZRRESULT CComponentDiscovery::QueryClassName(const ZRUUID& classId, ZRSTR* className) {
  const ZRUUID lentClassId = classId;
  return discovery_ != nullptr ? discovery_->QueryClassName(&lentClassId, className) : ZR_R_UNEXPECTED;
}

void CComponentDiscovery::ForgetComponents() noexcept {
  CComponentMap forgotten;  // emptied first and destroyed then, since a module that goes may call back
  forgotten.swap(components_);
}
