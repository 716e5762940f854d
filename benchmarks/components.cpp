// The two most frequent calls of a host: looking up the identifier of a class name, and creating an object of a module
// that is already loaded and started.
//
// Peers do less: they look up one name, or use a factory that they keep. The component system checks that it is open,
// takes the lock of its registry, looks up the class, its module and the module's record of the class, and keeps both
// alive during the call.

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "component_host.h"

#if BENCH_QT
#include <QHash>
#include <QPluginLoader>
#include <QRecursiveMutex>
#include <QString>
#include <QUuid>

#include "modules/qt_plugin.h"
#endif
#if BENCH_POCO
#include <Poco/ClassLoader.h>

#include "modules/poco_name.h"
#endif
#if BENCH_GLIB
#include <glib-object.h>
#endif

// ---- Class names ----------------------------------------------------------------------------------------------------

// The cache that a user would write: a map, protected by a recursive lock.
template <class Map>
static void NameMapRow(const std::string& library) {
  struct Cache {
    std::recursive_mutex mutex;
    Map map;
  };
  auto cache = std::make_shared<Cache>();
  for (uint32_t i = 0; i < kClassCount; ++i) cache->map.emplace(WidgetName(i), WidgetClass(i));

  Row("class name to identifier, cached", library, [cache, name = WidgetName(kMeasuredClass)] {
    std::lock_guard hold(cache->mutex);
    const ZRUUID found = cache->map.find(name)->second;
    Consume(found);
  });
}

struct TextLess {
  bool operator()(const std::u16string& left, const std::u16string& right) const {
    const std::size_t common = std::min(left.size(), right.size());
    const int order = std::memcmp(left.data(), right.data(), common * sizeof(char16_t));
    return order != 0 ? order < 0 : left.size() < right.size();
  }
};

static void NameRows() {
  const std::string operation = "class name to identifier, cached";
  std::shared_ptr<WCHAR> name = MakeZrString(WidgetName(kMeasuredClass));

  RowWithin<CWidgetHost>(operation, "ZrCore", [name] {
    ZRUUID found;
    Consume(ZrCLSIDFromClassName(name.get(), &found));
    Consume(found);
  });
  NameMapRow<std::unordered_map<std::u16string, ZRUUID>>("std::unordered_map");
  NameMapRow<std::map<std::u16string, ZRUUID>>("std::map");
#if BENCH_QT
  struct Cache {
    QRecursiveMutex mutex;
    QHash<QString, QUuid> hash;
  };
  auto cache = std::make_shared<Cache>();
  for (uint32_t i = 0; i < kClassCount; ++i) {
    const ZRUUID id = WidgetClass(i);
    cache->hash.insert(QString::fromStdU16String(WidgetName(i)),
                       QUuid(id.data1, id.data2, id.data3, id.data4[0], id.data4[1], id.data4[2], id.data4[3],
                             id.data4[4], id.data4[5], id.data4[6], id.data4[7]));
  }
  Row(operation, "QHash", [cache, text = QString::fromStdU16String(WidgetName(kMeasuredClass))] {
    cache->mutex.lock();
    const QUuid found = cache->hash.value(text);
    cache->mutex.unlock();
    Consume(found);
  });
#endif
  NameMapRow<std::map<std::u16string, ZRUUID, TextLess>>("lower bound");
}

// ---- Objects --------------------------------------------------------------------------------------------------------

static const std::string kObject = "object create+release, warm";

// A module file that is loaded and started without the component system.
class CModule {
 public:
  explicit CModule(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
    Require(handle_ != nullptr, "a module file is loaded");
    entryPoints_ = FindEntryPoints([this](const char* name) { return dlsym(handle_, name); });
    Require(ZR_SUCCEEDED(entryPoints_.init()), "a module starts");
  }
  ~CModule() {
    entryPoints_.exit();
    dlclose(handle_);
  }
  CModule(const CModule&) = delete;
  CModule& operator=(const CModule&) = delete;

  void Use(const ZRUUID& classId) const { Create(entryPoints_.createInstance, classId)->Release(); }

 private:
  void* handle_;
  ZrModuleEntryPoints entryPoints_{};
};

// The registry that a user would write: a map of shared modules, protected by a recursive lock.
template <class Map>
static void ObjectMapRow(const std::string& library, const std::shared_ptr<CModule>& module) {
  struct Registry {
    std::recursive_mutex mutex;
    Map map;
  };
  auto registry = std::make_shared<Registry>();
  for (uint32_t i = 0; i < kClassCount; ++i) registry->map.emplace(WidgetClass(i), module);

  Row(kObject, library, [registry, id = WidgetClass(kMeasuredClass)] {
    std::shared_ptr<CModule> found;
    {
      std::lock_guard hold(registry->mutex);
      found = registry->map.find(id)->second;
    }
    found->Use(id);
  });
}

