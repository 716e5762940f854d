// Finding modules in a folder: how long it takes to list all classes, and to look up one of them.
//
// The host kit reads a manifest beside each module. A scan without manifests must load each module and ask it for its
// classes, which runs the module's code. The scans keep the same two maps as the kit, by identifier and by name. All
// files are in the system's cache.
//
// A lookup in the kit takes its lock, shares the newest state, and gives a string. It may grow by the logarithm of the
// number of classes. The peers are the maps that a user would write, with a lock.

#include "row.h"

#if BENCH_HOSTKIT
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "component_host.h"
#include "modules/listing_module.h"
#include "zr/zr.hpp"
#include "zrhost/host.h"
#if BENCH_GLIB
#include <gmodule.h>
#endif

static std::string ListedName(uint32_t module, uint32_t index) {
  return "Benchmark.Module" + std::to_string(module) + ".Class" + std::to_string(index);
}

// ---- Folders --------------------------------------------------------------------------------------------------------

struct Size {
  uint32_t modules, classesEach;
};

static std::string TextOf(const Size& size) {
  return std::to_string(size.modules) + " modules x " + std::to_string(size.classesEach);
}

// A folder of modules with their manifests, made when a row first needs it and removed at the end of the program.
class CModuleFolder {
 public:
  explicit CModuleFolder(const Size& size)
      : path_(std::filesystem::temp_directory_path() /
              ("zrcore_benchmarks_" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directories(path_);
    for (uint32_t module = 0; module < size.modules; ++module) {
      const std::string name = NameOf(module);
      std::filesystem::copy_file(BENCH_LISTING_MODULE, path_ / name);  // a link would be loaded only once
      std::ofstream manifest(path_ / (name + ".zrmodule"));
      manifest << "{\n  \"schema\": 1,\n  \"module\": \"" << name << "\",\n  \"version\": \"1.0\",\n  \"classes\": [";
      for (uint32_t index = 0; index < size.classesEach; ++index) {
        const std::string id = zr::Uuid(ListedClass(module, index)).ToString().ToUtf8().substr(1, 36);
        manifest << (index == 0 ? "\n" : ",\n") << "    {\n      \"id\": \"" << id << "\",\n      \"name\": \""
                 << ListedName(module, index) << "\"\n    }";
      }
      manifest << "\n  ]\n}\n";
      Require(manifest.good(), "a manifest is written");
    }
  }
  CModuleFolder(const CModuleFolder&) = delete;
  CModuleFolder& operator=(const CModuleFolder&) = delete;
  ~CModuleFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  static std::string NameOf(uint32_t module) { return "module" + std::to_string(module) + ".so"; }

 private:
  std::filesystem::path path_;
};

// Owns what the rows of one size share. Nothing is made until a row runs.
template <class Made>
class CLazy {
 public:
  explicit CLazy(const Size& size) : size_(size) {}
  Made& Get() {
    if (!made_) made_ = std::make_unique<Made>(size_);
    return *made_;
  }

 private:
  Size size_;
  std::unique_ptr<Made> made_;
};

static zr::Ptr<IZrComponentDiscovery> Discover(const CModuleFolder& folder) {
  const zr::String text = zr::String::FromUtf8(folder.Path().string()).Value();
  const WCHAR* const path = text.Get();
  zr::Ptr<IZrComponentDiscovery> discovery;
  Require(ZrHostCreateFolderDiscovery(&path, 1, nullptr, 0, discovery.Put()) == ZR_R_OK, "a folder is read");
  return discovery;
}

// ---- All classes ----------------------------------------------------------------------------------------------------

struct Scan {
  std::map<ZRUUID, std::string, ByteLess> byId;
  std::map<std::string, ZRUUID> byName;

  static void Add(void* context, const ZRUUID* classId, const char* name) {
    auto& scan = *static_cast<Scan*>(context);
    if (scan.byName.try_emplace(name, *classId).second) scan.byId.try_emplace(*classId, name);
  }
};

// Registers a row whose folder is made before the measured loop.
template <class Operation>
static void FolderRow(const std::string& operation, const std::string& library,
                      const std::shared_ptr<CLazy<CModuleFolder>>& folder, Operation run) {
  RegisterRow(operation, library, [folder, run](benchmark::State& state) {
    const CModuleFolder& own = folder->Get();
    for (auto _ : state) run(own);
  });
}

static void ListRows(const Size& size) {
  const std::string operation = "list classes of " + TextOf(size);
  const auto folder = std::make_shared<CLazy<CModuleFolder>>(size);
  const uint32_t expected = size.modules * size.classesEach;
  FolderRow(operation, "ZrCore", folder, [expected](const CModuleFolder& own) {
    const zr::Ptr<IZrComponentDiscovery> discovery = Discover(own);
    ZrHostClass* classes = nullptr;
    uint32_t count = 0;
    Require(ZrHostListClasses(discovery.Get(), &classes, &count) == ZR_R_OK && count == expected, "all are listed");
    Consume(classes);
    ZrHostDestroyList(classes);
  });
  const auto scanRow = [&](const std::string& library, auto load, auto find, auto unload) {
    FolderRow(operation, library, folder, [=](const CModuleFolder& own) {
      Scan scan;
      for (uint32_t module = 0; module < size.modules; ++module) {
        auto* const loaded = load((own.Path() / CModuleFolder::NameOf(module)).c_str());
        Require(loaded != nullptr, "a module is loaded");
        reinterpret_cast<ListClassesFunction>(find(loaded, "ListClasses"))(module, size.classesEach, Scan::Add, &scan);
        unload(loaded);
      }
      Require(scan.byId.size() == expected, "all are found");
      Consume(scan);
    });
  };
#if BENCH_GLIB
  scanRow(
      "GModule", [](const char* path) { return g_module_open(path, G_MODULE_BIND_LOCAL); },
      [](GModule* module, const char* name) {
        gpointer symbol = nullptr;
        g_module_symbol(module, name, &symbol);
        return symbol;
      },
      g_module_close);
#endif
  scanRow(
      "dlopen", [](const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }, dlsym, dlclose);
}

// ---- One class ------------------------------------------------------------------------------------------------------

static constexpr uint32_t kAsked =
    1000;  // the same number for all sizes, so that the caches of the processor count less

// Identifiers and names of some classes, in random order.
struct Asked {
  std::vector<ZRUUID> ids;
  std::vector<zr::String> names;

