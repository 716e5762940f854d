// A module with one fault, for tests/zrmodule_test: the environment variable ZRMODULE_TEST_FAULT names it. Without a
// fault the module is good. Faults of the file itself are made by linking this code in different ways
// (tests/CMakeLists.txt).

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "tests/zrmodule/fault_system.h"
#include "zrcore/atomic.h"
#include "zrcore/component.h"

static const ZRUUID kThingClass = {0x31AD0869, 0x6C4B, 0x4C0E, {0x9B, 0x3A, 0x2F, 0x7D, 0x1C, 0x5E, 0x8A, 0x10}};
static const ZRUUID kThingInterface = {0x0F5E2C77, 0x93B4, 0x4E0B, {0xA1, 0xD6, 0x7C, 0x3B, 0x58, 0xE1, 0xF9, 0x04}};

static bool Has(const char* fault) {
  const char* const chosen = std::getenv("ZRMODULE_TEST_FAULT");
  return chosen != nullptr && std::strcmp(chosen, fault) == 0;
}

static void* volatile g_lost = nullptr;
static std::atomic<bool> g_isEnding = false;
static std::thread g_worker;

static void Crash() { *static_cast<volatile int*>(nullptr) = 1; }

class CThing final : public IZrUnknown {
 public:
  uint32_t AddRef() override { return ZrInterlockedIncrementU32(&references_); }
  uint32_t Release() override {
    const uint32_t left = ZrInterlockedDecrementU32(&references_);
    if (left == 0) delete this;
    return left;
  }
  ZRRESULT QueryInterface(const ZRUUID* interfaceId, void** object) override {
    if (Has("crash_in_query")) Crash();
    if (std::memcmp(interfaceId, &kThingInterface, sizeof kThingInterface) != 0 && !Has("lying_interface")) {
      return ZR_R_NO_INTERFACE;
    }
    AddRef();
    *object = this;
    return ZR_R_OK;
  }

 private:
  uint32_t references_ = 1;
};

ZRRESULT ZrInitModule() {
  std::puts("A text that the module prints");
  if (Has("fork_in_init")) StartProcess();
  if (Has("crash_in_init") || Has("fork_in_init")) Crash();
  if (Has("hang_in_init")) SleepForever();
  if (Has("throw_in_init")) throw std::runtime_error("the disk is missing");
  if (Has("exit_in_init")) std::_Exit(0);
  if (Has("live_thread")) std::thread(SleepForever).detach();
  if (Has("joined_thread")) {
    g_worker = std::thread([] {
      while (!g_isEnding) std::this_thread::yield();
    });
  }
  if (Has("lost_memory")) g_lost = std::malloc(100000);
  if (Has("keeps_itself")) LoadAgain(reinterpret_cast<void*>(&ZrInitModule));
  return Has("refuse_init") ? ZR_R_ACCESS_DENIED : ZR_R_OK;
}

void ZrExitModule() {
  if (Has("crash_in_exit")) Crash();
  g_isEnding = true;
  if (g_worker.joinable()) g_worker.join();
}

ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t, const ZRUUID*, uint64_t, void** object) {
  *object = nullptr;
  if (Has("class_not_made") || std::memcmp(classId, &kThingClass, sizeof kThingClass) != 0) {
    return ZR_R_CLASS_NOT_REGISTERED;
  }
  *object = new CThing;
  return ZR_R_OK;
}
