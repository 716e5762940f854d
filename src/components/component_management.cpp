#include "components/component_management.h"

#include <exception>
#include <limits>
#include <type_traits>
#include <utility>

#include "runtime/result.h"

// Visits the entries in ascending order until `visit` returns true; returns whether it did. `visit` may change the map:
// it gets a shared pointer of its own. So may the object that goes with this pointer, hence the next entry is looked
// for last, after the key that the walk has reached.
template <class Map, class Visit>
static bool Walk(const Map& map, Visit&& visit) {
  static_assert(std::is_trivially_copyable_v<typename Map::key_type>, "a walk must not fail for want of memory");
  for (auto at = map.begin(); at != map.end();) {
    const auto key = at->first;
    if (const auto entry = at->second; visit(key, entry)) return true;
    at = map.upper_bound(key);
  }
  return false;
}

template <class Map>
static void Empty(Map& map) noexcept {
  Map emptied;  // the map is empty before the first entry goes, since that may call back
  emptied.swap(map);
}

// Under no lock: a thread that was left behind may hold it. Each map is empty before its entries go, since an object's
// last Release and a module's own destructors may call back.
CComponentManagement::~CComponentManagement() ZR_UNCHECKED {
  Empty(classNames_);
  Empty(classIds_);
  Empty(components_);
  Empty(assemblies_);
  Empty(discoveries_);
}

// ---- Discoveries ---------------------------------------------------------------------------------------------------

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
      discoveries_.erase(issued);  // no reference was taken, so nobody may ask it
      throw;
    }
    return ZR_R_OK;
  });
}

ZRRESULT CComponentManagement::RemoveDiscovery(uint32_t cookie, bool* isRemoved) noexcept {
  *isRemoved = false;
  return Guarded(ZR_R_UNEXPECTED, [&]() -> ZRRESULT {
    const CLockGuard hold(lock_);
    const auto found = discoveries_.find(cookie);
    if (found == discoveries_.end()) return ZR_R_UNKNOWN_IDENTIFIER;
    const std::shared_ptr<CComponentDiscovery> discovery = found->second;

    // The classes of this cookie, in order. Each is among the components that its discovery reported, so the cost
    // depends on those alone. The reverse need not hold: a lookup that came in between may have replaced a class by
    // that of another discovery.
    const auto walkClasses = [this, cookie, &reported = discovery->Components()](auto step) {
      Walk(reported, [this, cookie, &step](const ZRUUID& classId, const std::shared_ptr<CComponent>&) {
        lock_.AssertHeld();
        const auto known = components_.find(classId);
        if (known == components_.end() || known->second->Cookie() != cookie) return false;
        const auto component = known->second;  // the map's own may go when foreign code calls back
        step(*component);
        return false;
      });
    };
    // All exits come before the first unloading, here too.
    walkClasses([](const CComponent& component) {
      if (component.Assembly()) component.Assembly()->Exit();
    });
    walkClasses([this](const CComponent& component) {
      lock_.AssertHeld();
      if (component.Assembly()) component.Assembly()->Forget(component.ClassId());
      components_.erase(component.ClassId());
    });
    discovery->ForgetComponents();
    // A module's ZrExitModule may have removed the same discovery: then that removal counts, and this one is over.
    *isRemoved = discoveries_.erase(cookie) != 0;
    // Released here, where what it throws has a result to become; unless a lookup further up this thread's stack is
    // still asking the object. The last pointer does it then.
    if (discovery.use_count() == 1) discovery->Detach();
    return ZR_R_OK;
  });
}

void CComponentManagement::Shutdown() {
  const CLockGuard hold(lock_);
  std::exception_ptr thrown;  // by a module; the first is passed on when everything is gone all the same
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
  walkAssemblies(&CComponentAssembly::Exit);  // all exits come before the first unloading
  walkAssemblies(&CComponentAssembly::Unload);
  Empty(assemblies_);
  Empty(components_);
  Empty(discoveries_);
  if (thrown) std::rethrow_exception(thrown);
}

// ---- Lookups -------------------------------------------------------------------------------------------------------

template <class Ask>
bool CComponentManagement::AskDiscoveries(Ask&& ask) {
  return Walk(discoveries_, [&ask](uint32_t, const std::shared_ptr<CComponentDiscovery>& discovery) {
    return !Failed(ask(discovery));
  });
}

CComponent* CComponentManagement::FindComponent(const ZRUUID& classId, std::shared_ptr<CComponentDiscovery>& reporter) {
  if (const auto known = components_.find(classId); known != components_.end()) return known->second.get();
  std::shared_ptr<CComponent> component;
  const bool isKnown = AskDiscoveries([&](const std::shared_ptr<CComponentDiscovery>& asked) {
    const ZRRESULT result = asked->QueryComponent(classId, component);
    if (!Failed(result)) reporter = asked;
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

ZRRESULT CComponentManagement::CreateInstance(ZRUUID classId, uint64_t argument1, ZRUUID interfaceId,
                                              uint64_t argument2, void** object) noexcept {
  return Guarded(ZR_R_REQUEST_ABORTED, [&]() -> ZRRESULT {
    std::shared_ptr<CComponentAssembly> assembly;
    {
      const CLockGuard hold(lock_);
      // Given up last under the lock: if the discovery removed itself while it was asked, its Release runs there and
      // must find the class known and bound.
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
    std::shared_ptr<CComponentDiscovery> discovery;  // alive through the call, which may remove it
    const CComponent* component = FindComponent(classId, discovery);
    if (component == nullptr) return ZR_R_CLASS_NOT_REGISTERED;
    if (!discovery) {  // the class was known before
      const auto known = discoveries_.find(component->Cookie());
      if (known == discoveries_.end()) return ZR_R_UNEXPECTED;
      discovery = known->second;
    }
    *configuration = nullptr;  // again: a discovery has been asked since the export did it
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
    // The entry is made before anybody is asked, so that an answer can't be lost to a full heap. Its reference also
    // keeps the name alive through the walk.
    CClassIdMap entry;
    ZRUUID& remembered = entry.emplace(CStringHolder::Share(className), ZRUUID{}).first->second;
    if (!AskDiscoveries([&](const auto& discovery) { return discovery->QueryClassId(className, classId); })) {
      return ZR_R_FAILED;
    }
    remembered = *classId;
    classIds_.merge(entry);  // an entry that a discovery's own lookup has made meanwhile stays
    return ZR_R_OK;
  });
}

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
