// One registered discovery object, and the components that it has reported.
//
//     registry --> CComponentDiscovery --> IZrComponentDiscovery of the host     one reference, until Detach
//                        |
//                        '--> CComponent, one per reported class --> CComponentAssembly, once an object is created
//
// The registry has a map of components too and shares each component with the discovery that reported it.

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "components/module_assembly.h"

// Describes where one class is implemented. All fields except the assembly are constant.
class CComponent {
 public:
  CComponent(uint32_t cookie, const ZRUUID& classId, ZRSTR modulePath, const ZrModuleEntryPoints& entryPoints)
      : cookie_(cookie), classId_(classId), assemblyKey_{ModulePathFrom(modulePath), entryPoints} {}
  CComponent(const CComponent&) = delete;
  CComponent& operator=(const CComponent&) = delete;
  virtual ~CComponent() = default;  // Fixed by contract: virtual.

  uint32_t Cookie() const noexcept { return cookie_; }  // cookie of the discovery that reported the class
  const ZRUUID& ClassId() const noexcept { return classId_; }
  const CAssemblyKey& AssemblyKey() const noexcept { return assemblyKey_; }

  // Null until the first object of the class is created. Both functions under the management lock.
  const std::shared_ptr<CComponentAssembly>& Assembly() const noexcept { return assembly_; }
  void Bind(std::shared_ptr<CComponentAssembly> assembly) noexcept { assembly_ = std::move(assembly); }

 private:
  const uint32_t cookie_;
  const ZRUUID classId_;
  const CAssemblyKey assemblyKey_;
  std::shared_ptr<CComponentAssembly> assembly_;
};

using CComponentMap = std::map<ZRUUID, std::shared_ptr<CComponent>, CByteWiseLess>;

// All functions are called under the management lock, except the destructor, which runs where the last shared pointer
// is destroyed.
//
// The operations call the host's object, which may make callbacks. A callback may even remove this discovery from the
// registry, so the caller must hold a shared pointer during each call.
class CComponentDiscovery {
 public:
  CComponentDiscovery() = default;
  CComponentDiscovery(const CComponentDiscovery&) = delete;
  CComponentDiscovery& operator=(const CComponentDiscovery&) = delete;
  virtual ~CComponentDiscovery();  // Fixed by contract: virtual.

  // Stores the cookie and the pointer and adds a reference to `discovery`. If AddRef throws, the pointer is cleared,
  // and the exception passes to the caller.
  void Attach(uint32_t cookie, IZrComponentDiscovery* discovery);

  // Drops the components, then releases the reference. An exception of Release passes to the caller; the reference
  // counts as released then. Does nothing if there is no reference.
  void Detach();

  // Asks the object for a class. If the result is zero or above, stores a new component in `component` and in the map.
  // Returns the object's result, or ZR_R_UNEXPECTED without an object.
  [[nodiscard]] ZRRESULT QueryComponent(const ZRUUID& classId, std::shared_ptr<CComponent>& component);

  // Pass the arguments to the object and return its result, or ZR_R_UNEXPECTED without an object.
  [[nodiscard]] ZRRESULT QueryConfiguration(const ZRUUID& classId, ZRSTR name, IZrConfiguration** configuration);
  [[nodiscard]] ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId);
  [[nodiscard]] ZRRESULT QueryClassName(const ZRUUID& classId, ZRSTR* className);

  // The components that the object has reported. The registry's map may lack one of them, or may contain a component of
  // another discovery for the same class.
  const CComponentMap& Components() const noexcept { return components_; }
  void ForgetComponents() noexcept;

 private:
  uint32_t cookie_ = 0;  // 0 until Attach
  IZrComponentDiscovery* discovery_ = nullptr;
  CComponentMap components_;
};
