// Tests the component classes of the C++ layer: objects, modules, discoveries and configurations.

#include <gtest/gtest.h>

#include <atomic>

#include "tests/support/race.h"
#include "tests/support/variant_text.h"
#include "tests/zr/planet.h"

static std::atomic<int> g_planets{0};

class CPlanet final : public zr::Object<IPlanet, IMoon> {
 public:
  CPlanet() { ++g_planets; }
  explicit CPlanet(int error) {
    if (error == 0) throw std::bad_alloc();
    throw zr::Error(error);
  }
  ~CPlanet() override { --g_planets; }
  ZRRESULT CountMoons(ZRVARIANT* count) override {
    return zr::Guard([&] { *count = zr::Variant(1).Detach(); });
  }
  uint64_t Arguments() override { return 0; }
};

// A class whose constructor takes the arguments of ZrCreateInstance and throws what they say.
class CThrowing final : public zr::Object<IPlanet> {
 public:
  CThrowing(uint64_t what, uint64_t code) {
    if (what == 1) throw zr::Error(static_cast<ZRRESULT>(code));
    if (what == 2) throw std::bad_alloc();
    throw 3;
  }
  ZRRESULT CountMoons(ZRVARIANT*) override { return ZR_R_OK; }
};

static constexpr zr::Uuid kPlanet("00000001-0000-0000-0000-000000000000");
static constexpr zr::Uuid kThrowing("00000002-0000-0000-0000-000000000000");
static constexpr auto kCreate = zr::CreateInstance<zr::Class<CPlanet, kPlanet>, zr::Class<CThrowing, kThrowing>>;

