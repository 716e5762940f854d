// Object implements the reference count and the interface lookup of a class with interfaces.
//
//     class CMars final : public zr::Object<IPlanet> {
//      public:
//       ZRRESULT MoonDistances(ZRVARIANT* kilometres) override {
//         return zr::Guard([&] { *kilometres = zr::Variant(...).Detach(); });
//       }
//     };
//     zr::Ptr<IPlanet> mars = zr::MakeObject<CMars>();
//
// No exception may leave an operation, so each one that can throw calls Guard. The operation above overwrites its
// out-value; its contract must say that callers pass an empty variant, as Variant::Put does.
//
// An object begins with one reference, and the last Release deletes it. AddRef, Release and QueryInterface may be
// called on any thread. Object adds a virtual destructor after the operations of the first interface, where no caller
// looks.

#ifndef ZR_OBJECT_HPP
#define ZR_OBJECT_HPP

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <new>
#include <type_traits>
#include <utility>

#include "zr/ptr.hpp"
#include "zr/uuid.hpp"
#include "zrcore/atomic.h"
#include "zrcore/component.h"

namespace zr {

namespace detail {

template <class I, class = void>
struct HasInterfaceId : std::false_type {};
template <class I>
struct HasInterfaceId<I, std::void_t<decltype(InterfaceIdOf<I>::value)>> : std::true_type {};

}  // namespace detail

/// Object is the base of a class that implements the interfaces I, which have no virtual destructor.
///
/// QueryInterface knows exactly the interfaces of the list. If an interface derives from another one that has an
/// identifier of its own, override QueryInterface to return it for that identifier too.
template <class... I>
class Object : public I... {
  static_assert(sizeof...(I) > 0, "an object implements at least one interface");
  static_assert((std::is_base_of_v<IZrUnknown, I> && ...), "interfaces derive from IZrUnknown");
  static_assert((!std::has_virtual_destructor_v<I> && ...),
                "a virtual destructor would change the table of operations");

 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  /// AddRef adds a reference and returns the new number of references.
  uint32_t AddRef() final { return ZrInterlockedIncrementU32(&references_); }
  /// Release takes a reference away and returns how many are left. The last one deletes the object.
  uint32_t Release() final {
    const uint32_t left = ZrInterlockedDecrementU32(&references_);
    if (left == 0) delete this;
    return left;
  }
  /// QueryInterface gives the interface with this identifier, with one reference. The first interface of the list that
  /// has the identifier counts. IZrUnknown itself has no identifier.
  ///
  /// @return
  ///   - ZR_R_OK                 `*object` is the interface.
  ///   - ZR_R_NO_INTERFACE       the class does not have the interface. `*object` is null.
  ///   - ZR_R_INVALID_ARGUMENTS  an argument is null.
  ZRRESULT QueryInterface(const ZRUUID* interfaceId, void** object) override {
    if (object == nullptr) return ZR_R_INVALID_ARGUMENTS;
    *object = nullptr;
    if (interfaceId == nullptr) return ZR_R_INVALID_ARGUMENTS;
    (Offer<I>(*interfaceId, object), ...);
    if (*object == nullptr) return ZR_R_NO_INTERFACE;
    (void)AddRef();
    return ZR_R_OK;
  }

 protected:
  Object() noexcept = default;
  virtual ~Object() = default;

 private:
  template <class Interface>
  void Offer(const ZRUUID& wanted, void** object) noexcept {
    if constexpr (detail::HasInterfaceId<Interface>::value) {  // some interfaces are never asked for by identifier
      if (*object == nullptr && InterfaceIdOf<Interface>::value == Uuid(wanted))
        *object = static_cast<Interface*>(this);
    }
  }

  uint32_t references_ = 1;
};

/// Rows owns a fixed list of rows, for objects that are made of a table.
template <class Row>
class Rows {
 public:
  /// Makes an empty list.
  Rows() noexcept = default;
  /// Copies the rows. Throws what the copies throw, and std::bad_alloc when out of memory.
  Rows(std::initializer_list<Row> rows) : Rows(rows.begin(), rows.size()) {}
  /// Copies `count` rows, for example those of a std::vector that the host has read from a file.
  Rows(const Row* rows, std::size_t count) : Rows(count) {  // from here on the destructor frees
    for (std::size_t row = 0; row < count; ++row) first_[row] = rows[row];
  }
  Rows(Rows&& other) noexcept : first_(std::exchange(other.first_, nullptr)), count_(std::exchange(other.count_, 0)) {}
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
  ~Rows() { delete[] first_; }

  /// The rows, which lie next to each other.
  [[nodiscard]] const Row* begin() const noexcept { return first_; }
  [[nodiscard]] const Row* end() const noexcept { return first_ + count_; }
  [[nodiscard]] std::size_t size() const noexcept { return count_; }

 private:
  explicit Rows(std::size_t count) : first_(count != 0 ? new Row[count] : nullptr), count_(count) {}

  Row* first_ = nullptr;
  std::size_t count_ = 0;
};

/// MakeObject makes an object of class T and returns its first reference. Exceptions of the constructor pass to the
/// caller. Throws std::bad_alloc when out of memory.
template <class T, class... Arguments>
[[nodiscard]] Ptr<T> MakeObject(Arguments&&... arguments) {
  T* const made = new (std::nothrow) T(std::forward<Arguments>(arguments)...);
  if (made == nullptr) detail::OutOfMemory();
  return Ptr<T>::Adopt(made);
}

}  // namespace zr

#endif
