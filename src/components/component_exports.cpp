// The component exports: they clear results and check arguments, then call the registry.
//
// Callers rely on the order of these steps, which differs from export to export:
//
//     export                          steps, before the registry is called
//     ZrAddComponentDiscovery         cookie null? clear *cookie. initialised? discovery null?
//     ZrRemoveComponentDiscovery      initialised?
//     ZrCreateInstance                clear *object, if not null. initialised? object null?
//     ZrCLSIDFromClassName            initialised? classId null?
//     ZrClassNameFromCLSID            initialised? read *classId. className null?
//     ZrQueryComponentConfiguration   clear *configuration, if not null. initialised? configuration null?
//
// "initialised?" returns ZR_R_NO_INIT, "null?" returns ZR_R_INVALID_ARGUMENTS. A common function for these checks would
// change the result of calls that fail in two ways.

#include "components/allocator_settings.h"
#include "components/component_registry.h"
#include "runtime/library_state.h"
#include "runtime/result.h"
#include "zrcore/configuration.h"

// The settings are read after the registry has left its lock, because the discovery is called for that. An exception of
// the discovery passes to the caller of this export, although the discovery is registered.
ZRRESULT ZrAddComponentDiscovery(IZrComponentDiscovery* discovery, uint32_t* cookie) {
  if (cookie == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *cookie = 0;
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  if (discovery == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const ZRRESULT result = ComponentRegistry().AddDiscovery(discovery, cookie);
  if (!Failed(result)) AllocatorSettings().DiscoveryAdded(*discovery);  // without the lock; exceptions pass
  return result;
}

// Only the call that took the discovery out of the registry counts it, so that no discovery is counted twice.
// A removal that failed is not counted, even if the discovery is gone.
ZRRESULT ZrRemoveComponentDiscovery(uint32_t cookie) {
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  bool isRemoved = false;
  const ZRRESULT result = ComponentRegistry().RemoveDiscovery(cookie, &isRemoved);
  if (isRemoved && !Failed(result)) AllocatorSettings().DiscoveryRemoved();
  return result;
}

ZRRESULT ZrCreateInstance(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId, uint64_t argument2,
                          void** object) noexcept {
  if (object != nullptr) *object = nullptr;
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  if (object == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return ComponentRegistry().CreateInstance(*classId, argument1, *interfaceId, argument2, object);
}

ZRRESULT ZrCLSIDFromClassName(ZRSTR className, ZRUUID* classId) noexcept {
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  if (classId == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return ComponentRegistry().ClassIdFromName(className, classId);
}

// `*classId` is read before `className` is checked. The contract fixes this order: a null `classId` is undefined
// behaviour even if `className` is null too.
ZRRESULT ZrClassNameFromCLSID(const ZRUUID* classId, ZRSTR* className) noexcept {
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  const ZRUUID lookedUp = *classId;
  if (className == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return ComponentRegistry().NameFromClassId(lookedUp, className);
}

ZRRESULT ZrQueryComponentConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** configuration) noexcept {
  if (configuration != nullptr) *configuration = nullptr;
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  if (configuration == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return ComponentRegistry().QueryConfiguration(*classId, name, configuration);
}
