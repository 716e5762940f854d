// A module with one fault, which a definition FAULT_... chooses; without a definition it is good. tests/zrmodule_test
// expects that zrmodule names each fault.

#include <chrono>
#include <stdexcept>
#include <thread>

#include "zr/zr.hpp"

static constexpr zr::Uuid kThingClass("31AD0869-6C4B-4C0E-9B3A-2F7D1C5E8A10");

struct IThing : IZrUnknown {
  static constexpr zr::Uuid kId{"0F5E2C77-93B4-4E0B-A1D6-7C3B58E1F904"};

 protected:
  ~IThing() = default;
};

class CThing final : public zr::Object<IThing> {
#if defined(FAULT_LYING_INTERFACE)
 public:
  ZRRESULT QueryInterface(const ZRUUID*, void** object) override {
    AddRef();
    *object = static_cast<IThing*>(this);
    return ZR_R_OK;
  }
#endif
};

#if defined(FAULT_UNIQUE_SYMBOL)
template <class T>
struct __attribute__((visibility("default"))) Unique {
  static inline int value = 0;
};
__attribute__((visibility("default"))) int* UseUnique() { return &Unique<int>::value; }
#endif

#if defined(FAULT_UNRESOLVED)
void UndefinedFunction();
#endif

[[maybe_unused]] static void Crash() { *static_cast<volatile int*>(nullptr) = 1; }

#if !defined(FAULT_WITHOUT_INIT)
ZRRESULT ZrInitModule() {
#if defined(FAULT_CRASH_IN_INIT)
  Crash();
#elif defined(FAULT_HANG_IN_INIT)
  std::this_thread::sleep_for(std::chrono::hours(1));
#elif defined(FAULT_THROW_IN_INIT)
  throw std::runtime_error("the disk is missing");
#elif defined(FAULT_REFUSE_INIT)
  return ZR_R_ACCESS_DENIED;
#elif defined(FAULT_LIVE_THREAD)
  std::thread([] { std::this_thread::sleep_for(std::chrono::hours(1)); }).detach();
#elif defined(FAULT_UNRESOLVED)
  UndefinedFunction();
#endif
  return ZR_R_OK;
}
#endif

#if !defined(FAULT_WITHOUT_EXIT)
void ZrExitModule() {
#if defined(FAULT_CRASH_IN_EXIT)
  Crash();
#endif
}
#endif

#if !defined(FAULT_WITHOUT_CREATE)
ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId, uint64_t argument2,
                                void** object) {
#if defined(FAULT_CLASS_NOT_MADE)
  *object = nullptr;
  return ZR_R_CLASS_NOT_REGISTERED;
#endif
  return zr::CreateInstance<zr::Class<CThing, kThingClass>>(classId, argument1, interfaceId, argument2, object);
}
#endif
