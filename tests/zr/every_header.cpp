// A program that uses every header of the C++ layer, for tests/layer_compiles. It is compiled but not run, as every
// version of the language and with every warning, so it uses each template at least once.

#include <mutex>

#include "tests/zr/planet.h"
#include "zr/host.hpp"
#if __cplusplus >= 202002L
#include <span>
#endif

#if defined(_WIN32)
#define W(text) L##text
#else
#define W(text) u##text
#endif

namespace {

class CMars final : public zr::Object<IPlanet, IMoon> {
 public:
  ZRRESULT CountMoons(ZRVARIANT* count) override {
    return zr::Guard([&] { *count = zr::Variant(zr::Array<double>{9376, 23463.2}).Detach(); });
  }
  uint64_t Arguments() override { return 0; }
};

zr::Result<zr::Memory> MoveOut() {
  zr::Memory block(8);
  block.Resize(16);
  return block;  // without a copy, which a Memory does not have
}

template <class T>
bool UseElements(T element) {
  zr::Array<T> array = {element, element};
  const zr::Array<T> copy(&element, 1);
  bool isSame = array.At(0).ValueOr(element) == element && array == copy;
  if (auto lent = array.Lend()) isSame = lent->size() == 2 && lent->begin() != lent->end();
#if __cplusplus >= 202002L
  if (auto lent = copy.Lend()) isSame = std::span(*lent).size() == 1;
#endif
  const zr::Result<zr::Array<zr::Variant>> variants = array.template To<zr::Variant>();
  return isSame && array.Set(element, 1) && variants && zr::Variant(array).IsArray();
}

template <class... T>
bool UseValues(const zr::Variant& value) {
  return ((value.Is<T>() || UseElements(value.To<T>().ValueOr(T()))) && ...);
}

zr::Result<void> Use() {
  const zr::Library library;
  zr::Registration registration(zr::MakeObject<zr::TableDiscovery>(zr::TableDiscovery::Rows{
      {kMars,
       W("Planets.Mars"),
       W("planets"),
       {},
       zr::MakeObject<zr::ConfigurationTable>(zr::ConfigurationTable::Rows{{W("EnableAllocator"), true}})}}));
  if (!registration) return zr::Failure{registration.Code()};
  const zr::Result<zr::Ptr<IPlanet>> mars = zr::CreateByName<IPlanet>(W("Planets.Mars"));
  if (!mars) return zr::Failure{mars.Code()};
  const zr::Result<zr::Ptr<IMoon>> moon = mars->As<IMoon>();
  zr::Variant value;
  if (zr::Failed((*mars)->CountMoons(value.Put())) || !moon) return zr::Failure{ZR_R_FAILED};
  zr::Lock lock;
  const std::lock_guard<zr::Lock> hold(lock);
  const zr::String text = zr::String(W("Mars")) + W(" and its moons");
  const bool isRight = text == W("Mars") || W("Mars") == text || zr::StringView(W("Mars")) != text;
  const zr::DateTime now = zr::DateTime::UtcNow() + zr::TimeSpan::Days(1);
  if (!MoveOut() || !isRight || std::hash<zr::DateTime>()(now) == std::hash<zr::String>()(text)) {
    return zr::RegisterError(-1, W("text"));
  }
  const bool isUsed = UseValues<bool, signed char, short, int, long, long long, unsigned char, unsigned short, unsigned,
                                unsigned long, float, double, char32_t, zr::DateTime, zr::TimeSpan, zr::Currency,
                                zr::String, zr::Blob, zr::Uuid, zr::Ref, zr::Sref, zr::Ptr<IZrUnknown>>(value);
  return zr::Result<void>(isUsed ? now.ToTimeT().Code() : ZR_R_FAILED);
}

zr::Result<void> UseHostKit() {
  const zr::Result<zr::Ptr<IZrComponentDiscovery>> discovery =
      zr::MakeFolderDiscovery({W("./modules")}, W("host.json"));
  if (!discovery) return zr::Failure{discovery.Code()};
  std::size_t count = zr::ListHostFolders(**discovery)->size();
  const zr::Result<zr::HostList<ZrHostClass>> classes = zr::ListHostClasses(**discovery);
  for (const ZrHostClass& found : *classes) count += found.interfaceCount;
  const zr::Result<zr::HostList<ZrHostProblem>> problems = zr::ListHostProblems(**discovery);
  return zr::Result<void>(count != 0 && problems->size() == 0 ? classes.Code() : ZR_R_FAILED);
}

}  // namespace

ZR_MODULE(zr::Class<CMars, kMars>)

int main() {
#if ZR_EXCEPTIONS
  Use().Value();
#endif
  return Use() && UseHostKit() ? 0 : 1;
}
