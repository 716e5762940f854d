// One registered discovery object and the components that it reported.

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "components/component_assembly.h"

// Where the code of one class is.
class CComponent {
 public:
  CComponent(uint32_t cookie, const ZRUUID& classId, ZRSTR modulePath, const ZrModuleEntryPoints& entryPoints)
      : cookie_(cookie), classId_(classId), assemblyKey_{ModulePathFrom(modulePath), entryPoints} {}
  CComponent(const CComponent&) = delete;
  CComponent& operator=(const CComponent&) = delete;
  virtual ~CComponent() = default;

  uint32_t Cookie() const noexcept { return cookie_; }  // of the discovery that reported the class
  const ZRUUID& ClassId() const noexcept { return classId_; }
  const CAssemblyKey& AssemblyKey() const noexcept { return assemblyKey_; }

  // Empty until bound. Both under the management lock.
  const std::shared_ptr<CComponentAssembly>& Assembly() const noexcept { return assembly_; }
  void Bind(std::shared_ptr<CComponentAssembly> assembly) noexcept { assembly_ = std::move(assembly); }

 private:
  const uint32_t cookie_;
  const ZRUUID classId_;
  const CAssemblyKey assemblyKey_;
  std::shared_ptr<CComponentAssembly> assembly_;
};

using CComponentMap = std::map<ZRUUID, std::shared_ptr<CComponent>, CByteWiseLess>;

// Everything here happens under the management lock.
class CComponentDiscovery {
 public:
  CComponentDiscovery() = default;
  CComponentDiscovery(const CComponentDiscovery&) = delete;
  CComponentDiscovery& operator=(const CComponentDiscovery&) = delete;
  virtual ~CComponentDiscovery();

  // Takes a reference of `discovery`. If its AddRef throws, this stays unattached.
  void Attach(uint32_t cookie, IZrComponentDiscovery* discovery);

  // Gives the reference up, after the components. What Release throws passes through, with the reference given up.
  void Detach();

  // Asks for a class that isn't known yet; makes its component on an answer of zero or above. Answers what the
  // object answered.
  [[nodiscard]] ZRRESULT QueryComponent(const ZRUUID& classId, std::shared_ptr<CComponent>& component);

  [[nodiscard]] ZRRESULT QueryConfiguration(const ZRUUID& classId, ZRSTR name, IZrConfiguration** configuration);
  [[nodiscard]] ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId);
  [[nodiscard]] ZRRESULT QueryClassName(const ZRUUID& classId, ZRSTR* className);

  // Those that the object reported. The registry may have one of them no longer, or another in its place.
  const CComponentMap& Components() const noexcept { return components_; }
  void ForgetComponents() noexcept;

 private:
  uint32_t cookie_ = 0;  // until attached
  IZrComponentDiscovery* discovery_ = nullptr;
  CComponentMap components_;
};