TEST(Object, HasTheInterfacesThatItNames) {
  {
    const zr::Ptr<IPlanet> planet = zr::MakeObject<CPlanet>();
    const zr::Ptr<IMoon> moon = planet.As<IMoon>().Value();
    EXPECT_NE(static_cast<void*>(moon.Get()), static_cast<void*>(planet.Get()));
    EXPECT_EQ(moon.As<IPlanet>().Value(), planet);
    EXPECT_EQ(moon->Arguments(), 0u);
    EXPECT_RESULT(zr::Ptr<IPlanet>().As<IMoon>().Code(), ZR_R_INVALID_POINTER);
    const zr::Uuid unknown = zr::Uuid::Generate();
    void* object = &g_object;
    EXPECT_RESULT(planet->QueryInterface(&unknown, &object), ZR_R_NO_INTERFACE);
    EXPECT_EQ(object, nullptr);
    object = &g_object;
    EXPECT_RESULT(planet->QueryInterface(nullptr, &object), ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(object, nullptr);
    EXPECT_RESULT(planet->QueryInterface(&IPlanet::kId, nullptr), ZR_R_INVALID_ARGUMENTS);
    zr::Variant moons;
    EXPECT_RESULT(planet->CountMoons(moons.Put()), ZR_R_OK);
    EXPECT_EQ(moons.To<int>().Value(), 1);
  }
  EXPECT_EQ(g_planets, 0);
}

TEST(Object, ReferencesMayBeCountedByManyThreads) {
  for (int round = 0; round < 20; ++round) {
    zr::Ptr<IPlanet> planet = zr::MakeObject<CPlanet>();
    std::vector<zr::Ptr<IPlanet>> own(kThreads, planet);  // the threads race for the last release
    planet.Reset();
    Race(200, [&](int thread) {
      zr::Ptr<IPlanet>& mine = own[static_cast<std::size_t>(thread)];
      const zr::Ptr<IPlanet> copy = std::move(mine);
      if (copy) mine = copy.As<IMoon>().Value().As<IPlanet>().Value();
    });
    Race(1, [&](int thread) { own[static_cast<std::size_t>(thread)] = nullptr; });
    ASSERT_EQ(g_planets, 0);
  }
}

TEST(Object, NoExceptionOfAConstructorCrossesTheBoundary) {
  EXPECT_THROW((void)zr::MakeObject<CPlanet>(0), std::bad_alloc);
  EXPECT_RESULT(zr::Guard([] { (void)zr::MakeObject<CPlanet>(ZR_R_TIMEOUT); }), ZR_R_TIMEOUT);

  const zr::Uuid unknown = zr::Uuid::Generate();
  const struct {
    const ZRUUID *classId, *interfaceId;
    uint64_t argument1;
    ZRRESULT code;
  } kCalls[] = {
      {&kPlanet, &IMoon::kId, 0, ZR_R_OK},
      {&kPlanet, &unknown, 0, ZR_R_NO_INTERFACE},
      {&kPlanet, nullptr, 0, ZR_R_INVALID_ARGUMENTS},
      {&unknown, &IPlanet::kId, 0, ZR_R_CLASS_NOT_REGISTERED},
      {nullptr, &IPlanet::kId, 0, ZR_R_INVALID_ARGUMENTS},
      {&kThrowing, &IPlanet::kId, 1, ZR_R_CANCELLED},
      {&kThrowing, &IPlanet::kId, 2, ZR_R_NO_MEMORY},
      {&kThrowing, &IPlanet::kId, 3, ZR_R_UNEXPECTED},
  };
  for (const auto& [classId, interfaceId, argument1, code] : kCalls) {
    void* object = &g_object;
    EXPECT_RESULT(kCreate(classId, argument1, interfaceId, static_cast<uint64_t>(ZR_R_CANCELLED), &object), code);
    EXPECT_EQ(object != nullptr, code == ZR_R_OK);
    const auto moon = zr::Ptr<IMoon>::Adopt(static_cast<IMoon*>(code == ZR_R_OK ? object : nullptr));
    EXPECT_EQ(g_planets, moon ? 1 : 0);
  }
  EXPECT_RESULT(kCreate(&kPlanet, 0, &IPlanet::kId, 0, nullptr), ZR_R_INVALID_ARGUMENTS);
}

static zr::Ptr<zr::TableDiscovery> MakeDiscovery() {
  const zr::String path = Units(Widened(TEST_DIRECTORY "/layer" MODULE_SUFFIX));
  return zr::MakeObject<zr::TableDiscovery>(
      zr::TableDiscovery::Rows{{kMars, W("Planets.Mars"), path},
                               {kBroken, W("Planets.Broken"), path},
                               {kPlanet, W("Planet"), {}, {kCreate, nullptr, nullptr}}});
}

TEST(Library, CreatesObjectsOfModulesAndOfTheProgram) {
  EXPECT_RESULT(zr::Create<IPlanet>(kMars).Code(), ZR_R_NO_INIT);
  {
    const zr::Library library;
    zr::Registration registration(MakeDiscovery());
    ASSERT_TRUE(registration);
    {
      const zr::Ptr<IMoon> mars = zr::CreateByName<IMoon>(W("Planets.Mars"), 4, 2).Value();
      EXPECT_EQ(mars->Arguments(), 402u);
      zr::Variant moons;
      EXPECT_RESULT(mars.As<IPlanet>().Value()->CountMoons(moons.Put()), ZR_R_OK);
      EXPECT_EQ(moons.To<int>().Value(), 2);
    }
    EXPECT_RESULT(zr::Create<IPlanet>(kBroken).Code(), ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(zr::CreateByName<IPlanet>(W("Planet")).Value().As<IMoon>().Value()->Arguments(), 0u);
    EXPECT_EQ(zr::ClassIdOf(W("Planet")).Value(), kPlanet);
    EXPECT_TRUE(zr::ClassNameOf(kMars).Value() == W("Planets.Mars"));
    EXPECT_FALSE(zr::CreateByName<IPlanet>(W("Comet")));
    EXPECT_FALSE(zr::ClassNameOf(zr::Uuid::Generate()));
    EXPECT_FALSE(zr::ConfigurationOf(kPlanet, W("any")));

    zr::Registration moved = std::move(registration);
    EXPECT_TRUE(moved && !registration);
    moved = zr::Registration();  // removes the discovery at once
    EXPECT_RESULT(zr::Create<IPlanet>(kPlanet).Code(), ZR_R_CLASS_NOT_REGISTERED);
    registration = zr::Registration(MakeDiscovery());
    EXPECT_TRUE(registration.Remove() && registration.Remove() && !registration);
  }
  EXPECT_EQ(g_planets, 0);
  EXPECT_FALSE(zr::Registration(MakeDiscovery())) << "the library is not initialised";
}

TEST(Library, ReadsItsOwnConfigurationFromATable) {
  // The value is an object, so that each read leaves a trace in its count.
  struct Count final : IZrUnknown {
    uint32_t references = 0, added = 0;
    uint32_t AddRef() override { return ++added, ++references; }
    uint32_t Release() override { return --references; }
    ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }
  } count;
  {
    const auto settings = zr::MakeObject<zr::ConfigurationTable>(zr::ConfigurationTable::Rows{
        {W("EnableAllocator"), zr::Ptr<IZrUnknown>::Share(&count)}, {W("ZR_VT_REF"), W("25")}});
    const auto discovery = MakeDiscovery();
    discovery->SetConfiguration(settings);
    const zr::Library library;
    const uint32_t before = count.added;
    const zr::Registration registration(*discovery);
    EXPECT_TRUE(registration);
    EXPECT_GT(count.added, before);

    zr::Ptr<IZrConfigurationSection> section;
    ASSERT_RESULT(settings->QuerySection(section.Put()), ZR_R_OK);
    const auto read = [&](const WCHAR* name, uint16_t type, zr::Variant& value) {
      zr::Ptr<IZrConfigurationValue> found;
      const ZRRESULT result = section->QueryValue(zr::String(name).Get(), found.Put());
      return zr::Failed(result) ? result : found->Read(zr::Variant().Get(), type, value.Put());
    };
    zr::Variant value;
    EXPECT_RESULT(read(W("ZR_VT_REF"), ZR_VT_UI4, value), ZR_R_OK);
    EXPECT_EQ(value, zr::Variant(25u));
    EXPECT_RESULT(read(W("EnableAllocator"), ZR_VT_BOOL, value), ZR_R_NOT_SUPPORTED);
    EXPECT_RESULT(read(W("absent"), ZR_VT_BOOL, value), ZR_R_NOT_EXISTING);
  }
  EXPECT_EQ(count.references, 0u);
}
