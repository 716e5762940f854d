// The operations of the registry.
//
// Every call of foreign code, which is any operation of a discovery object, ZrExitModule, and the loading and unloading
// of a module, may make callbacks that change the registry. Two techniques make this safe:
//   - A shared pointer of its own keeps the object alive whose function is called.
//   - A walk stores the key that it has reached and then looks for the next greater key. It terminates even if
//     callbacks add entries, because the keys that it visits only increase.

#include "components/component_registry.h"

#include <exception>
#include <limits>
#include <type_traits>
#include <utility>

#include "runtime/result.h"

// Visits the entries in ascending order until `visit` returns true; returns whether it did.
//
// `visit` may change the map, so it gets a shared pointer of its own. That pointer may be the last one: destroying the
// object may change the map too. Therefore the next entry is looked up after `entry` has been destroyed.
//
//     keys 1 3 5, the visit of 3 erases 3 and 5 and adds 4 -> 1, 3 and 4 are visited
template <class Map, class Visit>
static bool Walk(const Map& map, Visit&& visit) {
  static_assert(std::is_trivially_copyable_v<typename Map::key_type>, "a walk must not run out of memory");
  for (auto at = map.begin(); at != map.end();) {
    const auto key = at->first;
    if (const auto entry = at->second; visit(key, entry)) return true;
    at = map.upper_bound(key);
  }
  return false;
}

// Empties a map. The entries are destroyed when the map is already empty: an object's last Release and a module's
// destructors may make callbacks, which must not find entries that are being destroyed. clear() would not ensure that.
template <class Map>
static void SwapAndClear(Map& map) noexcept {
  Map cleared;
  cleared.swap(map);
}

// Runs without the lock, which a thread that the system has ended may hold for ever. Does not call ZrExitModule.
CComponentManagement::~CComponentManagement() ZR_UNCHECKED {
  SwapAndClear(classNames_);
  SwapAndClear(classIds_);
  SwapAndClear(components_);
  SwapAndClear(assemblies_);
  SwapAndClear(discoveries_);
}

// ---- Discoveries ---------------------------------------------------------------------------------------------------

// The cookie is advanced first, so a failed addition uses up a cookie. The contract fixes this.
//
// The entry is added to the map before AddRef is called: AddRef may make a callback that looks up a class in it.
ZRRESULT CComponentManagement::AddDiscovery(IZrComponentDiscovery* discovery, uint32_t* cookie) noexcept {
  return Guarded(ZR_R_UNEXPECTED, [&]() -> ZRRESULT {
    const CLockGuard hold(lock_);
    AdvanceCookie();
    if (discoveries_.size() >= std::numeric_limits<uint32_t>::max()) return ZR_R_FAILED;
    const auto entry = std::make_shared<CComponentDiscovery>();
    while (discoveries_.contains(lastCookie_)) AdvanceCookie();
    const uint32_t issued = lastCookie_;
    discoveries_.emplace(issued, entry);
    *cookie = issued;
    try {
      entry->Attach(issued, discovery);
    } catch (...) {
      discoveries_.erase(issued);  // without a reference, the object must not be called again
      throw;
    }
    return ZR_R_OK;
  });
}

