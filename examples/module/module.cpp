// The three functions that every component module must export. The library loads the file and calls them.

#include <new>

#include "body_table.h"
#include "module/body_table_object.h"

// Starting and stopping need no work here, because the module has no state except its objects.
ZRRESULT ZrInitModule() { return ZR_R_OK; }

void ZrExitModule() {}

ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t, const ZRUUID* interfaceId, uint64_t, void** object) {
  *object = nullptr;
  uint8_t isOurs = 0;
  if (ZR_FAILED(ZrCompareUUID(classId, &kBodyTableClass, &isOurs)) || isOurs == 0) return ZR_R_CLASS_NOT_REGISTERED;

  CBodyTable* table = new (std::nothrow) CBodyTable;
  if (table == nullptr) return ZR_R_NO_MEMORY;
  // QueryInterface adds the caller's reference. Release removes the first one, so that the object is deleted if it
  // doesn't have the interface.
  const ZRRESULT result = table->QueryInterface(interfaceId, object);
  table->Release();
  return result;
}