// What the contract requires for one creation: two recursive locks, a start mutex, three maps, three shared pointers,
// and the call.
class CContractLowerBound {
 public:
  explicit CContractLowerBound(const std::shared_ptr<CModule>& module) {
    discoveries_.emplace(1u, std::make_shared<uint32_t>(1));
    for (uint32_t i = 0; i < kClassCount; ++i) {
      components_.emplace(WidgetClass(i), std::make_shared<Component>(Component{1, module}));
      recorded_.emplace(WidgetClass(i), true);
    }
  }

  void Use(const ZRUUID& classId) {
    {
      std::lock_guard hold(lifecycle_);
      Consume(open_);
    }
    std::shared_ptr<Component> component;
    std::shared_ptr<uint32_t> discovery;
    std::shared_ptr<CModule> module;
    {
      std::lock_guard hold(registry_);
      component = components_.find(classId)->second;
      discovery = discoveries_.find(component->cookie)->second;
      module = component->module;
    }
    {
      std::lock_guard hold(start_);
      Consume(recorded_.find(classId)->second);
    }
    module->Use(classId);
  }

 private:
  struct Component {
    uint32_t cookie;
    std::shared_ptr<CModule> module;
  };

  std::recursive_mutex lifecycle_, registry_;
  std::mutex start_;
  bool open_ = true;
  std::map<uint32_t, std::shared_ptr<uint32_t>> discoveries_;
  std::map<ZRUUID, std::shared_ptr<Component>, ByteLess> components_;
  std::map<ZRUUID, bool, ByteLess> recorded_;
};

#if BENCH_GLIB
static void GObjectRow() {
  GTypeInfo info{};
  info.class_size = sizeof(GObjectClass);
  info.instance_size = sizeof(GObject);
  const auto typeName = [](uint32_t index) { return "BenchmarkWidget" + std::to_string(index); };
  for (uint32_t i = 0; i < kClassCount; ++i) {
    g_type_register_static(G_TYPE_OBJECT, typeName(i).c_str(), &info, G_TYPE_FLAG_NONE);
  }

  Row(kObject, "GObject", [name = typeName(kMeasuredClass)] {
    gpointer object = g_object_new(g_type_from_name(name.c_str()), nullptr);
    Consume(object);
    g_object_unref(object);
  });
}
#endif

#if BENCH_POCO
static void PocoRow() {
  using Loader = Poco::ClassLoader<Widget>;
  std::shared_ptr<Loader> loader(new Loader, [](Loader* owned) {
    owned->unloadLibrary(BENCH_POCO_CLASSES);
    delete owned;
  });
  loader->loadLibrary(BENCH_POCO_CLASSES);
  Row(kObject, "Poco::ClassLoader", [loader, name = PocoName(kMeasuredClass)] {
    std::unique_ptr<Widget> widget(loader->create(name));
    Consume(widget);
  });
}
#endif

#if BENCH_QT
static void QtRows() {
  auto loader = std::make_shared<QPluginLoader>(QString::fromUtf8(BENCH_QT_PLUGIN));
  auto* factory = qobject_cast<WidgetFactory*>(loader->instance());
  Require(factory != nullptr, "a Qt plug-in makes its factory");

  Row(kObject, "QPluginLoader", [loader] {
    std::unique_ptr<Widget> widget(qobject_cast<WidgetFactory*>(loader->instance())->Create());
    Consume(widget);
  });
  Row(kObject, "QPluginLoader (factory kept)", [loader, factory] {
    std::unique_ptr<Widget> widget(factory->Create());
    Consume(widget);
  });
}
#endif

static void ObjectRows() {
  const ZRUUID id = WidgetClass(kMeasuredClass);
  RowWithin<CWidgetHost>(kObject, "ZrCore", [id] {
    void* object = nullptr;
    Consume(ZrCreateInstance(&id, 0, &kWidgetInterface, 0, &object));
    static_cast<IZrUnknown*>(object)->Release();
  });

  auto module = std::make_shared<CModule>(BENCH_WARM_MODULE);
  ObjectMapRow<std::unordered_map<ZRUUID, std::shared_ptr<CModule>, UuidHash, UuidEqual>>("std::unordered_map", module);
  ObjectMapRow<std::map<ZRUUID, std::shared_ptr<CModule>, ByteLess>>("std::map", module);
#if BENCH_POCO
  PocoRow();
#endif
#if BENCH_QT
  QtRows();
#endif
#if BENCH_GLIB
  GObjectRow();
#endif
  Row(kObject, "lower bound", [module, id] { module->Use(id); });
  Row(kObject, "lower bound by contract",
      [bound = std::make_shared<CContractLowerBound>(module), id] { bound->Use(id); });
}

void ComponentRows() {
  NameRows();
  ObjectRows();
}
