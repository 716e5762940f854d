// Defines every object with static storage, in one translation unit and therefore in one order.
//
// Construction runs from top to bottom when the library is loaded. Destruction runs from bottom to top when the process
// ends or the library is unloaded. So an object may use the objects above it in its constructor and its destructor. An
// object that is constinit is ready before any code runs. Between translation units the order would be undefined.
//
// This is the only file of src/runtime/ that may include headers of higher layers.
//
// The file also implements ZrInitialize and ZrUninitialize. They count:
//
//     calls                                         count   the component exports
//     (loaded)                                      0       return ZR_R_NO_INIT
//     ZrInitialize                                  1       work
//     ZrInitialize                                  2       work
//     ZrUninitialize                                1       work
//     ZrUninitialize, the last one, while it runs   0       return ZR_R_NO_INIT; other threads wait for its end first
//     ZrUninitialize, one too many                  0       return ZR_R_NO_INIT; the count does not change

#include "runtime/library_state.h"

#include <atomic>
#include <iostream>  // constructs the standard streams before the objects below, and flushes them after those

#include "arrays/array_manager.h"
#include "blobs/blob_manager.h"
#include "components/allocator_settings.h"
#include "components/component_registry.h"
#include "identifiers/reference_records.h"
#include "runtime/error_registry.h"
#include "runtime/item_allocator.h"
#include "runtime/lock.h"
#include "text/character_case.h"
#include "text/counted_string.h"
#include "text/utf8_vectors.h"
#include "zrcore/lifecycle.h"

// The count of initialisations and the component registry.
//
// Lock order: the management lock, then the lifecycle lock. Field order and the virtual destructor are fixed by
// contract.
class CGlobalData {
 public:
  CGlobalData() = default;
  CGlobalData(const CGlobalData&) = delete;
  CGlobalData& operator=(const CGlobalData&) = delete;
  virtual ~CGlobalData();  // Fixed by contract: virtual.

  ZRRESULT Initialize() {
    const CLockGuard hold(lifecycleLock_);
    ++initializations_;
    PublishOpen();
    return ZR_R_OK;
  }

  // A call that may be the last one enters the management lock first. The obvious order, lifecycle lock and then the
  // registry's own lock, would deadlock: discoveries and modules that run under the management lock may call
  // ZrInitialize, ZrUninitialize or a component export, which enter the lifecycle lock. So a thread that holds the
  // lifecycle lock alone must not wait for the management lock.
  //
  // The first block handles all calls that are not the last one. It leaves the lifecycle lock before the management
  // lock is entered. Another thread may change the count in between, so the count is tested again.
  ZRRESULT Uninitialize() {
    {
      const CLockGuard hold(lifecycleLock_);
      if (initializations_ != 1) {
        if (initializations_ != 0) --initializations_;
        return ZR_R_OK;
      }
    }
    const CLockGuard holdRegistry(registry_.ManagementLock());
    const CLockGuard hold(lifecycleLock_);
    if (initializations_ == 0 || --initializations_ != 0) return ZR_R_OK;
    const CShutdownMark mark(*this);
    registry_.Shutdown();
    return ZR_R_OK;
  }

  // Returns the same as a test of the count under the lifecycle lock. isOpen_ saves the lock while the library is
  // initialised and no shutdown runs.
  //
  // While the last ZrUninitialize runs, isOpen_ is false, even if a module that is being stopped calls ZrInitialize. So
  // other threads always enter the lifecycle lock then: they wait for the end of the shutdown and see the count that it
  // leaves. The thread that runs the shutdown enters the recursive lock at once and sees the present count.
  bool IsInitialized() {
    if (isOpen_.load()) return true;
    const CLockGuard hold(lifecycleLock_);
    return initializations_ > 0;
  }

  CComponentManagement& Registry() noexcept { return registry_; }

