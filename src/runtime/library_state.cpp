// The composition root: every object with static storage, in one translation unit and one order.
//
// Construction runs from top to bottom when the library is loaded, teardown from bottom to top when the process ends or
// the library is unloaded; so a line may use those above it. What can be constinit is ready before any code runs.
// It is the one file of this floor that knows the floors above.

#include "runtime/library_state.h"

#include <atomic>
#include <iostream>  // brings the runtime's stream support up before the objects below, and keeps it until after them

#include "arrays/array_manager.h"
#include "blobs/blob_manager.h"
#include "components/allocator_settings.h"
#include "components/component_management.h"
#include "identifiers/reference_records.h"
#include "runtime/error_registry.h"
#include "runtime/item_allocator.h"
#include "runtime/lock.h"
#include "text/character_case.h"
#include "text/counted_string.h"
#include "text/utf8_vectors.h"
#include "zrcore/lifecycle.h"

class CGlobalData {
 public:
  CGlobalData() = default;
  CGlobalData(const CGlobalData&) = delete;
  CGlobalData& operator=(const CGlobalData&) = delete;
  virtual ~CGlobalData();

  ZRRESULT Initialize() {
    const CLockGuard hold(lifecycleLock_);
    ++initializations_;
    PublishOpen();
    return ZR_R_OK;
  }

  // What may be the last call takes the management lock first. Discoveries and modules that are called under that lock
  // may call here, or wait for the lifecycle lock in the check below: nobody who holds the lifecycle lock waits for it.
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

  // Equal to a look at the count under the lifecycle lock. The mark saves the lock while the library is open. While a
  // last ZrUninitialize runs, the mark is off even if a module that it stops calls ZrInitialize: other threads then
  // wait for the end of the shutdown and are judged by the count that it leaves.
  bool IsInitialized() {
    if (isOpen_.load()) return true;
    const CLockGuard hold(lifecycleLock_);
    return initializations_ > 0;
  }

  CComponentManagement& Registry() noexcept { return registry_; }

 private:
  // A shutdown of the registry, for as long as it lasts, under the lifecycle lock. Shutdowns nest: a module that is
  // stopped may initialise and uninitialise the library once more.
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

  void PublishOpen() ZR_REQUIRES(lifecycleLock_) { isOpen_.store(initializations_ > 0 && shutdowns_ == 0); }

  CRecursiveLock lifecycleLock_;  // whoever holds it alone waits for no other lock
  uint32_t initializations_ ZR_GUARDED_BY(lifecycleLock_) = 0;
  CComponentManagement registry_;
  uint32_t shutdowns_ ZR_GUARDED_BY(lifecycleLock_) = 0;  // that are running
  std::atomic<bool> isOpen_{false};                       // written under lifecycleLock_
};

// Tells a host that ended without its last ZrUninitialize. The texts have no line end: they are read as they stand.
CGlobalData::~CGlobalData() {
  try {
    if (registry_.HasDiscoveries()) std::cout << "Not all Component-Discoveries removed while destroying CGlobalData";
    if (registry_.HasAssemblies()) std::cout << "Not all Component-Assemblies removed while destroying CGlobalData";
    if (registry_.HasComponents()) std::cout << "Not all Components removed while destroying CGlobalData";
  } catch (...) {
    // A host may have made its stream throw. The rest of the teardown matters more than the remaining texts.
  }
}

// ---- All objects with static storage, in order of construction ------------------------------------------------------

constinit CSharedEmptyString g_emptyString;         // no code runs for it, at either end,
constinit CItemAllocatorSettings g_itemAllocators;  // nor for this
constinit CCharacterCase g_characterCase;           // read on first use, released here
constinit CZrBlobMgr g_blobManager;
bool g_hasAvx2 = DetectAvx2();  // until then the loops that do without
static CErrorRegistry g_errorRegistry;
constinit CZrSafeArrayMgr g_arrayManager;
static CGlobalData g_globalData;
static CAllocatorSettings g_allocatorSettings;
CItemAllocator g_refAllocator("tagZRREF", true, sizeof(ZRREF), 0);
static CItemAllocatorTeardown g_refAllocatorTeardown(g_refAllocator);
CItemAllocator g_srefAllocator("tagZRSREF", true, sizeof(ZRSREF), 0);
static CItemAllocatorTeardown g_srefAllocatorTeardown(g_srefAllocator);

// ---- What they are asked --------------------------------------------------------------------------------------------

bool IsLibraryInitialized() noexcept { return g_globalData.IsInitialized(); }

CErrorRegistry& ErrorRegistry() noexcept { return g_errorRegistry; }

CComponentManagement& ComponentRegistry() noexcept { return g_globalData.Registry(); }

CAllocatorSettings& AllocatorSettings() noexcept { return g_allocatorSettings; }

ZRRESULT ZrInitialize() noexcept { return g_globalData.Initialize(); }

ZRRESULT ZrUninitialize() { return g_globalData.Uninitialize(); }
