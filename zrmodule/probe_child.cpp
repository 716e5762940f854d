// The child of zrmodule probe: goes through the life of a module. If it can't be loaded or started, the later stages
// are left out.

#include <array>
#include <chrono>
#include <exception>
#include <functional>
#include <string>

#include "zr/library.hpp"
#include "zrmodule/discovery.h"
#include "zrmodule/probe.h"
#include "zrmodule/text.h"

struct StageResult {
  const char* result = "ok";  // "ok", "refused" or "wrong"
  std::string detail;
};

static std::string CodeText(ZRRESULT code) { return zr::Error(code).what(); }

class CProbe {
 public:
  CProbe(std::filesystem::path file, std::intptr_t report) : file_(std::move(file)), report_(report) {}

  void Run(const std::vector<const ZrHostClass*>& classes) {
    if (!Stage("load", "", [&] { return Load(); })) return;
    if (Stage("exports", "", [&] { return FindExports(); })) {
      const uint32_t threads = CountThreads();
      if (Stage("init", "", [&] { return Init(); })) {
        for (const ZrHostClass* const row : classes) TryClass(*row);
        Stage("exit", "", [&] { return Exit(threads); });
      }
    }
    Stage("unload", "", [&] { return Unload(); });
  }

 private:
  // Runs one stage between two reports. An exception is a result like others.
  bool Stage(const char* name, const std::string& className, const std::function<StageResult()>& run) {
    WriteReport(report_, std::string("begin\t") + name + "\t" + Printable(className));
    const std::optional<int64_t> before = BytesInUse();
    const auto start = std::chrono::steady_clock::now();
    StageResult result;
    try {
      result = run();
    } catch (const std::exception& error) {
      result = {"threw", std::string("an exception left the module: ") + error.what()};
    } catch (...) {
      result = {"threw", "an exception that is not a std::exception left the module"};
    }
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    const std::optional<int64_t> after = BytesInUse();
    WriteReport(report_, std::string("end\t") + result.result + "\t" + std::to_string(time.count()) + "\t" +
                             (before && after ? std::to_string(*after - *before) : "") + "\t" +
                             Printable(result.detail));
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
    const uint32_t threads = CountThreads();
    if (threads <= threadsBefore) return {};
    return {"wrong",
            Counted(threads - threadsBefore, "thread") +
                " of the module still ran after ZrExitModule; end and join threads there, because the module's "
                "code is unloaded next"};
  }

  StageResult Unload() {
    if (UnloadModule(module_, file_)) return {};
    return {"wrong",
            "the module is still in memory after it was unloaded; it is kept by a symbol or flag that zrmodule check "
            "names, by a thread_local variable with a destructor, or because the module loaded itself again"};
  }

  void TryClass(const ZrHostClass& row) {
    const std::string name = Utf8(row.name);
    IZrUnknown* object = nullptr;
    if (!Stage("create", name, [&] { return Create(row, object); })) return;
    Stage("query", name, [&] { return Query(row, *object); });
    Stage("release", name, [&] { return Release(*object); });
  }

  StageResult Create(const ZrHostClass& row, IZrUnknown*& object) {
    if (row.interfaceCount == 0)
      return {"wrong", "the manifest lists no interface of the class, so it can't be created"};
    void* made = nullptr;
    const ZRRESULT result = create_(&row.classId, 0, &row.interfaces[0].interfaceId, 0, &made);
    if (zr::Failed(result)) {
      return {"refused", "ZrCreateInstanceModule returned " + CodeText(result) +
                             (result == ZR_R_CLASS_NOT_REGISTERED
                                  ? ": the module does not make this class; compare its identifiers with the manifest"
                                  : "")};
    }
    if (made == nullptr) return {"wrong", "ZrCreateInstanceModule returned a success, but no object"};
    object = static_cast<IZrUnknown*>(made);
    return {};
  }

  // Every interface of the manifest must be there, and one that nothing implements must not.
  static StageResult Query(const ZrHostClass& row, IZrUnknown& object) {
    for (const ZrHostInterface* one = row.interfaces; one != row.interfaces + row.interfaceCount; ++one) {
      const std::string name = *one->name != 0 ? Utf8(one->name) : Utf8(one->interfaceId);
      void* found = nullptr;
      const ZRRESULT result = object.QueryInterface(&one->interfaceId, &found);
      if (zr::Failed(result)) return {"wrong", "QueryInterface for " + name + " returned " + CodeText(result)};
      if (found == nullptr) return {"wrong", "QueryInterface for " + name + " returned a success, but no interface"};
      (void)static_cast<IZrUnknown*>(found)->Release();
    }
    const zr::Uuid random = zr::Uuid::Generate();
    void* found = nullptr;
    if (!zr::Failed(object.QueryInterface(&random, &found))) {
      return {"wrong", "QueryInterface returned a success for an interface that doesn't exist"};
    }
    if (found != nullptr) return {"wrong", "QueryInterface returned a failure, but wrote an interface"};
    return {};
  }

  static StageResult Release(IZrUnknown& object) {
    const uint32_t added = object.AddRef(), released = object.Release();
    const uint32_t left = object.Release();
    if (added != released + 1) return {"ok", "AddRef and Release return no counts, so its end can't be seen"};
    return left == 0 ? StageResult{}
                     : StageResult{"wrong", "the object is not destroyed: " + Counted(left, "reference") +
                                                " remained after the last Release"};
  }

  std::filesystem::path file_;
  std::intptr_t report_;
  void* module_ = nullptr;
  ZrInitModuleFunction init_ = nullptr;
  ZrExitModuleFunction exit_ = nullptr;
  ZrCreateInstanceModuleFunction create_ = nullptr;
};

int RunProbeChild(const std::vector<std::string>& arguments) {
  if (arguments.size() != kChildArguments) return 2;
  const std::filesystem::path module = PathOf(arguments[1]);
  const std::string& className = arguments[2];
  const std::string& folder = arguments[3];
  const std::intptr_t report = ConnectChild(arguments[4], arguments[5]);
  // Modules may use components themselves, so the library is in use and knows the classes of the manifest's folder.
  const zr::Library library;
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery({folder});
  const zr::Registration registration(discovery);
  const auto all = zr::ListHostClasses(*discovery).Value();
  std::vector<const ZrHostClass*> classes;
  std::error_code error;
  for (const ZrHostClass& row : all) {
    const bool isWanted = className.empty() || Utf8(row.name) == className;
    if (isWanted && std::filesystem::equivalent(PathOf(Utf8(row.moduleFile)), module, error)) classes.push_back(&row);
  }
  CProbe(module, report).Run(classes);
  return 0;
}