 private:
  // Exists while a shutdown of the registry runs, under the lifecycle lock. Shutdowns nest: a module that is being
  // stopped may call ZrInitialize and ZrUninitialize, which is then a last call too.
  class CShutdownMark {
   public:
    explicit CShutdownMark(CGlobalData& state) ZR_UNCHECKED : state_(state) {
      ++state_.shutdowns_;
      state_.PublishOpen();
    }
    CShutdownMark(const CShutdownMark&) = delete;
    CShutdownMark& operator=(const CShutdownMark&) = delete;
    ~CShutdownMark() ZR_UNCHECKED {
      --state_.shutdowns_;
      state_.PublishOpen();
    }

   private:
    CGlobalData& state_;
  };

  // Must be called after each change of the two numbers that may change its result. CShutdownMark calls it for the last
  // ZrUninitialize; other calls leave the count above 0.
  void PublishOpen() ZR_REQUIRES(lifecycleLock_) { isOpen_.store(initializations_ > 0 && shutdowns_ == 0); }

  CRecursiveLock lifecycleLock_;  // a thread that holds it without the management lock waits for no other lock
  uint32_t initializations_ ZR_GUARDED_BY(lifecycleLock_) = 0;
  CComponentManagement registry_;
  uint32_t shutdowns_ ZR_GUARDED_BY(lifecycleLock_) = 0;  // number of shutdowns that run, nested ones included
  std::atomic<bool> isOpen_{false};                       // written under lifecycleLock_
};

// Reports entries that are left because the host ended without its last ZrUninitialize. No newline follows a text:
// callers rely on the exact output.
//
// The registry is read without its lock, which a thread that no longer runs may hold for ever.
CGlobalData::~CGlobalData() {
  try {
    if (registry_.HasDiscoveries()) std::cout << "Not all Component-Discoveries removed while destroying CGlobalData";
    if (registry_.HasAssemblies()) std::cout << "Not all Component-Assemblies removed while destroying CGlobalData";
    if (registry_.HasComponents()) std::cout << "Not all Components removed while destroying CGlobalData";
  } catch (...) {
    // A host may have set std::cout to throw. The remaining texts are dropped, and the teardown goes on.
  }
}

// ---- All objects with static storage, in order of construction ------------------------------------------------------
//
// g_globalData is destroyed before the value managers above it: destroying the registry unloads modules, whose code may
// still use blobs, arrays and error texts. The item allocators are torn down before g_globalData. They remain usable,
// because they have no destructors, but use only the heap from then on.

constinit CSharedEmptyString g_emptyString;         // neither constructor nor destructor runs code
constinit CItemAllocatorSettings g_itemAllocators;  // the same
constinit CCharacterCase g_characterCase;           // reads the locale on first use; the destructor releases it
constinit CZrBlobMgr g_blobManager;
Utf8Form g_utf8Form = BestUtf8Form();  // None before this runs: the callers' loops do all the work
static CErrorRegistry g_errorRegistry;
constinit CZrSafeArrayMgr g_arrayManager;
static CGlobalData g_globalData;
static CAllocatorSettings g_allocatorSettings;
CItemAllocator g_refAllocator("tagZRREF", true, sizeof(ZRREF), 0);
static CItemAllocatorTeardown g_refAllocatorTeardown(g_refAllocator);
CItemAllocator g_srefAllocator("tagZRSREF", true, sizeof(ZRSREF), 0);
static CItemAllocatorTeardown g_srefAllocatorTeardown(g_srefAllocator);

// ---- Access functions and exports -----------------------------------------------------------------------------------

bool IsLibraryInitialized() noexcept { return g_globalData.IsInitialized(); }

CErrorRegistry& ErrorRegistry() noexcept { return g_errorRegistry; }

CComponentManagement& ComponentRegistry() noexcept { return g_globalData.Registry(); }

CAllocatorSettings& AllocatorSettings() noexcept { return g_allocatorSettings; }

ZRRESULT ZrInitialize() noexcept { return g_globalData.Initialize(); }

ZRRESULT ZrUninitialize() { return g_globalData.Uninitialize(); }
