// The child of zrmodule probe: goes through the life of a module, and stops at the first stage that fails.

#include <chrono>
#include <exception>
#include <functional>
#include <string>
#include <thread>

#include "zrmodule/kit_list.h"
#include "zrmodule/output.h"
#include "zrmodule/probe.h"

// What a stage found. An empty result means "ok".
struct StageResult {
  const char* result = "ok";   // "ok", "refused" or "wrong"
  std::string detail;
};

static std::string CodeText(ZRRESULT code) { return zr::Error(code).what(); }

class CProbe {
 public:
  CProbe(std::filesystem::path file, std::intptr_t report) : file_(std::move(file)), report_(report) {}

  // Goes through all stages, for the given classes. Returns whether every stage was good.
  bool Run(const std::vector<const ZrHostClass*>& classes) {
    if (!Stage("load", "", [&] { return Load(); })) return false;
    if (!Stage("exports", "", [&] { return FindExports(); })) return false;
    const uint32_t threads = CountThreads();
    bool isGood = Stage("init", "", [&] { return Init(); });
    if (isGood) {
      for (const ZrHostClass* row : classes) isGood = TryClass(*row) && isGood;
      isGood = Stage("exit", "", [&] { return Exit(threads); }) && isGood;
    }
    return Stage("unload", "", [&] { return Unload(); }) && isGood;
  }

 private:
  // Runs one stage between two reports. An exception is a result like others.
  bool Stage(const char* name, const std::string& className, const std::function<StageResult()>& run) {
    WriteReport(report_, Json{{"begin", name}, {"class", className}}.dump());
    const int64_t bytes = BytesInUse();
    const auto start = std::chrono::steady_clock::now();
    StageResult result;
    try {
      result = run();
    } catch (const std::exception& error) {
      result = {"threw", std::string("an exception left the module: ") + error.what()};
    } catch (...) {
      result = {"threw", "an exception of an unknown type left the module"};
    }
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    WriteReport(report_, Json{{"end", name},
                              {"result", result.result},
                              {"milliseconds", time.count()},
                              {"bytes", BytesInUse() - bytes},
                              {"detail", result.detail}}
                             .dump(-1, ' ', false, Json::error_handler_t::replace));
    return std::string("ok") == result.result;
  }

  StageResult Load() {
    std::string reason;
    module_ = LoadModule(file_, reason);
    return module_ != nullptr ? StageResult{} : StageResult{"refused", reason};
  }

  StageResult FindExports() {
    init_ = reinterpret_cast<ZrInitModuleFunction>(FindSymbol(module_, "ZrInitModule"));
    exit_ = reinterpret_cast<ZrExitModuleFunction>(FindSymbol(module_, "ZrExitModule"));
    create_ = reinterpret_cast<ZrCreateInstanceModuleFunction>(FindSymbol(module_, "ZrCreateInstanceModule"));
    std::string missing;
    if (init_ == nullptr) missing += " ZrInitModule";
    if (exit_ == nullptr) missing += " ZrExitModule";
    if (create_ == nullptr) missing += " ZrCreateInstanceModule";
    return missing.empty() ? StageResult{} : StageResult{"wrong", "does not export" + missing};
  }

  StageResult Init() {
    const ZRRESULT result = init_();
    return zr::Failed(result) ? StageResult{"refused", "ZrInitModule returned " + CodeText(result)} : StageResult{};
  }

  StageResult Exit(uint32_t threadsBefore) {
    exit_();
    for (int wait = 0; wait < 20 && CountThreads() > threadsBefore; ++wait) {   // a thread that ends needs a moment
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const uint32_t threads = CountThreads();
    if (threads <= threadsBefore) return {};
    return {"wrong", std::to_string(threads - threadsBefore) +
                         " threads of the module still run after ZrExitModule; they crash when the module is unloaded"};
  }

  StageResult Unload() {
    if (UnloadModule(module_, file_)) return {};
    return {"wrong", "the code of the module is still in memory after it was unloaded"};
  }

  bool TryClass(const ZrHostClass& row) {
    const std::string name = Utf8(row.name);
    IZrUnknown* object = nullptr;
    if (!Stage("create", name, [&] { return Create(row, object); })) return false;
    const bool isGood = Stage("query", name, [&] { return Query(row, *object); });
    return Stage("release", name, [&] { return Release(*object); }) && isGood;
  }

  StageResult Create(const ZrHostClass& row, IZrUnknown*& object) {
    if (row.interfaceCount == 0) return {"wrong", "the manifest lists no interface of the class, so it can't be tried"};
    void* made = nullptr;
    const ZRRESULT result = create_(&row.classId, 0, &row.interfaces[0].interfaceId, 0, &made);
    if (zr::Failed(result)) return {"refused", "ZrCreateInstanceModule returned " + CodeText(result)};
    if (made == nullptr) return {"wrong", "ZrCreateInstanceModule returned a success, but no object"};
    object = static_cast<IZrUnknown*>(made);
    return {};
  }

  // Every interface of the manifest must be there, and one that nobody has must not.
  StageResult Query(const ZrHostClass& row, IZrUnknown& object) {
    for (const ZrHostInterface* one = row.interfaces; one != row.interfaces + row.interfaceCount; ++one) {
      const std::string name = *one->name != 0 ? Utf8(one->name) : Utf8(one->interfaceId);
      void* found = nullptr;
      const ZRRESULT result = object.QueryInterface(&one->interfaceId, &found);
      if (zr::Failed(result)) return {"wrong", "QueryInterface for " + name + " returned " + CodeText(result)};
      if (found == nullptr) return {"wrong", "QueryInterface for " + name + " returned a success, but no interface"};
      (void)static_cast<IZrUnknown*>(found)->Release();
    }
    const zr::Uuid nobodys = zr::Uuid::Generate();
    void* found = nullptr;
    if (!zr::Failed(object.QueryInterface(&nobodys, &found))) {
      return {"wrong", "QueryInterface returned a success for an interface that doesn't exist"};
    }
    if (found != nullptr) return {"wrong", "QueryInterface returned a failure, but wrote an interface"};
    return {};
  }

  static StageResult Release(IZrUnknown& object) {
    const uint32_t added = object.AddRef(), released = object.Release();
    if (added != 2 || released != 1) {
      return {"wrong", "a new object should have one reference; AddRef returned " + std::to_string(added) +
                           " and Release " + std::to_string(released)};
    }
    const uint32_t left = object.Release();
    return left == 0 ? StageResult{} : StageResult{"wrong", "the last Release returned " + std::to_string(left)};
  }

  std::filesystem::path file_;
  std::intptr_t report_;
  void* module_ = nullptr;
  ZrInitModuleFunction init_ = nullptr;
  ZrExitModuleFunction exit_ = nullptr;
  ZrCreateInstanceModuleFunction create_ = nullptr;
};

int RunProbeChild(const std::filesystem::path& module, const std::string& className, std::intptr_t report) {
  // Modules may use components themselves, so the library is in use and knows the classes of the module's folder.
  const zr::Library library;
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery({module.parent_path().string()}, "");
  const zr::Registration registration(*discovery);
  const CKitList<ZrHostClass> all(*discovery, ZrHostListClasses);
  std::vector<const ZrHostClass*> classes;
  std::error_code error;
  for (const ZrHostClass& row : all) {
    const bool isWanted = className.empty() || Utf8(row.name) == className;
    if (isWanted && std::filesystem::equivalent(Utf8(row.moduleFile), module, error)) classes.push_back(&row);
  }
  CProbe probe(module, report);
  (void)probe.Run(classes);
  return 0;
}
