// The source of all test modules; definitions on the command line make each one off in its point.

#include <string_view>
#include <thread>

#include "tests/support/module_log.h"
#include "zrcore/zrcore.h"

static const struct Presence {  // in memory, as the loader sees it
  Presence() { WriteModuleLog(MODULE_NAME, "load"); }
  ~Presence() { WriteModuleLog(MODULE_NAME, "unload"); }
} g_presence;

ZRRESULT ZrInitModule() {
  for (int turn = 0; turn < 100; ++turn) std::this_thread::yield();  // time for others to come too early
  WriteModuleLog(MODULE_NAME, "init");
  return std::string_view(MODULE_NAME) == "refusing" ? ZR_R_ACCESS_DENIED : ZR_R_OK;
}

#ifdef THROWING  // an exception whose code is the module's
struct Trouble {
  ~Trouble();
};
__attribute__((noinline)) Trouble::~Trouble() { WriteModuleLog(MODULE_NAME, "caught"); }
static int g_exits = 0;
#endif

void ZrExitModule() {
  WriteModuleLog(MODULE_NAME, "exit");
  RunNextExit();
#ifdef THROWING
  if (++g_exits == 2) throw Trouble();
#endif
#ifdef REENTERING  // under the registry's lock, on its thread
  void* object = nullptr;
  const ZRUUID nil = {};
  WriteModuleLog(MODULE_NAME, ZrCreateInstance(&nil, 0, &nil, 0, &object) == ZR_R_NO_INIT ? "closed" : "open");
  ZrInitialize();  // a cycle within the end of the last one must not unload what runs here
  ZrUninitialize();
#endif
}

ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t, [[maybe_unused]] const ZRUUID* interfaceId, uint64_t,
                                void** object) {
  WriteModuleLog(MODULE_NAME, "create");
#ifdef REENTERING  // makes an object of the class that the caller gave as the interface
  if (const ZRRESULT result = ZrCreateInstance(interfaceId, 0, interfaceId, 0, object); ZR_FAILED(result))
    return result;
#endif
  *object = reinterpret_cast<void*>(uintptr_t{classId->data1});
  return ZR_R_OK;
}
