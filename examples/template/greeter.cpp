// The module: the class that implements IGreeter.

#include "greeter.h"

class CGreeter final : public zr::Object<IGreeter> {
 public:
  ZRRESULT Greet(ZRSTR name, ZRSTR* greeting) override {
    return zr::Guard([&]() -> ZRRESULT {  // turns exceptions into result codes
      const zr::String who = zr::String::Share(name);
      if (who.IsEmpty() || greeting == nullptr) return ZR_R_INVALID_ARGUMENTS;
      *greeting = (zr::String::FromUtf8("Hello, ").Value() + who).Detach();
      return ZR_R_OK;
    });
  }
};

ZR_MODULE(zr::Class<CGreeter, kGreeterClass>)
