// How the cost of the component registry grows with the number of classes and of discoveries. Each discovery represents
// a plug-in. The plug-ins provide their own entry points, so no file is loaded.
//
// Times are per creation or per class, so the rows of different sizes compare directly.
//   - The first creation of a class asks the discoveries in ascending order of their cookies until one knows the class.
//     The contract requires this, so the time grows linearly with the number of discoveries: on average half are asked.
//   - A creation of a known class and a removal may grow by the logarithm of the number of classes. This bounds the
//     work. The time grows faster, for the peers too, since many classes exceed the processor's caches.
//
// The peers are registries as a C++ user would write them: a map of factories for each plug-in, and one map of all
// classes used so far.

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <mutex>
#include <random>
#include <unordered_map>
#include <utility>
#include <vector>

#include "component_host.h"

// ---- Plug-ins and their classes -------------------------------------------------------------------------------------

static constexpr uint32_t kMostPlugIns = 1000;

struct Size {
  uint32_t plugIns, classesEach;
};

static constexpr Size kSizes[] = {{1, 1000}, {1, 10'000}, {1, 100'000}, {10, 100}, {kMostPlugIns, 100}};

// The identifier contains the number of the plug-in, so a discovery recognises its classes at almost no cost. The first
// field is scattered, as in random identifiers.
static constexpr ZRUUID PlugInClass(uint32_t plugIn, uint32_t index) {
  const uint32_t scattered = (plugIn * 100'003u + index) * 0x9E3779B1u;
  return {scattered, static_cast<uint16_t>(plugIn), 0x4B98, {0x9D, 0x40, 0x07, 0x5A, 0x1E, 0xC3, 0x88, 0x2B}};
}

// All classes share one object, which is never freed: the rows measure the registry and not the allocation.
class CSharedObject final : public IZrUnknown {
 public:
  uint32_t AddRef() override { return 2; }
  uint32_t Release() override { return 1; }
  ZRRESULT QueryInterface(const ZRUUID*, void** object) override {
    *object = nullptr;
    return ZR_R_NO_INTERFACE;
  }
};

static ZRRESULT CreateShared(const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void** object) {
  static CSharedObject shared;
  *object = static_cast<IZrUnknown*>(&shared);
  return ZR_R_OK;
}

// Entry points that differ in one function are different assemblies, so each plug-in gets an init function of its own.
template <std::size_t plugIn>
static ZRRESULT InitPlugIn() {
  return ZR_R_OK;
}

template <std::size_t... plugIns>
static constexpr std::array<ZrInitModuleFunction, sizeof...(plugIns)> InitFunctions(std::index_sequence<plugIns...>) {
  return {InitPlugIn<plugIns>...};
}

static constexpr auto kInitFunctions = InitFunctions(std::make_index_sequence<kMostPlugIns>());

// ---- Registries -----------------------------------------------------------------------------------------------------
//
// All have the same operations. The constructor adds the plug-ins. Learn makes classes known. Create makes an object of
// a class and releases it. RemoveAll removes the plug-ins one by one.

class CPlugInDiscovery final : public IZrComponentDiscovery {
 public:
  explicit CPlugInDiscovery(uint32_t plugIn) : plugIn_(plugIn) {}

  uint32_t AddRef() override { return 2; }
  uint32_t Release() override { return 1; }
  ZRRESULT QueryInterface(const ZRUUID*, void** object) override {
    *object = nullptr;
    return ZR_R_NO_INTERFACE;
  }

  ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR*, ZrModuleEntryPoints* entryPoints) override {
    if (classId->data2 != plugIn_) return ZR_R_CLASS_NOT_REGISTERED;
    *entryPoints = {CreateShared, kInitFunctions[plugIn_], nullptr};
    return ZR_R_OK;
  }
  ZRRESULT QueryConfiguration(const ZRUUID*, ZRSTR, IZrConfiguration**) override { return ZR_R_NOT_IMPLEMENTED; }
  ZRRESULT QueryClassId(ZRSTR, ZRUUID*) override { return ZR_R_CLASS_NOT_REGISTERED; }
  ZRRESULT QueryClassName(const ZRUUID*, ZRSTR*) override { return ZR_R_CLASS_NOT_REGISTERED; }

 private:
  uint32_t plugIn_;
};

