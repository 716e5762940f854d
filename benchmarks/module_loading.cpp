// Loading a module: the file is loaded, its functions are looked up, the module is started, creates one object, is
// stopped and unloaded. All libraries except Qt load the same file, and nothing else keeps it loaded.

#include <memory>
#include <string>

#include "component_host.h"

#if BENCH_QT
#include <QPluginLoader>
#include <QString>

#include "modules/qt_plugin.h"
#endif
#if BENCH_GLIB
#include <gmodule.h>
#endif
#if BENCH_POCO
#include <Poco/SharedLibrary.h>
#endif

static bool IsLoaded(const char* path) {
  void* module = dlopen(path, RTLD_LAZY | RTLD_NOLOAD);
  if (module != nullptr) dlclose(module);
  return module != nullptr;
}

struct CNoHost {};

// Registers a row after checking once that `run` really loads the file and unloads it again: a library that keeps the
// file loaded would look fast. `run` must call its argument while its object exists.
template <class Host = CNoHost, class Operation>
static void ColdRow(const std::string& library, const char* path, const Operation& run) {
  {
    [[maybe_unused]] Host host{};
    run([&] { Require(IsLoaded(path), (library + " loads the module").c_str()); });
  }
  Require(!IsLoaded(path), (library + " unloads the module").c_str());
  RowWithin<Host>("module load+unload, cold", library, [run] { run([] {}); });
}

template <class Find, class Meanwhile>
static void UseEntryPoints(Find&& find, Meanwhile&& meanwhile) {
  const ZrModuleEntryPoints entryPoints = FindEntryPoints(find);
  Consume(entryPoints.init());
  IZrUnknown* object = Create(entryPoints.createInstance, WidgetClass(kColdClass));
  meanwhile();
  object->Release();
  entryPoints.exit();
}

void ModuleLoadingRows() {
  auto discovery = std::make_shared<CModuleDiscovery>(BENCH_COLD_MODULE, kColdClass, 1);
  ColdRow<CHost>("ZrCore", BENCH_COLD_MODULE, [discovery](auto meanwhile) {
    uint32_t cookie = 0;
    Consume(ZrAddComponentDiscovery(discovery.get(), &cookie));
    IZrUnknown* object = Create(ZrCreateInstance, WidgetClass(kColdClass));
    meanwhile();
    object->Release();
    Consume(ZrRemoveComponentDiscovery(cookie));
  });
#if BENCH_POCO
  ColdRow("Poco::SharedLibrary", BENCH_COLD_MODULE, [path = std::string(BENCH_COLD_MODULE)](auto meanwhile) {
    Poco::SharedLibrary library;
    library.load(path, Poco::SharedLibrary::SHLIB_LOCAL);
    UseEntryPoints([&library](const char* name) { return library.getSymbol(name); }, meanwhile);
    library.unload();
  });
#endif
#if BENCH_GLIB
  ColdRow("GModule", BENCH_COLD_MODULE, [](auto meanwhile) {
    GModule* module = g_module_open(BENCH_COLD_MODULE, G_MODULE_BIND_LOCAL);
    UseEntryPoints(
        [module](const char* name) {
          gpointer symbol = nullptr;
          g_module_symbol(module, name, &symbol);
          return symbol;
        },
        meanwhile);
    g_module_close(module);
  });
#endif
#if BENCH_QT
  ColdRow("QPluginLoader", BENCH_QT_COLD_PLUGIN, [path = QString::fromUtf8(BENCH_QT_COLD_PLUGIN)](auto meanwhile) {
    QPluginLoader loader(path);
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint);  // the default hints keep the file loaded
    {
      std::unique_ptr<Widget> widget(qobject_cast<WidgetFactory*>(loader.instance())->Create());
      Consume(widget);
      meanwhile();
    }
    loader.unload();
  });
#endif
  ColdRow("lower bound", BENCH_COLD_MODULE, [](auto meanwhile) {
    void* module = dlopen(BENCH_COLD_MODULE, RTLD_NOW | RTLD_LOCAL);
    UseEntryPoints([module](const char* name) { return dlsym(module, name); }, meanwhile);
    dlclose(module);
  });
}
