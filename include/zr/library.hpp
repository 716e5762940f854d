// Library and Registration are scopes of the component system, and Create makes objects (zrcore/lifecycle.h,
// component.h).
//
//     zr::Library library;                                          // ZrInitialize ... ZrUninitialize
//     zr::Registration registration(zr::MakeObject<CDiscovery>());  // ZrAddComponentDiscovery ... ZrRemove...
//     zr::Result<zr::Ptr<IPlanet>> mars = zr::Create<IPlanet>(kMarsClass);
//
// The order of destruction matters. Release all objects of a module before the Registration of its discovery is
// destroyed: the destructor unloads the module, and a call of an object whose code is gone is undefined behaviour.
// Variables that are declared in the order above are destroyed in the right order.

#ifndef ZR_LIBRARY_HPP
#define ZR_LIBRARY_HPP

#include <cstdint>
#include <utility>

#include "zr/ptr.hpp"
#include "zr/result.hpp"
#include "zr/string.hpp"
#include "zr/uuid.hpp"
#include "zrcore/component.h"
#include "zrcore/configuration.h"
#include "zrcore/lifecycle.h"

namespace zr {

/// Library keeps the component system initialised. Libraries may nest.
class Library {
 public:
  Library() noexcept { (void)ZrInitialize(); }  // never fails
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  /// An exception of a module's ZrExitModule terminates the process.
  ~Library() { (void)ZrUninitialize(); }
};

/// Registration keeps a discovery registered.
///
/// The destructor ignores the result of Remove, and an exception of a module's ZrExitModule terminates the process:
/// call Remove to receive both.
class Registration {
 public:
  Registration() noexcept = default;
  /// Registers a discovery; check Code. Exceptions of its configuration objects pass to the caller.
  explicit Registration(const Ptr<IZrComponentDiscovery>& discovery) : Registration(*discovery) {}
  explicit Registration(IZrComponentDiscovery& discovery) : code_(ZrAddComponentDiscovery(&discovery, &cookie_)) {}
  Registration(Registration&& other) noexcept
      : cookie_(std::exchange(other.cookie_, 0)), code_(std::exchange(other.code_, ZR_R_NO_INIT)) {}
  Registration& operator=(Registration&& other) noexcept {
    std::swap(cookie_, other.cookie_);
    std::swap(code_, other.code_);
    return *this;
  }
  ~Registration() { (void)Remove(); }

  /// Code returns the result of the registration, or ZR_R_NO_INIT after Remove.
  [[nodiscard]] ZRRESULT Code() const noexcept { return code_; }
  [[nodiscard]] explicit operator bool() const noexcept { return !Failed(code_); }

  /// Remove ends the registration, and with it stops and unloads the modules of the discovery. A second call does
  /// nothing.
  Result<void> Remove() {
    if (Failed(code_)) return Result<void>();
    code_ = ZR_R_NO_INIT;
    return Result<void>(ZrRemoveComponentDiscovery(std::exchange(cookie_, 0)));
  }

 private:
  uint32_t cookie_ = 0;
  ZRRESULT code_ = ZR_R_NO_INIT;
};

/// Create makes an object of a class and returns its interface I. The codes are those of ZrCreateInstance.
template <class I>
Result<Ptr<I>> Create(const Uuid& classId, uint64_t argument1 = 0, uint64_t argument2 = 0) {
  void* object = nullptr;
  const ZRRESULT result = ZrCreateInstance(&classId, argument1, &InterfaceIdOf<I>::value, argument2, &object);
  if (Failed(result)) return Failure{result};
  if (object == nullptr) return Failure{ZR_R_NO_INTERFACE};  // a module's success without an object
  return Result<Ptr<I>>(Ptr<I>::Adopt(static_cast<I*>(object)), result);
}

/// ClassIdOf returns the identifier of a class that a discovery knows by this name.
inline Result<Uuid> ClassIdOf(const String& name) noexcept {
  Uuid classId;
  if (const ZRRESULT result = ZrCLSIDFromClassName(name.Get(), &classId); Failed(result)) return Failure{result};
  return classId;
}

/// ClassNameOf returns the name of a class.
inline Result<String> ClassNameOf(const Uuid& classId) noexcept {
  String name;
  if (const ZRRESULT result = ZrClassNameFromCLSID(&classId, name.Put()); Failed(result)) return Failure{result};
  return name;
}

/// CreateByName makes an object of the class with this name.
template <class I>
Result<Ptr<I>> CreateByName(const String& name, uint64_t argument1 = 0, uint64_t argument2 = 0) {
  const Result<Uuid> classId = ClassIdOf(name);
  if (!classId) return Failure{classId.Code()};
  return Create<I>(*classId, argument1, argument2);
}

/// ConfigurationOf asks the discovery of a class for a configuration.
inline Result<Ptr<IZrConfiguration>> ConfigurationOf(const Uuid& classId, const String& name) {
  Ptr<IZrConfiguration> configuration;
  const ZRRESULT result = ZrQueryComponentConfiguration(&classId, name.Get(), configuration.Put());
  if (Failed(result)) return Failure{result};
  return configuration;
}

}  // namespace zr

#endif
