// The three functions by which the library reaches the module. Their names are all that a loader sees of it.

#include <new>

#include "body_table.h"
#include "module/body_table_object.h"

// Nothing here needs a start or an end: the module has no state but its objects.
ZRRESULT ZrInitModule() { return ZR_R_OK; }

void ZrExitModule() {}

ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t, const ZRUUID* interfaceId, uint64_t, void** object) {
  *object = nullptr;
  uint8_t isOurs = 0;
  if (ZR_FAILED(ZrCompareUUID(classId, &kBodyTableClass, &isOurs)) || isOurs == 0) return ZR_R_CLASS_NOT_REGISTERED;

  CBodyTable* table = new (std::nothrow) CBodyTable;
  if (table == nullptr) return ZR_R_NO_MEMORY;
  // The caller's reference comes from the interface; if there is no such interface, the object goes with ours.
  const ZRRESULT result = table->QueryInterface(interfaceId, object);
  table->Release();
  return result;
}
