// Loads, starts, uses, stops and unloads the code of one assembly. module_assembly.h draws the states.
//
// The life of a module file, and the function that makes each step:
//
//     first creation      Load                 PlatformLoadModule, look up the three exports
//                         Start                ZrInitModule
//     every creation      LoadAndCreate        ZrCreateInstanceModule, record the class
//     discovery removed   Exit, then Forget    ZrExitModule; release the handle when the last class is forgotten
//     shutdown            Exit, then Unload    ZrExitModule; release the handle
//
// A mutex is held for single steps only. Between two steps another thread may load, start, stop or unload the same
// assembly, so each step reads the state anew.

#include "components/module_assembly.h"

#include <string_view>
#include <utility>

#include "platform/debug_output.h"
#include "runtime/result.h"
#include "text/code_units.h"

// ---- Diagnostics ---------------------------------------------------------------------------------------------------

static constexpr auto kLoadFailed = WideLiteral("ZrCore: LoadLibrary failed. Path: \"");
static constexpr auto kReason = WideLiteral("\". Error message: \"");
static constexpr auto kReasonEnd = WideLiteral("\"\r\n");
static constexpr auto kNotInitialized = WideLiteral("ZrCore: Could Not Initialize Component. Path: \"");
static constexpr auto kNotExported = WideLiteral(
    "\". One or more of the functions \"ZrInitModule\", \"ZrExitModule\", \"ZrCreateInstanceModule\" are not "
    "exported correctly.\r\n");

// Sends the pieces as one text. If there is no memory for the text, it is lost: an exception here would replace the
// result code that the caller is about to return.
template <class... Pieces>
static void Report(const Pieces&... pieces) noexcept {
  try {
    CModulePath text;
    (text.append(pieces), ...);
    PlatformDebugOutput(text);
  } catch (...) {
  }
}

// ---- Creation ------------------------------------------------------------------------------------------------------

CComponentAssembly::~CComponentAssembly() { Unload(); }

ZRRESULT CComponentAssembly::CreateInstance(const ZRUUID& classId, uint64_t argument1, const ZRUUID& interfaceId,
                                            uint64_t argument2, void** object) noexcept {
  return Guarded(ZR_R_UNEXPECTED, [&] { return LoadAndCreate(classId, argument1, interfaceId, argument2, object); });
}

// The class is recorded only after the module has made an object. So an assembly is unloaded when the last class of
// which an object was made is removed; classes that were only looked up don't keep it.
ZRRESULT CComponentAssembly::LoadAndCreate(const ZRUUID& classId, uint64_t argument1, const ZRUUID& interfaceId,
                                           uint64_t argument2, void** object) {
  Snapshot snapshot = TakeSnapshot(classId);
  if (snapshot.createInstance == nullptr) {
    if (key_.path.empty()) return ZR_R_FAILED;
    if (const ZRRESULT result = Load(); Failed(result)) return result;
    snapshot = TakeSnapshot(classId);
  }
  // A start that is over needs no lock. Both flags must be tested: startReturned_ may be true from an earlier start
  // after the module has been stopped, and started_ is true while ZrInitModule still runs in another thread.
  if (!started_.load(std::memory_order_acquire) || !startReturned_.load(std::memory_order_acquire)) {
    if (const ZRRESULT result = Start(); Failed(result)) return result;
    snapshot = TakeSnapshot(classId);
  }
  if (snapshot.createInstance == nullptr) return ZR_R_NOT_SUPPORTED;  // unloaded by a refused start in another thread

  // The entry for the record is allocated before the call. After the module has made an object, running out of memory
  // would leak it. One case remains: a recorded class that Forget removes during the call gets its entry afterwards.
  // Then out of memory is reported as a failure although the module has made an object.
  ClassMap entry;
  if (!snapshot.isRecorded) entry.emplace(classId, classId);

  const ZRUUID lentClassId = classId, lentInterfaceId = interfaceId;
  const ZRRESULT result = snapshot.createInstance(&lentClassId, argument1, &lentInterfaceId, argument2, object);
  if (Failed(result)) return result;

  if (snapshot.isRecorded && forgotten_.load(std::memory_order_acquire) == snapshot.forgotten) return result;
  if (entry.empty()) entry.emplace(lentClassId, lentClassId);
  const CLockGuard hold(stateMutex_);
  classes_.merge(entry);
  return result;
}