class CZrRegistry {
 public:
  explicit CZrRegistry(const Size& size) {
    for (uint32_t plugIn = 0; plugIn < size.plugIns; ++plugIn) discoveries_.emplace_back(plugIn);
    for (CPlugInDiscovery& discovery : discoveries_) {
      cookies_.push_back(0);
      Require(ZR_SUCCEEDED(ZrAddComponentDiscovery(&discovery, &cookies_.back())), "a discovery is added");
    }
  }
  ~CZrRegistry() { RemoveAll(); }
  CZrRegistry(const CZrRegistry&) = delete;
  CZrRegistry& operator=(const CZrRegistry&) = delete;

  void Create(const ZRUUID& classId) {
    void* object = nullptr;
    Require(ZR_SUCCEEDED(ZrCreateInstance(&classId, 0, &kWidgetInterface, 0, &object)), "a class makes an object");
    static_cast<IZrUnknown*>(object)->Release();
  }

  void Learn(const std::vector<ZRUUID>& classes) {
    for (const ZRUUID& classId : classes) Create(classId);
  }

  void RemoveAll() {
    for (const uint32_t cookie : cookies_) {
      Require(ZR_SUCCEEDED(ZrRemoveComponentDiscovery(cookie)), "a discovery is removed");
    }
    cookies_.clear();
  }

 private:
  CHost host_;
  std::vector<CPlugInDiscovery> discoveries_;
  std::vector<uint32_t> cookies_;
};

// Lookups hold a recursive lock; the factory is called without it.
template <class Map>
class CHandWrittenRegistry {
 public:
  explicit CHandWrittenRegistry(const Size& size) {
    for (uint32_t plugIn = 0; plugIn < size.plugIns; ++plugIn) {
      Map& factories = plugIns_[plugIn];
      for (uint32_t i = 0; i < size.classesEach; ++i) factories.emplace(PlugInClass(plugIn, i), CreateShared);
    }
  }

  void Create(const ZRUUID& classId) {
    void* object = nullptr;
    Require(ZR_SUCCEEDED(Find(classId)(&classId, 0, &kWidgetInterface, 0, &object)), "a class makes an object");
    static_cast<IZrUnknown*>(object)->Release();
  }

  void Learn(const std::vector<ZRUUID>& classes) {
    for (const ZRUUID& classId : classes) known_.emplace(*plugIns_[classId.data2].find(classId));
  }

  void RemoveAll() {
    while (!plugIns_.empty()) {
      std::lock_guard hold(mutex_);
      const auto removed = plugIns_.begin();
      for (const auto& [classId, factory] : removed->second) known_.erase(classId);
      plugIns_.erase(removed);
    }
  }

 private:
  ZrCreateInstanceModuleFunction Find(const ZRUUID& classId) {
    std::lock_guard hold(mutex_);
    if (const auto known = known_.find(classId); known != known_.end()) return known->second;
    for (const auto& [number, factories] : plugIns_) {
      const auto found = factories.find(classId);
      if (found != factories.end()) return known_.emplace(*found).first->second;
    }
    return nullptr;
  }

  std::recursive_mutex mutex_;
  std::map<uint32_t, Map> plugIns_;
  Map known_;
};

using CHashRegistry =
    CHandWrittenRegistry<std::unordered_map<ZRUUID, ZrCreateInstanceModuleFunction, UuidHash, UuidEqual>>;
using CTreeRegistry = CHandWrittenRegistry<std::map<ZRUUID, ZrCreateInstanceModuleFunction, ByteLess>>;

// ---- Rows -----------------------------------------------------------------------------------------------------------

