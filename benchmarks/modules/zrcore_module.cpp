// A small component module. Peers that can load any shared library use its three functions too.

#include <cstring>
#include <new>

#include "modules/widget.h"

class CWidget final : public IZrUnknown {
 public:
  explicit CWidget(uint64_t value) : value_(value) {}

  uint32_t AddRef() override { return ++references_; }
  uint32_t Release() override {
    const uint32_t left = --references_;
    if (left == 0) delete this;
    return left;
  }
  ZRRESULT QueryInterface(const ZRUUID*, void** object) override {
    *object = nullptr;
    return ZR_R_NO_INTERFACE;
  }

  uint64_t Value() const { return value_; }

 private:
  ~CWidget() = default;

  uint32_t references_ = 1;
  uint64_t value_;
};

ZRRESULT ZrInitModule() { return ZR_R_OK; }

void ZrExitModule() {}

ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId, uint64_t,
                                void** object) {
  if (std::memcmp(interfaceId, &kWidgetInterface, sizeof kWidgetInterface) != 0) return ZR_R_NO_INTERFACE;
  if (!IsWidgetClass(*classId, 0, kColdClass + 1)) return ZR_R_CLASS_NOT_REGISTERED;
  *object = new (std::nothrow) CWidget(argument1);
  return *object == nullptr ? ZR_R_NO_MEMORY : ZR_R_OK;
}
