// The source of all test modules, which log their calls. Macro definitions on the command line give each module its one
// deviation from a normal module.

#include <string_view>
#include <thread>

#include "tests/support/module_log.h"
#include "zrcore/zrcore.h"

static const struct LoadLog {  // logs when the loader loads and unloads the module
  LoadLog() { WriteModuleLog(MODULE_NAME, "load"); }
  ~LoadLog() { WriteModuleLog(MODULE_NAME, "unload"); }
} g_loadLog;

ZRRESULT ZrInitModule() {
  for (int turn = 0; turn < 100; ++turn) std::this_thread::yield();  // time for other threads to call too early
  WriteModuleLog(MODULE_NAME, "init");
  return std::string_view(MODULE_NAME) == "refusing" ? ZR_R_ACCESS_DENIED : ZR_R_OK;
}

#ifdef THROWING  // an exception whose destructor is code of the module
struct ModuleException {
  ~ModuleException();
};
__attribute__((noinline)) ModuleException::~ModuleException() { WriteModuleLog(MODULE_NAME, "caught"); }
static int g_exits = 0;
#endif

void ZrExitModule() {
  WriteModuleLog(MODULE_NAME, "exit");
  RunNextExit();
#ifdef THROWING
  if (++g_exits == 2) throw ModuleException();
#endif
#ifdef REENTERING  // the thread that runs this holds the registry's lock
  void* object = nullptr;
  const ZRUUID nil = {};
  WriteModuleLog(MODULE_NAME, ZrCreateInstance(&nil, 0, &nil, 0, &object) == ZR_R_NO_INIT ? "closed" : "open");
  ZrInitialize();  // initializing and uninitializing during the shutdown must not unload this module
  ZrUninitialize();
#endif
}

ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t, [[maybe_unused]] const ZRUUID* interfaceId, uint64_t,
                                void** object) {
  WriteModuleLog(MODULE_NAME, "create");
#ifdef REENTERING  // first creates an object of the class that the caller passed as the interface
  if (const ZRRESULT result = ZrCreateInstance(interfaceId, 0, interfaceId, 0, object); ZR_FAILED(result))
    return result;
#endif
  *object = reinterpret_cast<void*>(uintptr_t{classId->data1});
  return ZR_R_OK;
}
