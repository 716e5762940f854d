#include "module_log.h"

#include <mutex>
#include <utility>

static std::mutex g_mutex;
static std::string g_log;

void WriteModuleLog(const char* module, const char* event) {
  std::lock_guard hold(g_mutex);
  if (!g_log.empty()) g_log += ' ';
  g_log.append(module).append(".").append(event);
}

std::string TakeModuleLog() {
  std::lock_guard hold(g_mutex);
  return std::exchange(g_log, {});
}
