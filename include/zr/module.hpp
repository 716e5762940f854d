// ZR_MODULE writes the three exports of a module (zrcore/component.h).
//
//     inline constexpr zr::Uuid kMarsClass("31AD0869-8AC8-4D25-A11C-A887BE515257");
//     class CMars final : public zr::Object<IPlanet> { ... };
//     ZR_MODULE(zr::Class<CMars, kMarsClass>)
//
// Each class derives from zr::Object. If it has a constructor with two numbers of type uint64_t, that constructor
// receives the arguments of ZrCreateInstance. No exception leaves the module: zr::Guard turns it into a code.
//
// Use ZR_MODULE once in a module, at the end of one source file. Start and end of the module need no code; a module
// that needs some writes the exports itself and calls zr::CreateInstance<...> in ZrCreateInstanceModule.

#ifndef ZR_MODULE_HPP
#define ZR_MODULE_HPP

#include <cstdint>
#include <type_traits>

#include "zr/object.hpp"
#include "zr/uuid.hpp"
#include "zrcore/component.h"

namespace zr {

/// Class connects the class T with its identifier, a variable with static storage.
template <class T, const Uuid& id>
struct Class {
  static constexpr const Uuid& kId = id;

  /// Create makes an object and gives its interface. Exceptions pass to the caller, CreateInstance.
  static ZRRESULT Create(uint64_t argument1, const ZRUUID* interfaceId, uint64_t argument2, void** object) {
    if constexpr (std::is_constructible_v<T, uint64_t, uint64_t>) {
      return MakeObject<T>(argument1, argument2)->QueryInterface(interfaceId, object);
    } else {
      (void)argument1, (void)argument2;
      return MakeObject<T>()->QueryInterface(interfaceId, object);
    }
  }
};

/// CreateInstance is ZrCreateInstanceModule for these classes, and the function of a class in the program itself.
///
/// @param object  gives an object with one reference; null after a failure.
/// @return
///   - ZR_R_OK                    the object was made.
///   - ZR_R_INVALID_ARGUMENTS     a pointer is null.
///   - ZR_R_CLASS_NOT_REGISTERED  the class is not one of these.
///   - ZR_R_NO_INTERFACE          the class does not have the interface.
///   - ZR_R_NO_MEMORY, ZR_R_UNEXPECTED or a code of zr::Error  the constructor threw an exception; see Guard.
///
/// Any thread, any time, if the constructors allow it.
template <class... Classes>
ZRRESULT CreateInstance(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId, uint64_t argument2,
                        void** object) noexcept {
  if (object == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *object = nullptr;
  if (classId == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const Uuid wanted(*classId);
  return Guard([&]() -> ZRRESULT {
    ZRRESULT result = ZR_R_CLASS_NOT_REGISTERED;
    (void)((wanted == Classes::kId && (result = Classes::Create(argument1, interfaceId, argument2, object), true)) ||
           ...);
    return result;
  });
}

}  // namespace zr

/// ZR_MODULE defines ZrInitModule, ZrExitModule and ZrCreateInstanceModule for a list of zr::Class. Use it outside of
/// namespaces.
#define ZR_MODULE(...)                                                                                  \
  ZRRESULT ZrInitModule() { return ZR_R_OK; }                                                           \
  void ZrExitModule() {}                                                                                \
  ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId, \
                                  uint64_t argument2, void** object) {                                  \
    return zr::CreateInstance<__VA_ARGS__>(classId, argument1, interfaceId, argument2, object);         \
  }

#endif