// Works in two walks: all modules are stopped before the first one is unloaded. So a ZrExitModule may still call code
// of another module. The discovery is released last.
ZRRESULT CComponentManagement::RemoveDiscovery(uint32_t cookie, bool* isRemoved) noexcept {
  *isRemoved = false;
  return Guarded(ZR_R_UNEXPECTED, [&]() -> ZRRESULT {
    const CLockGuard hold(lock_);
    const auto found = discoveries_.find(cookie);
    if (found == discoveries_.end()) return ZR_R_UNKNOWN_IDENTIFIER;
    const std::shared_ptr<CComponentDiscovery> discovery = found->second;

    // Calls `step` for the registered components of this cookie, in ascending order of the classes. Each of them is
    // also among the components that the discovery has reported, so only those are visited, not the whole map
    // components_. A reported component may belong to another discovery by now: a nested lookup may have replaced it.
    const auto walkClasses = [this, cookie, &reported = discovery->Components()](auto step) {
      Walk(reported, [this, cookie, &step](const ZRUUID& classId, const std::shared_ptr<CComponent>&) {
        lock_.AssertHeld();
        const auto known = components_.find(classId);
        if (known == components_.end() || known->second->Cookie() != cookie) return false;
        const auto component = known->second;  // a callback may erase the pointer in the map
        step(*component);
        return false;
      });
    };
    walkClasses([](const CComponent& component) {
      if (component.Assembly()) component.Assembly()->Exit();
    });
    walkClasses([this](const CComponent& component) {
      lock_.AssertHeld();
      if (component.Assembly()) component.Assembly()->Forget(component.ClassId());
      components_.erase(component.ClassId());
    });
    discovery->ForgetComponents();
    // A module's ZrExitModule may have removed the same discovery. Then only that removal is counted.
    *isRemoved = discoveries_.erase(cookie) != 0;
    // Released here, so that an exception of Release becomes a result code. But if a lookup further up the stack of
    // this thread is still calling the object, that lookup has the last pointer, whose destruction releases the object.
    if (discovery.use_count() == 1) discovery->Detach();
    return ZR_R_OK;
  });
}

// An exception of one ZrExitModule must not keep the other modules loaded. So the first exception is stored and
// rethrown when everything is cleared.
//
// The loop does not use Walk, whose copy of the key could run out of memory: these keys contain paths. The assembly,
// which the shared pointer keeps alive, contains the key.
void CComponentManagement::Shutdown() {
  const CLockGuard hold(lock_);
  std::exception_ptr thrown;
  const auto walkAssemblies = [this, &thrown](auto step) {
    lock_.AssertHeld();
    for (auto at = assemblies_.begin(); at != assemblies_.end();) {
      const std::shared_ptr<CComponentAssembly> assembly = at->second;
      try {
        (assembly.get()->*step)();
      } catch (...) {
        if (!thrown) thrown = std::current_exception();
      }
      at = assemblies_.upper_bound(assembly->Key());
    }
  };
  walkAssemblies(&CComponentAssembly::Exit);  // every ZrExitModule runs before the first module is unloaded
  walkAssemblies(&CComponentAssembly::Unload);
  SwapAndClear(assemblies_);
  SwapAndClear(components_);
  SwapAndClear(discoveries_);
  if (thrown) std::rethrow_exception(thrown);
}

// ---- Lookups -------------------------------------------------------------------------------------------------------

template <class Ask>
bool CComponentManagement::AskDiscoveries(Ask&& ask) {
  return Walk(discoveries_, [&ask](uint32_t, const std::shared_ptr<CComponentDiscovery>& discovery) {
    return !Failed(ask(discovery));
  });
}

// While the discoveries are asked, a callback may look up the same class and register a component for it. Then the
// result of this lookup, which was started earlier but ends later, replaces that component.
CComponent* CComponentManagement::FindComponent(const ZRUUID& classId, std::shared_ptr<CComponentDiscovery>& reporter) {
  if (const auto known = components_.find(classId); known != components_.end()) return known->second.get();
  std::shared_ptr<CComponent> component;
  const bool isKnown = AskDiscoveries([&](const std::shared_ptr<CComponentDiscovery>& discovery) {
    const ZRRESULT result = discovery->QueryComponent(classId, component);
    if (!Failed(result)) reporter = discovery;
    return result;
  });
  if (!isKnown) return nullptr;
  return components_.insert_or_assign(classId, std::move(component)).first->second.get();
}

const std::shared_ptr<CComponentAssembly>& CComponentManagement::Bind(CComponent& component) {
  if (component.Assembly()) return component.Assembly();
  auto known = assemblies_.find(component.AssemblyKey());
  if (known == assemblies_.end()) {
    auto made = std::make_shared<CComponentAssembly>(component.AssemblyKey());
    known = assemblies_.emplace(component.AssemblyKey(), std::move(made)).first;
  }
  component.Bind(known->second);
  return component.Assembly();
}

