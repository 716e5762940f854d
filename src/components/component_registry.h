// The registry: the discoveries, the components that they have reported, the assemblies, and the class names.
//
//     discoveries_   cookie -> CComponentDiscovery       in the order in which lookups ask them
//     components_    class identifier -> CComponent      a cache: filled when a class is first looked up
//     assemblies_    key -> CComponentAssembly           classes of one module share its assembly, until the shutdown
//     classIds_      name -> identifier                  a cache, never cleared
//     classNames_    identifier -> name                  another cache; the two are filled independently
//
//     ZrCreateInstance(X): components_[X], else ask the discoveries -> Bind -> assembly, which creates the object
//
// Invariants:
//   1. The management lock guards every member. Every call of a discovery object happens under it, except the query for
//      the configuration "ZrCore" and, at the end of the process, Release.
//   2. The lock is recursive, and discovery objects and modules may make callbacks on the same thread. So a
//      callback may change every map. No iterator or reference into a map may be used after such a call: a walk
//      continues at the first key that is greater than the last one.
//   3. Objects are created without the lock. A shared pointer keeps the assembly alive meanwhile.
//   4. Class names and the last cookie are never forgotten, neither by a removal nor by the shutdown.

#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "components/component_discovery.h"
#include "runtime/lock.h"
#include "text/counted_string.h"

class CComponentManagement {
 public:
  CComponentManagement() = default;
  CComponentManagement(const CComponentManagement&) = delete;
  CComponentManagement& operator=(const CComponentManagement&) = delete;
  virtual ~CComponentManagement();  // Fixed by contract: virtual.

  // The exports call these after their checks. Exceptions become result codes.
  [[nodiscard]] ZRRESULT AddDiscovery(IZrComponentDiscovery* discovery, uint32_t* cookie) noexcept;
  // `isRemoved` receives whether this call took the discovery out of the registry. It is false after a success if a
  // module that was stopped by the removal has removed the same discovery in a callback.
  [[nodiscard]] ZRRESULT RemoveDiscovery(uint32_t cookie, bool* isRemoved) noexcept;
  // Identifiers are passed by value: foreign code that runs during the call may change the caller's records.
  [[nodiscard]] ZRRESULT CreateInstance(ZRUUID classId, uint64_t argument1, ZRUUID interfaceId, uint64_t argument2,
                                        void** object) noexcept;
  [[nodiscard]] ZRRESULT QueryConfiguration(ZRUUID classId, ZRSTR name, IZrConfiguration** configuration) noexcept;
  [[nodiscard]] ZRRESULT ClassIdFromName(ZRSTR className, ZRUUID* classId) noexcept;
  [[nodiscard]] ZRRESULT NameFromClassId(ZRUUID classId, ZRSTR* className) noexcept;

  // Stops every module, then unloads every module, then clears everything except the class names and the last cookie.
  // The first exception of a ZrExitModule passes to the caller, after all of this is done.
  void Shutdown();

  // For a caller that must enter the management lock before a lock of its own.
  [[nodiscard]] CRecursiveLock& ManagementLock() noexcept ZR_RETURNS_LOCK(lock_) { return lock_; }

  // For the end of the process. They read without the lock, which another thread may hold for ever.
  [[nodiscard]] bool HasDiscoveries() const noexcept ZR_UNCHECKED { return !discoveries_.empty(); }
  [[nodiscard]] bool HasAssemblies() const noexcept ZR_UNCHECKED { return !assemblies_.empty(); }
  [[nodiscard]] bool HasComponents() const noexcept ZR_UNCHECKED { return !components_.empty(); }

 private:
  friend struct CRegistryTestPeer;  // tests set the last cookie: 2^32 additions would take too long

  // Orders names by content. It is transparent, so that find() accepts a ZRSTR and needs no reference for the search.
  struct CNameLess {
    using is_transparent = void;
    static ZRSTR Name(ZRSTR name) noexcept { return name; }
    static ZRSTR Name(const CStringHolder& name) noexcept { return name.Get(); }
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const noexcept {
      return CompareStrings(Name(left), Name(right)) < 0;
    }
  };
  using CDiscoveryMap = std::map<uint32_t, std::shared_ptr<CComponentDiscovery>>;
  using CAssemblyMap = std::map<CAssemblyKey, std::shared_ptr<CComponentAssembly>, CAssemblyKeyLess>;
  using CClassIdMap = std::map<CStringHolder, ZRUUID, CNameLess>;
  using CClassNameMap = std::map<ZRUUID, CStringHolder, CFieldWiseLess>;

  // Cookies count up and wrap around to 1: 0 is not a cookie.
  void AdvanceCookie() noexcept ZR_REQUIRES(lock_) {
    if (++lastCookie_ == 0) ++lastCookie_;
  }

  // Returns the component of a class, or null if no discovery knows the class. The registry owns the component. The
  // pointer is valid until the lock is left or foreign code runs.
  //
  // If the discoveries had to be asked, `reporter` receives the discovery that knew the class. The caller must destroy
  // this pointer after its last use of the component, because that may call the discovery's Release.
  CComponent* FindComponent(const ZRUUID& classId, std::shared_ptr<CComponentDiscovery>& reporter) ZR_REQUIRES(lock_);
  // Returns the assembly of a component. Finds or makes it under the component's key if it is not bound yet.
  const std::shared_ptr<CComponentAssembly>& Bind(CComponent& component) ZR_REQUIRES(lock_);

  // Calls `ask` for each discovery in ascending order of the cookies until it returns zero or above. Returns whether it
  // did.
  template <class Ask>
  bool AskDiscoveries(Ask&& ask) ZR_REQUIRES(lock_);

  CRecursiveLock lock_;
  CDiscoveryMap discoveries_ ZR_GUARDED_BY(lock_);
  CAssemblyMap assemblies_ ZR_GUARDED_BY(lock_);
  uint32_t lastCookie_ ZR_GUARDED_BY(lock_) = 0;
  CComponentMap components_ ZR_GUARDED_BY(lock_);
  CClassIdMap classIds_ ZR_GUARDED_BY(lock_);
  CClassNameMap classNames_ ZR_GUARDED_BY(lock_);
};

// The only registry that exports use. src/runtime/library_state.cpp defines it.
CComponentManagement& ComponentRegistry() noexcept;
