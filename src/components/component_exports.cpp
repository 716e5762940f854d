// The component exports: each one's checks and what it clears, in its own order, which differs from one to the next and
// on which callers rely. The registry takes over with arguments that are in order.

#include "components/allocator_settings.h"
#include "components/component_management.h"
#include "runtime/library_state.h"
#include "runtime/result.h"
#include "zrcore/configuration.h"

ZRRESULT ZrAddComponentDiscovery(IZrComponentDiscovery* discovery, uint32_t* cookie) {
  if (cookie == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *cookie = 0;
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  if (discovery == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const ZRRESULT result = ComponentRegistry().AddDiscovery(discovery, cookie);
  if (!Failed(result)) AllocatorSettings().DiscoveryAdded(*discovery);  // outside the registry's lock and its catch
  return result;
}

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

ZRRESULT ZrClassNameFromCLSID(const ZRUUID* classId, ZRSTR* className) noexcept {
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  const ZRUUID lookedUp = *classId;  // ahead of the test below, by contract
  if (className == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return ComponentRegistry().NameFromClassId(lookedUp, className);
}

ZRRESULT ZrQueryComponentConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** configuration) noexcept {
  if (configuration != nullptr) *configuration = nullptr;
  if (!IsLibraryInitialized()) return ZR_R_NO_INIT;
  if (configuration == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return ComponentRegistry().QueryConfiguration(*classId, name, configuration);
}
