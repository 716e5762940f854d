#include "components/component_assembly.h"

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

// Sends the pieces as one text. What can't be put together for want of memory is lost, so that it hides no result.
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

ZRRESULT CComponentAssembly::LoadAndCreate(const ZRUUID& classId, uint64_t argument1, const ZRUUID& interfaceId,
                                           uint64_t argument2, void** object) {
  Snapshot now = Look(classId);
  if (now.createInstance == nullptr) {
    if (key_.path.empty()) return ZR_R_FAILED;
    if (const ZRRESULT result = Load(); Failed(result)) return result;
    now = Look(classId);
  }
  // A start that is over needs no lock. (A flag that a creation left behind when the module was stopped under it does
  // no harm: started_ is false then.)
  if (!started_.load(std::memory_order_acquire) || !startReturned_.load(std::memory_order_acquire)) {
    if (const ZRRESULT result = Start(); Failed(result)) return result;
    now = Look(classId);
  }
  if (now.createInstance == nullptr) return ZR_R_NOT_SUPPORTED;  // unloaded by a refused start in another thread

  // The record's entry is made first, so that nothing can fail once the module has made an object. (But for a class
  // that is struck off during the call: its entry is made anew behind it.)
  ClassMap entry;
  if (!now.isRecorded) entry.emplace(classId, classId);

  const ZRUUID lentClassId = classId, lentInterfaceId = interfaceId;
  const ZRRESULT result = now.createInstance(&lentClassId, argument1, &lentInterfaceId, argument2, object);
  if (Failed(result)) return result;

  if (now.isRecorded && forgotten_.load(std::memory_order_acquire) == now.forgotten) return result;
  if (entry.empty()) entry.emplace(lentClassId, lentClassId);
  const CLockGuard hold(stateMutex_);
  classes_.merge(entry);
  return result;
}

CComponentAssembly::Snapshot CComponentAssembly::Look(const ZRUUID& classId) {
  const CLockGuard hold(stateMutex_);
  return {entryPoints_.createInstance, forgotten_.load(std::memory_order_relaxed), classes_.contains(classId)};
}

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
    // Two threads may have loaded at the same time. The last one's reference stays, the other is given back.
    const CLockGuard hold(stateMutex_);
    std::swap(module_, module);
    entryPoints_ = found;
  }
  PlatformReleaseModule(module);
  return ZR_R_OK;
}

// Calls ZrInitModule, once, however many threads want the first object.
ZRRESULT CComponentAssembly::Start() {
  ModuleHandle refusing = nullptr;
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
    // A creation that waits for the start mutex must not find functions that are about to go.
    refusing = DetachModule();
  }
  PlatformReleaseModule(refusing);
  return ZR_R_NOT_SUPPORTED;
}

// ---- Ending --------------------------------------------------------------------------------------------------------

// Keeps the module of the call mapped: what is detached meanwhile is released when the call has returned. If it throws
// instead, the exception may still need the module's code, so the module stays loaded and is the assembly's again.
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

  // Under the state mutex: hands a reference on `module` to the outermost call of that module which has none yet, since
  // that call returns last. False if no call needs it. A module that was loaded twice has two references, and a call
  // keeps it mapped by one.
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

void CComponentAssembly::Exit() {
  if (!started_.exchange(false, std::memory_order_acq_rel)) return;
  CExitCall call(*this);
  call.Run();
}

ModuleHandle CComponentAssembly::DetachModule() noexcept {
  const CLockGuard hold(stateMutex_);
  if (!key_.path.empty()) entryPoints_ = {};
  const ModuleHandle module = std::exchange(module_, nullptr);
  return module == nullptr || CExitCall::HandOver(innermostExit_, module) ? nullptr : module;
}

void CComponentAssembly::Unload() noexcept { PlatformReleaseModule(DetachModule()); }

void CComponentAssembly::Forget(const ZRUUID& classId) {
  {
    const CLockGuard hold(stateMutex_);
    classes_.erase(classId);
    forgotten_.fetch_add(1, std::memory_order_release);
    if (!classes_.empty()) return;
  }
  if (!started_.exchange(false, std::memory_order_acq_rel)) return Unload();
  // Detached before ZrExitModule is called and released afterwards: what that call loads and starts anew stays loaded.
  CExitCall call(*this);
  Unload();
  call.Run();
}