CComponentAssembly::Snapshot CComponentAssembly::TakeSnapshot(const ZRUUID& classId) {
  const CLockGuard hold(stateMutex_);
  return {entryPoints_.createInstance, forgotten_.load(std::memory_order_relaxed), classes_.contains(classId)};
}

// Loads the module file and stores its three functions. Runs without any lock, because loading runs static constructors
// of the module, which may make callbacks.
ZRRESULT CComponentAssembly::Load() {
  CModulePath reason;
  ModuleHandle module = PlatformLoadModule(key_.path.c_str(), reason);
  if (module == nullptr) {
    if (!reason.empty()) Report(ViewOf(kLoadFailed), key_.path, ViewOf(kReason), reason, ViewOf(kReasonEnd));
    return ZR_R_FILE_NOT_FOUND;
  }
  ZrModuleEntryPoints found;
  found.init = reinterpret_cast<ZrInitModuleFunction>(PlatformFindFunction(module, "ZrInitModule"));
  found.exit = reinterpret_cast<ZrExitModuleFunction>(PlatformFindFunction(module, "ZrExitModule"));
  found.createInstance =
      reinterpret_cast<ZrCreateInstanceModuleFunction>(PlatformFindFunction(module, "ZrCreateInstanceModule"));
  if (found.init == nullptr || found.exit == nullptr || found.createInstance == nullptr) {
    Report(ViewOf(kNotInitialized), key_.path, ViewOf(kNotExported));
    PlatformReleaseModule(module);
    return ZR_R_INVALID_SYSTEM;
  }
  {
    // Two threads may have loaded the module at the same time. Then the assembly keeps the later handle, and the swap
    // returns the earlier one, which is released below.
    const CLockGuard hold(stateMutex_);
    std::swap(module_, module);
    entryPoints_ = found;
  }
  PlatformReleaseModule(module);
  return ZR_R_OK;
}

// Calls ZrInitModule once, however many threads create the first object at the same time.
//
// startReturned_ must become false before started_ becomes true. In the other order, a creation in between could see
// both flags true, the second one from an earlier start, and use the module before ZrInitModule has run.
//
// started_ stays true if ZrInitModule refuses or throws, so that it is not called again. The next creation then finds
// started_ true here and uses the module. The contract fixes this.
ZRRESULT CComponentAssembly::Start() {
  ModuleHandle refused = nullptr;
  {
    const CLockGuard hold(startMutex_);
    if (started_.load(std::memory_order_acquire)) return ZR_R_OK;
    startReturned_.store(false, std::memory_order_release);
    started_.store(true, std::memory_order_release);
    ZrInitModuleFunction init = nullptr;
    {
      const CLockGuard holdState(stateMutex_);
      init = entryPoints_.init;
    }
    if (init == nullptr || !Failed(init())) {
      startReturned_.store(true, std::memory_order_release);
      return ZR_R_OK;
    }
    // Detached before startMutex_ is left: a creation that waits for it must not find functions of a module that is
    // about to be released. Released after it is left, because module code runs then.
    refused = DetachModule();
  }
  PlatformReleaseModule(refused);
  return ZR_R_NOT_SUPPORTED;
}

// ---- Stopping and unloading ----------------------------------------------------------------------------------------