// The first `ofEach` classes of each plug-in, in random order.
static std::vector<ZRUUID> Classes(const Size& size, uint32_t ofEach) {
  std::vector<ZRUUID> classes;
  for (uint32_t plugIn = 0; plugIn < size.plugIns; ++plugIn) {
    for (uint32_t i = 0; i < ofEach; ++i) classes.push_back(PlugInClass(plugIn, i));
  }
  std::shuffle(classes.begin(), classes.end(), std::mt19937(20'011));
  return classes;
}

// A run consists of rounds, each with a new registry. Only `measure` is timed. The reported time is that of a round
// divided by `perRound`. `prepare` and `measure` get the registry and the first `ofEach` classes of each plug-in.
template <class Registry, class Prepare, class Measure>
static void RegistryRow(const std::string& operation, const std::string& library, const Size& size, uint32_t ofEach,
                        uint32_t perRound, uint32_t rounds, Prepare prepare, Measure measure) {
  const std::string sizeText = std::to_string(size.plugIns) + " x " + std::to_string(size.classesEach) + " classes";
  const auto run = [=](benchmark::State& state) {
    const std::vector<ZRUUID> classes = Classes(size, ofEach);
    while (state.KeepRunningBatch(perRound)) {
      state.PauseTiming();
      {
        Registry registry(size);
        prepare(registry, classes);
        state.ResumeTiming();
        measure(registry, classes);
        state.PauseTiming();
      }
      state.ResumeTiming();
    }
  };
  RegisterRow(operation + ", " + sizeText, library, run)->Iterations(perRound * rounds);
}

static constexpr uint32_t kPerRun = 100'000;

template <class Registry>
static void FirstCreationRow(const std::string& library, const Size& size) {
  // Asking a thousand plug-ins takes so long that a run creates only one class of each.
  const bool isSlow = size.plugIns > 100;
  const uint32_t ofEach = isSlow ? 1 : size.classesEach;
  const uint32_t perRound = size.plugIns * ofEach;
  RegistryRow<Registry>(
      "first creation", library, size, ofEach, perRound, isSlow ? 2 : kPerRun / perRound,
      [](Registry&, const std::vector<ZRUUID>&) {},
      [](Registry& registry, const std::vector<ZRUUID>& classes) {
        for (const ZRUUID& classId : classes) registry.Create(classId);
      });
}

// All sizes create objects of equally many classes. If a larger registry also used more classes, the row would show the
// processor's caches rather than the lookup.
template <class Registry>
static void KnownCreationRow(const std::string& library, const Size& size) {
  constexpr uint32_t kUsed = 1000;
  RegistryRow<Registry>("creation, class known", library, size, size.classesEach, kPerRun, 1,
                        std::mem_fn(&Registry::Learn), [](Registry& registry, const std::vector<ZRUUID>& classes) {
                          for (uint32_t i = 0; i < kPerRun; ++i) registry.Create(classes[i % kUsed]);
                        });
}

template <class Registry>
static void RemovalRow(const std::string& library, const Size& size) {
  const uint32_t perRound = size.plugIns * size.classesEach;
  RegistryRow<Registry>("discovery removal, per class", library, size, size.classesEach, perRound, kPerRun / perRound,
                        std::mem_fn(&Registry::Learn),
                        [](Registry& registry, const std::vector<ZRUUID>&) { registry.RemoveAll(); });
}

void ComponentGrowthRows() {
  for (const Size& size : kSizes) {
    FirstCreationRow<CZrRegistry>("ZrCore", size);
    FirstCreationRow<CHashRegistry>("std::unordered_map", size);
    FirstCreationRow<CTreeRegistry>("std::map", size);
  }
  for (const Size& size : kSizes) {
    KnownCreationRow<CZrRegistry>("ZrCore", size);
    KnownCreationRow<CHashRegistry>("std::unordered_map", size);
    KnownCreationRow<CTreeRegistry>("std::map", size);
  }
  for (const Size& size : kSizes) {
    RemovalRow<CZrRegistry>("ZrCore", size);
    RemovalRow<CHashRegistry>("std::unordered_map", size);
    RemovalRow<CTreeRegistry>("std::map", size);
  }
}
