// Calls a discovery object of the host and remembers what it has reported.
//
// The object is foreign code. It may throw, it may write to its arguments, and it may call back into the registry on
// the same thread. Hence two rules:
//   1. The object never gets a pointer to an identifier of the library. It gets a pointer to a copy: lentClassId.
//   2. State is changed before a call that may make callbacks, so that a callback finds it complete.

#include "components/component_discovery.h"

#include <utility>

#include "text/counted_string.h"

CComponentDiscovery::~CComponentDiscovery() {
  try {
    Detach();
  } catch (...) {
    // An exception of the host's Release is lost: a destructor must not throw, and no result code is left to report it.
  }
}

// The pointer is stored before AddRef is called, because AddRef may make a callback that looks up a class here.
void CComponentDiscovery::Attach(uint32_t cookie, IZrComponentDiscovery* discovery) {
  cookie_ = cookie;
  discovery_ = discovery;
  try {
    discovery->AddRef();
  } catch (...) {
    discovery_ = nullptr;  // no reference was added, so none must be released
    throw;
  }
}

// discovery_ is cleared before Release is called. So neither a callback nor an exception leads to a second Release.
void CComponentDiscovery::Detach() {
  ForgetComponents();
  if (IZrComponentDiscovery* discovery = std::exchange(discovery_, nullptr)) discovery->Release();
}

ZRRESULT CComponentDiscovery::QueryComponent(const ZRUUID& classId, std::shared_ptr<CComponent>& component) {
  if (discovery_ == nullptr) return ZR_R_UNEXPECTED;
  const ZRUUID lentClassId = classId;
  CStringHolder modulePath;  // releases the string that the object stored, even if its result is a failure
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

// After a shutdown, a component may own the last pointer to its assembly. Destroying the assembly unloads the module,
// whose destructors may make callbacks. So the map must be empty before the first component is destroyed. clear() would
// not ensure this.
void CComponentDiscovery::ForgetComponents() noexcept {
  CComponentMap forgotten;
  forgotten.swap(components_);
}
