// Owners of what the library gives: each gives it back at the end of its scope.

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
/// StringOwner owns one reference on a counted string, or none.
using StringOwner = std::unique_ptr<WCHAR, StringRelease>;

/// Units shows the content of a string. The length comes from the string's header, so zero units are part of it.
inline WideView Units(ZRSTR string) noexcept {
  return string == nullptr ? WideView() : WideView(string, ZrStringLen(string));
}

/// MakeString gives a string of exactly these units; null if memory or the 32 bits for its length don't suffice.
///
/// By bytes, because the other creators stop copying at a zero unit and need a terminator, which a slice has not.
inline ZRSTR MakeString(WideView units) noexcept {
  constexpr std::size_t kMostUnits = std::numeric_limits<std::uint32_t>::max() / sizeof(WCHAR) - 1;
  if (units.size() > kMostUnits) return nullptr;
  return ZrCreateStringByteLen(units.data(), static_cast<std::uint32_t>(units.size() * sizeof(WCHAR)));
}

struct ArrayRelease {
  void operator()(ZrSafeArrayDescriptor* array) const noexcept { (void)ZrSafeArrayDestroy(array); }
};
/// ArrayOwner owns an array with its elements, or none.
using ArrayOwner = std::unique_ptr<ZrSafeArrayDescriptor, ArrayRelease>;

/// CopyArray gives an array of the same elements.
inline ArrayOwner CopyArray(ZRSAFEARRAY source) {
  ZRSAFEARRAY copy = nullptr;
  (void)ZrSafeArrayCopy(source, &copy);
  return ArrayOwner(copy);
}

/// CElements lends the elements of an array of any shape, each a T, as long as the scope lasts. It holds the array's
/// flag so long; an array whose flag is taken, and one without storage, seem to have no elements.
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

/// CVariantOwner is a ZRVARIANT that begins empty and is cleared at the end.
class CVariantOwner {
 public:
  CVariantOwner() noexcept = default;
  CVariantOwner(CVariantOwner&& other) noexcept : variant_(std::exchange(other.variant_, kEmpty)) {}
  CVariantOwner& operator=(CVariantOwner&& other) noexcept {
    std::swap(variant_, other.variant_);  // what this held goes with the other
    return *this;
  }
  ~CVariantOwner() { (void)ZrVariantClear(&variant_); }

  /// OfArray makes the array the variant's own.
  static CVariantOwner OfArray(std::uint16_t elementType, ArrayOwner array) noexcept {
    CVariantOwner owner;
    owner.variant_.Type = elementType | ZR_VT_ARRAY;
    owner.variant_.Value.array = array.release();
    return owner;
  }

  const ZRVARIANT& Get() const noexcept { return variant_; }

  /// Array is the array that the variant holds, lent; null if it holds none.
  ZRSAFEARRAY Array() const noexcept {
    constexpr unsigned kFlags = ZR_VT_ARRAY | ZR_VT_BYREF;
    return (variant_.Type & kFlags) == ZR_VT_ARRAY ? variant_.Value.array : nullptr;
  }

  /// Detach leaves it to the caller to clear the variant.
  [[nodiscard]] ZRVARIANT Detach() noexcept { return std::exchange(variant_, kEmpty); }

  /// Address is for the library to write to: it releases what the variant held itself.
  ZRVARIANT* Address() noexcept { return &variant_; }

 private:
  static constexpr ZRVARIANT kEmpty = ZR_VARIANT_INIT;
  ZRVARIANT variant_ = kEmpty;
};

#endif
