// A shared library that all test modules and the tests link, so that they use one log.

#include "tests/support/module_log.h"

#include <mutex>
#include <utility>

#include "zrcore/component.h"

static std::mutex g_mutex;
static std::string g_log;

void WriteModuleLog(const char* module, const char* event) {
  std::lock_guard hold(g_mutex);
  if (!g_log.empty()) g_log += ' ';
  g_log.append(module).append(".").append(event);
}

std::string DrainModuleLog() {
  std::lock_guard hold(g_mutex);
  return std::exchange(g_log, {});
}

static std::function<void()> g_nextExit;

void SetNextExit(std::function<void()> action) { g_nextExit = std::move(action); }

void RunNextExit() {
  if (const auto action = std::exchange(g_nextExit, nullptr)) action();
}

// The three functions of a module, defined in a library that all test modules link. The library must not accept them as
// the module's own.
ZRRESULT ZrInitModule() { return ZR_R_OK; }
void ZrExitModule() {}
ZRRESULT ZrCreateInstanceModule(const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void**) { return ZR_R_OK; }