// The component is found and bound under the lock; the object is created without it. Exceptions become one of two
// codes: ZR_R_REQUEST_ABORTED from the lookup, ZR_R_UNEXPECTED from binding. The assembly has its own.
ZRRESULT CComponentManagement::CreateInstance(ZRUUID classId, uint64_t argument1, ZRUUID interfaceId,
                                              uint64_t argument2, void** object) noexcept {
  return Guarded(ZR_R_REQUEST_ABORTED, [&]() -> ZRRESULT {
    std::shared_ptr<CComponentAssembly> assembly;
    {
      const CLockGuard hold(lock_);
      // Destroyed last under the lock. If the discovery has removed itself while it was asked, this is the last pointer
      // to it, and its Release runs then. A callback from Release must find the class registered and bound.
      std::shared_ptr<CComponentDiscovery> reporter;
      CComponent* component = FindComponent(classId, reporter);
      if (component == nullptr) return ZR_R_CLASS_NOT_REGISTERED;
      const ZRRESULT result = Guarded(ZR_R_UNEXPECTED, [&] {
        lock_.AssertHeld();
        assembly = Bind(*component);
        return ZR_R_OK;
      });
      if (Failed(result)) return result;
    }
    return assembly->CreateInstance(classId, argument1, interfaceId, argument2, object);
  });
}

ZRRESULT CComponentManagement::QueryConfiguration(ZRUUID classId, ZRSTR name,
                                                  IZrConfiguration** configuration) noexcept {
  return Guarded(ZR_R_FAILED, [&]() -> ZRRESULT {
    const CLockGuard hold(lock_);
    std::shared_ptr<CComponentDiscovery> discovery;  // keeps it alive during the call, which may remove it
    const CComponent* component = FindComponent(classId, discovery);
    if (component == nullptr) return ZR_R_CLASS_NOT_REGISTERED;
    if (!discovery) {  // the class was registered before, so no discovery was asked
      const auto known = discoveries_.find(component->Cookie());
      if (known == discoveries_.end()) return ZR_R_UNEXPECTED;
      discovery = known->second;
    }
    *configuration = nullptr;  // again: since the export cleared it, foreign code may have written to it
    return discovery->QueryConfiguration(classId, name, configuration);
  });
}

ZRRESULT CComponentManagement::ClassIdFromName(ZRSTR className, ZRUUID* classId) noexcept {
  return Guarded(ZR_R_FAILED, [&]() -> ZRRESULT {
    const CLockGuard hold(lock_);
    if (const auto known = classIds_.find(className); known != classIds_.end()) {
      *classId = known->second;
      return ZR_R_OK;
    }
    // The entry is allocated before a discovery is asked, so that no result is lost when out of memory. Its reference
    // also keeps the name alive during the walk.
    CClassIdMap entry;
    ZRUUID& remembered = entry.emplace(CStringHolder::Share(className), ZRUUID{}).first->second;
    if (!AskDiscoveries([&](const auto& discovery) { return discovery->QueryClassId(className, classId); })) {
      return ZR_R_FAILED;
    }
    remembered = *classId;
    classIds_.merge(entry);  // moves the entry; if a callback has added the name meanwhile, that entry stays
    return ZR_R_OK;
  });
}

// A discovery that returns a success must have written `*className`: it is read here, and the cache adds a reference of
// its own. As above, the entry is allocated before a discovery is asked.
ZRRESULT CComponentManagement::NameFromClassId(ZRUUID classId, ZRSTR* className) noexcept {
  return Guarded(ZR_R_FAILED, [&]() -> ZRRESULT {
    const CLockGuard hold(lock_);
    if (const auto known = classNames_.find(classId); known != classNames_.end()) {
      *className = CStringHolder::Share(known->second.Get()).Detach();
      return ZR_R_OK;
    }
    CClassNameMap entry;
    CStringHolder& remembered = entry.emplace(classId, CStringHolder()).first->second;
    if (!AskDiscoveries([&](const auto& discovery) { return discovery->QueryClassName(classId, className); })) {
      return ZR_R_FAILED;
    }
    remembered = CStringHolder::Share(*className);
    classNames_.merge(entry);
    return ZR_R_OK;
  });
}