  explicit Asked(const Size& size) {
    std::mt19937 random(20'011);
    for (uint32_t asked = 0; asked < kAsked; ++asked) {
      const uint32_t module = static_cast<uint32_t>(random()) % size.modules;
      const uint32_t index = static_cast<uint32_t>(random()) % size.classesEach;
      ids.push_back(ListedClass(module, index));
      names.push_back(zr::String::FromUtf8(ListedName(module, index)).Value());
    }
  }
};

struct KitLookup : Asked {
  explicit KitLookup(const Size& size) : Asked(size), folder(size), discovery(Discover(folder)) {}

  CModuleFolder folder;
  zr::Ptr<IZrComponentDiscovery> discovery;
};

template <template <class...> class Map, class... More>
struct MapLookup : Asked {
  explicit MapLookup(const Size& size) : Asked(size) {
    for (uint32_t module = 0; module < size.modules; ++module) {
      const zr::String path = zr::String::FromUtf8("/modules/" + CModuleFolder::NameOf(module)).Value();
      for (uint32_t index = 0; index < size.classesEach; ++index) {
        byId.emplace(ListedClass(module, index), path);
        byName.emplace(zr::String::FromUtf8(ListedName(module, index)).Value(), ListedClass(module, index));
      }
    }
  }

  std::mutex mutex;
  Map<ZRUUID, zr::String, More...> byId;
  Map<zr::String, ZRUUID> byName;
};

// Registers the rows of one library. `byId` and `byName` look up one of the classes.
template <class Lookup, class ById, class ByName>
static void LookupRows(const std::string& library, const Size& size, ById byId, ByName byName) {
  const std::string classes = ", " + std::to_string(size.modules * size.classesEach) + " classes in a folder";
  auto lookup = std::make_shared<CLazy<Lookup>>(size);
  const auto row = [&](const std::string& operation, auto find) {
    RegisterRow(operation + classes, library, [lookup, find](benchmark::State& state) {
      Lookup& own = lookup->Get();
      uint32_t at = 0;
      for (auto _ : state) {
        find(own, at);
        at = at + 1 < kAsked ? at + 1 : 0;
      }
    });
  };
  row("module of a class", byId);
  row("class name to identifier", byName);
}

template <class Lookup>
static void MapRows(const std::string& library, const Size& size) {
  LookupRows<Lookup>(
      library, size,
      [](Lookup& own, uint32_t at) {
        const std::lock_guard hold(own.mutex);
        const zr::String path = own.byId.find(own.ids[at])->second;
        Consume(path);
      },
      [](Lookup& own, uint32_t at) {
        const std::lock_guard hold(own.mutex);
        const ZRUUID id = own.byName.find(own.names[at])->second;
        Consume(id);
      });
}

void HostKitRows() {
  for (const Size& size : {Size{1000, 1}, Size{1000, 100}}) ListRows(size);
  for (const Size& size : {Size{10, 100}, Size{100, 100}, Size{1000, 100}}) {
    LookupRows<KitLookup>(
        "ZrCore", size,
        [](KitLookup& own, uint32_t at) {
          zr::String path;
          ZrModuleEntryPoints none = {};
          Require(own.discovery->QueryComponent(&own.ids[at], path.Put(), &none) == ZR_R_OK, "a class is found");
          Consume(path);
        },
        [](KitLookup& own, uint32_t at) {
          ZRUUID id;
          Require(own.discovery->QueryClassId(own.names[at].Get(), &id) == ZR_R_OK, "a name is found");
          Consume(id);
        });
    MapRows<MapLookup<std::unordered_map, UuidHash, UuidEqual>>("std::unordered_map", size);
    MapRows<MapLookup<std::map, ByteLess>>("std::map", size);
  }
}
#else
void HostKitRows() {}
#endif
