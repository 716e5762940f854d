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
  /// Calls ZrInitialize.
  Library() noexcept { (void)ZrInitialize(); }  // never fails
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  /// Calls ZrUninitialize, which may unload modules. An exception of a module's ZrExitModule terminates the process.
  ~Library() { (void)ZrUninitialize(); }
};

/// Registration keeps a discovery registered. A Registration that was moved from has no discovery.
///
/// The destructor ignores the result of Remove, and an exception of a module's ZrExitModule terminates the process:
/// call Remove to receive both.
class Registration {
 public:
  Registration() noexcept = default;
  /// Registers a discovery; test the object or Code. The library adds a reference to the discovery. `discovery` must
  /// not be null.
  ///
  /// Exceptions of the discovery's configuration objects pass to the caller. The discovery is registered nevertheless
  /// then, until the last ZrUninitialize.
  explicit Registration(const Ptr<IZrComponentDiscovery>& discovery) : Registration(*discovery) {}
  explicit Registration(IZrComponentDiscovery& discovery) : code_(ZrAddComponentDiscovery(&discovery, &cookie_)) {}
  Registration(Registration&& other) noexcept
      : cookie_(std::exchange(other.cookie_, 0)), code_(std::exchange(other.code_, ZR_R_NO_INIT)) {}
  Registration& operator=(Registration other) noexcept {
    std::swap(cookie_, other.cookie_);
    std::swap(code_, other.code_);
    return *this;
  }
  /// Calls Remove. Its errors are ignored, and an exception terminates the process.
  ~Registration() { (void)Remove(); }

  /// Code returns the result of the registration: one of those of ZrAddComponentDiscovery, such as ZR_R_NO_INIT without
  /// a Library. After Remove it is ZR_R_NO_INIT.
  [[nodiscard]] ZRRESULT Code() const noexcept { return code_; }
  /// Returns whether the discovery is registered.
  [[nodiscard]] explicit operator bool() const noexcept { return !Failed(code_); }

  /// Remove ends the registration, and with it stops and unloads the modules of the discovery. All objects of these
  /// modules must have been released. A second call, or one without a registration, does nothing.
  ///
  /// @return ZR_R_NO_INIT if the last ZrUninitialize came first; ZR_R_UNEXPECTED for an exception of a module, or out
  ///         of memory.
  /// @throws std::system_error as ZrRemoveComponentDiscovery (component.h).
  Result<void> Remove() {
    if (Failed(code_)) return Result<void>();
    code_ = ZR_R_NO_INIT;
    return Result<void>(ZrRemoveComponentDiscovery(std::exchange(cookie_, 0)));
  }

 private:
  uint32_t cookie_ = 0;
  ZRRESULT code_ = ZR_R_NO_INIT;
};

/// Create makes an object of a class and returns its interface I. The module decides what the two numbers mean.
///
/// @return the code of the module, which may be a positive success; ZR_R_CLASS_NOT_REGISTERED if no discovery knows the
///         class; ZR_R_FILE_NOT_FOUND if the module can't be loaded; ZR_R_NO_INTERFACE if the module returns a success
///         without an object; or another code of ZrCreateInstance (component.h).
///
/// Any thread, any time between ZrInitialize and ZrUninitialize.
template <class I>
Result<Ptr<I>> Create(const Uuid& classId, uint64_t argument1 = 0, uint64_t argument2 = 0) {
  void* object = nullptr;
  const ZRRESULT result = ZrCreateInstance(&classId, argument1, &InterfaceIdOf<I>::value, argument2, &object);
  if (Failed(result)) return Failure{result};
  if (object == nullptr) return Failure{ZR_R_NO_INTERFACE};  // a module's success without an object
  return Result<Ptr<I>>(Ptr<I>::Adopt(static_cast<I*>(object)), result);
}

/// ClassIdOf returns the identifier of a class that a discovery knows by this name. ZR_R_FAILED if no discovery knows
/// it; ZR_R_NO_INIT before ZrInitialize.
inline Result<Uuid> ClassIdOf(const String& name) noexcept {
  Uuid classId;
  if (const ZRRESULT result = ZrCLSIDFromClassName(name.Get(), &classId); Failed(result)) return Failure{result};
  return classId;
}

/// ClassNameOf returns the name of a class. ZR_R_FAILED if no discovery knows it; ZR_R_NO_INIT before ZrInitialize.
inline Result<String> ClassNameOf(const Uuid& classId) noexcept {
  String name;
  if (const ZRRESULT result = ZrClassNameFromCLSID(&classId, name.Put()); Failed(result)) return Failure{result};
  return name;
}

/// CreateByName makes an object of the class with this name. The codes are those of ClassIdOf and Create.
template <class I>
Result<Ptr<I>> CreateByName(const String& name, uint64_t argument1 = 0, uint64_t argument2 = 0) {
  const Result<Uuid> classId = ClassIdOf(name);
  if (!classId) return Failure{classId.Code()};
  return Create<I>(*classId, argument1, argument2);
}

/// ConfigurationOf asks the discovery of a class for a configuration. The codes are those of
/// ZrQueryComponentConfiguration (configuration.h). The result may be null if the discovery returned a success without
/// a configuration.
inline Result<Ptr<IZrConfiguration>> ConfigurationOf(const Uuid& classId, const String& name) {
  Ptr<IZrConfiguration> configuration;
  const ZRRESULT result = ZrQueryComponentConfiguration(&classId, name.Get(), configuration.Put());
  if (Failed(result)) return Failure{result};
  return configuration;
}

}  // namespace zr

#endif