// One call of ZrExitModule. It keeps the module mapped until the call has returned.
//
// DetachModule may run during the call, in a callback. It then hands the module's handle to this object instead of
// releasing it, and the destructor releases the handle:
//
//     Exit -> CExitCall::Run -> ZrExitModule -> callback that unloads -> DetachModule -> HandOver
//     ~CExitCall releases the handle, after ZrExitModule has returned
//
// If ZrExitModule throws, the exception object may need code of the module, such as its destructor. Then the handle
// goes back to the assembly, so the module stays loaded. If the assembly has loaded it anew meanwhile, the handle
// leaks.
//
// Calls nest: a callback may start the module anew and stop it again. outer_ links a call to the call that it runs in.
class CComponentAssembly::CExitCall {
 public:
  explicit CExitCall(CComponentAssembly& assembly) : assembly_(assembly) {
    const CLockGuard hold(assembly_.stateMutex_);
    entryPoints_ = assembly_.entryPoints_;
    module_ = assembly_.module_;
    outer_ = std::exchange(assembly_.innermostExit_, this);
  }
  CExitCall(const CExitCall&) = delete;
  CExitCall& operator=(const CExitCall&) = delete;
  ~CExitCall() {
    {
      const CLockGuard hold(assembly_.stateMutex_);
      assembly_.innermostExit_ = outer_;
      if (ownsModule_ && !hasReturned_ && assembly_.module_ == nullptr) {
        assembly_.module_ = module_;
        assembly_.entryPoints_ = entryPoints_;
      }
    }
    if (ownsModule_ && hasReturned_) PlatformReleaseModule(module_);
  }

  void Run() {
    if (entryPoints_.exit != nullptr) entryPoints_.exit();
    hasReturned_ = true;
  }

  // Hands a handle on `module` to the outermost call of that module that has no handle yet; returns false if there is
  // no such call. The outermost call returns last, so the module stays mapped for all calls inside it. A module that
  // was loaded twice has two handles with the same value, and one handle per call is enough. Requires the state mutex.
  static bool HandOver(CExitCall* innermost, ModuleHandle module) noexcept {
    CExitCall* receiver = nullptr;
    for (CExitCall* call = innermost; call != nullptr; call = call->outer_) {
      if (call->module_ == module && !call->ownsModule_) receiver = call;
    }
    if (receiver == nullptr) return false;
    receiver->ownsModule_ = true;
    return true;
  }

 private:
  CComponentAssembly& assembly_;
  CExitCall* outer_ = nullptr;
  ZrModuleEntryPoints entryPoints_{};
  ModuleHandle module_ = nullptr;
  bool ownsModule_ = false;
  bool hasReturned_ = false;
};

// started_ is cleared before the call, so a callback that creates an object starts the module anew.
void CComponentAssembly::Exit() {
  if (!started_.exchange(false, std::memory_order_acq_rel)) return;
  CExitCall call(*this);
  call.Run();
}

// Without a path, the entry points came from the discovery and are all that the assembly has, so they are kept.
ModuleHandle CComponentAssembly::DetachModule() noexcept {
  const CLockGuard hold(stateMutex_);
  if (!key_.path.empty()) entryPoints_ = {};
  const ModuleHandle module = std::exchange(module_, nullptr);
  return module == nullptr || CExitCall::HandOver(innermostExit_, module) ? nullptr : module;
}

void CComponentAssembly::Unload() noexcept { PlatformReleaseModule(DetachModule()); }

// A creation may overlap with this call, because it does not need the management lock. It compares forgotten_ before
// and after it calls the module, and records the class again if the number has changed.
//
// The removal of a discovery has called Exit before. So started_ is true here only if a creation has started the
// module again since.
void CComponentAssembly::Forget(const ZRUUID& classId) {
  {
    const CLockGuard hold(stateMutex_);
    classes_.erase(classId);
    forgotten_.fetch_add(1, std::memory_order_release);
    if (!classes_.empty()) return;
  }
  if (!started_.exchange(false, std::memory_order_acq_rel)) return Unload();
  // Detached before ZrExitModule is called, released afterwards by `call`. In the obvious order, unloading after the
  // call, a callback that loads and starts the module anew would have its new module unloaded.
  CExitCall call(*this);
  Unload();
  call.Run();
}
