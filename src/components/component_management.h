// The registry: which discoveries there are, which classes they reported so far and where those live, and the class
// names learnt.
//
// What holds:
//   1. The management lock guards every member, and every call into a discovery object is made under it.
//   2. It is recursive, and discovery objects and modules may call back on the same thread. So nothing here keeps an
//      iterator across such a call: walks resume behind the key that they had reached.
//   3. Making an object happens without the lock; a shared pointer keeps the assembly alive for it.
//   4. Class names are never forgotten, not by a removal and not by the shutdown; nor is the last cookie.

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
  virtual ~CComponentManagement();

  // What the exports do behind their checks. Exceptions have become codes.
  [[nodiscard]] ZRRESULT AddDiscovery(IZrComponentDiscovery* discovery, uint32_t* cookie) noexcept;
  // `isRemoved` receives whether this call took the discovery out. A success without it means that a module, which the
  // removal stopped, has removed the same discovery meanwhile.
  [[nodiscard]] ZRRESULT RemoveDiscovery(uint32_t cookie, bool* isRemoved) noexcept;
  // (Identifiers by value: foreign code that is called may change the caller's records.)
  [[nodiscard]] ZRRESULT CreateInstance(ZRUUID classId, uint64_t argument1, ZRUUID interfaceId, uint64_t argument2,
                                        void** object) noexcept;
  [[nodiscard]] ZRRESULT QueryConfiguration(ZRUUID classId, ZRSTR name, IZrConfiguration** configuration) noexcept;
  [[nodiscard]] ZRRESULT ClassIdFromName(ZRSTR className, ZRUUID* classId) noexcept;
  [[nodiscard]] ZRRESULT NameFromClassId(ZRUUID classId, ZRSTR* className) noexcept;

  // Stops every module, then unloads every module, then lets go of everything but the names and the last cookie.
  void Shutdown();

  // For who needs the registry to stand still around a lock of its own.
  [[nodiscard]] CRecursiveLock& ManagementLock() noexcept ZR_RETURNS_LOCK(lock_) { return lock_; }

  // For the end of the process, which must not wait: a thread that it left behind may hold the lock for ever.
  [[nodiscard]] bool HasDiscoveries() const noexcept ZR_UNCHECKED { return !discoveries_.empty(); }
  [[nodiscard]] bool HasAssemblies() const noexcept ZR_UNCHECKED { return !assemblies_.empty(); }
  [[nodiscard]] bool HasComponents() const noexcept ZR_UNCHECKED { return !components_.empty(); }

 private:
  friend struct CRegistryTestPeer;  // nobody can issue four thousand million cookies to see them wrap

  struct CNameLess {
    using is_transparent = void;  // so that a name is looked up without a reference of its own
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

  void AdvanceCookie() noexcept ZR_REQUIRES(lock_) {
    if (++lastCookie_ == 0) ++lastCookie_;  // 0 is no cookie
  }

  // Returns the component of a class, null if no discovery knows the class. The component belongs to the registry and
  // is valid until the lock is left or foreign code runs. If discoveries had to be asked, `reporter` receives the one
  // that knew the class: the caller drops it, which may run foreign code, when it no longer needs the component.
  CComponent* FindComponent(const ZRUUID& classId, std::shared_ptr<CComponentDiscovery>& reporter) ZR_REQUIRES(lock_);
  const std::shared_ptr<CComponentAssembly>& Bind(CComponent& component) ZR_REQUIRES(lock_);

  // Asks the discoveries in ascending cookie order until one answers zero or above; whether one did.
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

// The only registry that callers reach.
CComponentManagement& ComponentRegistry() noexcept;
