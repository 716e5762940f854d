// Owners for the values that the library gives. Each owner releases its value at the end of its scope, also when an
// exception leaves the scope.

#ifndef EXAMPLES_OWNERS_H
#define EXAMPLES_OWNERS_H

#include <zrcore/array.h>
#include <zrcore/string.h>
#include <zrcore/variant.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

#include "code_units.h"

struct StringRelease {
  void operator()(WCHAR* string) const noexcept { ZrDestroyString(string); }
};
/// StringOwner owns one reference to a counted string, or is null.
using StringOwner = std::unique_ptr<WCHAR, StringRelease>;

/// Units returns a view of the code units of a string. It includes zero units, because the length comes from the
/// string's header. The view must not be used after the string is destroyed.
inline WideView Units(ZRSTR string) noexcept {
  return string == nullptr ? WideView() : WideView(string, ZrStringLen(string));
}

/// MakeString gives a string of exactly these units. The result is null when out of memory, or if the length in bytes
/// does not fit into 32 bits.
///
/// It uses ZrCreateStringByteLen because the other creators stop at a zero unit and require a terminator, which a slice
/// of a larger text doesn't have.
inline ZRSTR MakeString(WideView units) noexcept {
  constexpr std::size_t kMaxUnits = std::numeric_limits<std::uint32_t>::max() / sizeof(WCHAR) - 1;
  if (units.size() > kMaxUnits) return nullptr;
  return ZrCreateStringByteLen(units.data(), static_cast<std::uint32_t>(units.size() * sizeof(WCHAR)));
}

struct ArrayRelease {
  void operator()(ZrSafeArrayDescriptor* array) const noexcept { (void)ZrSafeArrayDestroy(array); }
};
/// ArrayOwner owns an array with its elements, or is null.
using ArrayOwner = std::unique_ptr<ZrSafeArrayDescriptor, ArrayRelease>;

/// CopyArray returns a copy of an array; null if the copy fails.
inline ArrayOwner CopyArray(ZRSAFEARRAY source) {
  ZRSAFEARRAY copy = nullptr;
  (void)ZrSafeArrayCopy(source, &copy);
  return ArrayOwner(copy);
}

/// CElements gives direct access to the elements of an array of any number of dimensions, in memory order.
///
/// T must be the C type of the elements; another type is undefined behaviour. While a CElements exists, it holds the
/// array's access flag: reading or storing an element, a second direct access and a lock of the same array then fail
/// with ZR_R_INVALID_OBJECT_STATE. The elements must not be used after the CElements is destroyed.
///
/// Count is 0 if another call holds the access flag, or if the array has no storage. operator[] doesn't check its
/// index.
template <class T>
class CElements {
 public:
  explicit CElements(ZRSAFEARRAY array) noexcept {
    void* first = nullptr;
    if (ZR_FAILED(ZrSafeArrayAccessData(array, &first))) return;
    array_ = array;
    first_ = static_cast<T*>(first);
    if (first_ != nullptr) (void)ZrSafeArrayGetElementCount(array, &count_, nullptr);
  }
  CElements(const CElements&) = delete;
  CElements& operator=(const CElements&) = delete;
  ~CElements() {
    if (array_ != nullptr) (void)ZrSafeArrayUnaccessData(array_);
  }

  std::uint32_t Count() const noexcept { return count_; }
  T& operator[](std::size_t index) const noexcept { return first_[index]; }

 private:
  ZRSAFEARRAY array_ = nullptr;
  T* first_ = nullptr;
  std::uint32_t count_ = 0;
};

/// CVariantOwner is a ZRVARIANT that is initialised as empty and cleared at the end of its scope.
class CVariantOwner {
 public:
  CVariantOwner() noexcept = default;
  CVariantOwner(CVariantOwner&& other) noexcept : variant_(std::exchange(other.variant_, kEmpty)) {}
  CVariantOwner& operator=(CVariantOwner&& other) noexcept {
    std::swap(variant_, other.variant_);  // the destructor of `other` releases the old value
    return *this;
  }
  ~CVariantOwner() { (void)ZrVariantClear(&variant_); }

  /// OfArray returns a variant that owns the array. `elementType` must be the tag of the array's elements.
  static CVariantOwner OfArray(std::uint16_t elementType, ArrayOwner array) noexcept {
    CVariantOwner owner;
    owner.variant_.Type = elementType | ZR_VT_ARRAY;
    owner.variant_.Value.array = array.release();
    return owner;
  }

  const ZRVARIANT& Get() const noexcept { return variant_; }

  /// Array lends the array in the variant, until the variant changes; null if the variant contains no array of its own.
  ZRSAFEARRAY Array() const noexcept {
    constexpr unsigned kFlags = ZR_VT_ARRAY | ZR_VT_BYREF;
    return (variant_.Type & kFlags) == ZR_VT_ARRAY ? variant_.Value.array : nullptr;
  }

  /// Detach gives the variant to the caller, who must clear it, and leaves this empty.
  [[nodiscard]] ZRVARIANT Detach() noexcept { return std::exchange(variant_, kEmpty); }

  /// Address is for out-parameters of functions that release the old value themselves, such as ZrVariantChangeType.
  ZRVARIANT* Address() noexcept { return &variant_; }

 private:
  static constexpr ZRVARIANT kEmpty = ZR_VARIANT_INIT;
  ZRVARIANT variant_ = kEmpty;
};

#endif
