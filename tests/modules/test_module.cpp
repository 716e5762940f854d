// The source of all test modules; definitions on the command line make each one off in its point.

#include <stdexcept>

#include "tests/support/module_log.h"
#include "zrcore/zrcore.h"

#ifndef INIT_RESULT
#define INIT_RESULT ZR_R_OK
#endif
#ifndef CREATE_RESULT
#define CREATE_RESULT ZR_R_OK
#endif

[[maybe_unused]] static int g_object;

static const struct Presence {  // in memory, as the loader sees it
  Presence() { WriteModuleLog(MODULE_NAME, "load"); }
  ~Presence() { WriteModuleLog(MODULE_NAME, "unload"); }
} g_presence;

#ifdef UNRESOLVED
extern "C" void NobodyDefinesThis();
#endif
#ifdef NEEDED
extern "C" ZR_EXPORT void NeededByAnother();
void NeededByAnother() {}
#endif
#ifdef NEEDING
extern "C" void NeededByAnother();
static struct Need {
  Need() { NeededByAnother(); }
} g_need;
#endif

#ifndef WITHOUT_INIT
ZRRESULT ZrInitModule() {
  WriteModuleLog(MODULE_NAME, "init");
#ifdef UNRESOLVED
  NobodyDefinesThis();
#endif
#ifdef REENTERING  // other classes' lookups are allowed while this module starts
  ZRUUID classId;
  (void)ZrCLSIDFromClassName(nullptr, &classId);
  WriteModuleLog(MODULE_NAME, "asked");
#endif
  return INIT_RESULT;
}
#endif

#ifndef WITHOUT_EXIT
void ZrExitModule() {
  WriteModuleLog(MODULE_NAME, "exit");
#ifdef REENTERING  // under the registry's lock, on its thread
  void* object = nullptr;
  const ZRUUID nil = {};
  WriteModuleLog(MODULE_NAME, ZrCreateInstance(&nil, 0, &nil, 0, &object) == ZR_R_NO_INIT ? "closed" : "open");
  ZrInitialize();  // a cycle within the end of the last one must not unload what runs here
  ZrUninitialize();
#endif
}
#endif

#ifndef WITHOUT_CREATE
// argument1, where it isn't 0, is the address of a variable that receives the sum of what came with it.
ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId,
                                uint64_t argument2, void** object) {
  WriteModuleLog(MODULE_NAME, "create");
  if (argument1 != 0) *reinterpret_cast<uint64_t*>(argument1) = classId->data1 + interfaceId->data1 + argument2;
#ifdef THROWING
  throw std::runtime_error("thrown");
#endif
#ifdef REENTERING  // makes an object of the class that the caller gave as the interface
  return ZrCreateInstance(interfaceId, 0, interfaceId, 0, object);
#endif
  if (ZR_SUCCEEDED(CREATE_RESULT)) *object = &g_object;
  return CREATE_RESULT;
}
#endif
