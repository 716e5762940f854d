// Ptr owns one reference on an object of a component (IZrUnknown, zrcore/component.h).
//
//     zr::Ptr<IPlanet> mars = zr::Create<IPlanet>(kMarsClass).Value();
//     mars->MoonDistances(...);
//     zr::Result<zr::Ptr<IMoon>> moon = mars.As<IMoon>();     // QueryInterface
//
// A Ptr is one pointer. Copies add a reference, the destructor releases it, and a moved-from Ptr is null. AddRef and
// Release must not throw (base.h).
//
// As and Create need the identifier of an interface. An interface states its own:
//
//     struct IPlanet : IZrUnknown {
//       static constexpr zr::Uuid kId{"F9651424-8D32-4CCF-9A21-343643169DF0"};
//       virtual ZRRESULT MoonDistances(ZRVARIANT* kilometres) = 0;
//      protected:
//       ~IPlanet() = default;
//     };
//
// An interface that derives from another one must state its own identifier too. If it inherits the identifier, As casts
// an object that has only the base to the derived interface, and calling it is undefined behaviour.
//
// For an interface that cannot be changed, specialise InterfaceIdOf.

#ifndef ZR_PTR_HPP
#define ZR_PTR_HPP

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "zr/result.hpp"
#include "zr/uuid.hpp"
#include "zrcore/component.h"

namespace zr {

/// InterfaceIdOf names the identifier of an interface: I::kId, unless it is specialised with another `value`. It is not
/// defined for an interface without an identifier, which no object can be asked for.
template <class I, class = void>
struct InterfaceIdOf;
template <class I>
struct InterfaceIdOf<I, std::void_t<decltype(I::kId)>> {
  static constexpr const Uuid& value = I::kId;
};

/// Ptr owns one reference on an object with the interface I, or null.
template <class I>
class Ptr {
 public:
  Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {}
  /// Adds a reference.
  Ptr(const Ptr& other) : object_(other.object_) { Add(); }
  Ptr(Ptr&& other) noexcept : object_(other.Detach()) {}
  /// Converts to a base interface. Another interface needs As, which asks the object.
  template <class J, class = std::enable_if_t<std::is_convertible_v<J*, I*>>>
  Ptr(const Ptr<J>& other) : object_(other.Get()) {
    Add();
  }
  template <class J, class = std::enable_if_t<std::is_convertible_v<J*, I*>>>
  Ptr(Ptr<J>&& other) noexcept : object_(other.Detach()) {}
  Ptr& operator=(Ptr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ptr() { (void)Reset(); }

  /// Adopt takes a reference that the caller owns.
  [[nodiscard]] static Ptr Adopt(I* object) noexcept {
    Ptr made;
    made.object_ = object;
    return made;
  }
  /// Share adds a reference. Null stays null.
  [[nodiscard]] static Ptr Share(I* object) {
    Ptr made = Adopt(object);
    made.Add();
    return made;
  }

  /// Get lends the object.
  [[nodiscard]] I* Get() const noexcept { return object_; }
  /// Put releases the object and returns the address for an out-parameter.
  [[nodiscard]] I** Put() {
    (void)Reset();
    return &object_;
  }
  /// Detach gives the reference to the caller, who calls Release.
  [[nodiscard]] I* Detach() noexcept { return std::exchange(object_, nullptr); }
  /// Reset releases the object and returns what Release returned: by custom the number of references that are left, for
  /// a check that nobody leaks the object. 0 for null.
  uint32_t Reset() {
    I* const object = Detach();
    return object != nullptr ? object->Release() : 0;
  }

  /// The object, which must not be null.
  [[nodiscard]] I* operator->() const noexcept {
    assert(object_ != nullptr);
    return object_;
  }
  [[nodiscard]] I& operator*() const noexcept {
    assert(object_ != nullptr);
    return *object_;
  }
  /// Returns whether there is an object.
  [[nodiscard]] explicit operator bool() const noexcept { return object_ != nullptr; }

  /// As asks the object for another interface, by QueryInterface, and returns it with a reference of its own.
  ///
  /// @return ZR_R_INVALID_POINTER for null; ZR_R_NO_INTERFACE if the object does not have the interface, or returns a
  ///         success without an object; or the failure that the object returns.
  template <class J>
  Result<Ptr<J>> As() const {
    if (object_ == nullptr) return Failure{ZR_R_INVALID_POINTER};
    void* found = nullptr;
    if (const ZRRESULT result = object_->QueryInterface(&InterfaceIdOf<J>::value, &found); Failed(result)) {
      return Failure{result};
    }
    if (found == nullptr) return Failure{ZR_R_NO_INTERFACE};  // a success without an object
    return Ptr<J>::Adopt(static_cast<J*>(found));
  }

  /// Two pointers are equal if they point to one interface of one object.
  friend bool operator==(const Ptr& left, const Ptr& right) noexcept { return left.object_ == right.object_; }
  friend bool operator!=(const Ptr& left, const Ptr& right) noexcept { return left.object_ != right.object_; }

 private:
  void Add() const {
    if (object_ != nullptr) (void)object_->AddRef();
  }

  I* object_ = nullptr;
};
static_assert(sizeof(Ptr<IZrUnknown>) == sizeof(void*), "a Ptr is a pointer");

}  // namespace zr

template <class I>
struct std::hash<zr::Ptr<I>> {
  std::size_t operator()(const zr::Ptr<I>& pointer) const noexcept { return std::hash<I*>()(pointer.Get()); }
};

#endif
