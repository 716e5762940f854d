// A module that is written with the C++ layer alone.

#include "tests/zr/planet.h"

namespace {

class CMars final : public zr::Object<IPlanet, IMoon> {
 public:
  CMars(uint64_t argument1, uint64_t argument2) : arguments_(argument1 * 100 + argument2) {}
  ZRRESULT CountMoons(ZRVARIANT* count) override {
    return zr::Guard([&] { *count = zr::Variant(2).Detach(); });
  }
  uint64_t Arguments() override { return arguments_; }

 private:
  uint64_t arguments_;
};

class CBroken final : public zr::Object<IPlanet> {
 public:
  CBroken() { (void)zr::Uuid::Parse("no identifier").Value(); }
  ZRRESULT CountMoons(ZRVARIANT*) override { return ZR_R_OK; }
};

}  // namespace

ZR_MODULE(zr::Class<CMars, kMars>, zr::Class<CBroken, kBroken>)
