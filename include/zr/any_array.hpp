// AnyArray owns a safe array whose element type is known only at run time (zrcore/array.h). Array<T>, in array.hpp, has
// a fixed element type.
//
// An AnyArray is one pointer. A copy copies all elements; a moved-from AnyArray is null. Functions throw std::bad_alloc
// when out of memory, or terminate the process where array.h says so.

#ifndef ZR_ANY_ARRAY_HPP
#define ZR_ANY_ARRAY_HPP

#include <cstddef>
#include <cstdint>
#include <utility>

#include "zr/result.hpp"
#include "zrcore/array.h"

namespace zr {

/// Bound is one dimension of an array: a count, and the smallest index.
using Bound = ZrSafeArrayBound;

/// BoundsView lends the bounds of an array, until its shape changes or it is destroyed.
struct BoundsView {
  const Bound* first = nullptr;
  uint32_t count = 0;
  [[nodiscard]] const Bound* begin() const noexcept { return first; }
  [[nodiscard]] const Bound* end() const noexcept { return first + count; }
  [[nodiscard]] const Bound& operator[](uint32_t dimension) const noexcept { return first[dimension]; }
};

/// AnyArray owns an array, or null.
class AnyArray {
 public:
  AnyArray() noexcept = default;
  /// Makes an array of zeros, null pointers or empty variants. `dimensions` must be above 0. Out of memory for the
  /// elements terminates the process.
  AnyArray(uint16_t tag, uint32_t dimensions, const Bound* bounds)
      : array_(ZrSafeArrayCreate(tag, dimensions, bounds)) {}

  /// Copies all elements.
  AnyArray(const AnyArray& other) {
    if (other.array_ != nullptr) (void)ZrSafeArrayCopy(other.array_, &array_);
  }
  AnyArray(AnyArray&& other) noexcept : array_(std::exchange(other.array_, nullptr)) {}
  AnyArray& operator=(AnyArray other) noexcept {
    std::swap(array_, other.array_);
    return *this;
  }
  ~AnyArray() { Destroy(array_); }

  /// Adopt takes an array that the caller owns.
  [[nodiscard]] static AnyArray Adopt(ZRSAFEARRAY array) noexcept {
    AnyArray made;
    made.array_ = array;
    return made;
  }
  /// Get lends the array to functions of the C boundary.
  [[nodiscard]] ZRSAFEARRAY Get() const noexcept { return array_; }
  /// Put destroys the array and returns the address for an out-parameter.
  [[nodiscard]] ZRSAFEARRAY* Put() noexcept {
    Destroy(std::exchange(array_, nullptr));
    return &array_;
  }
  /// Detach gives the array to the caller, who destroys it with ZrSafeArrayDestroy.
  [[nodiscard]] ZRSAFEARRAY Detach() noexcept { return std::exchange(array_, nullptr); }

  /// Tag returns the element type; ZR_VT_EMPTY for null.
  [[nodiscard]] uint16_t Tag() const noexcept {
    uint16_t tag = ZR_VT_EMPTY;
    (void)ZrSafeArrayGetVartype(array_, &tag);
    return tag;
  }
  /// Size returns the number of elements of all dimensions; 0 for null.
  [[nodiscard]] uint32_t Size() const noexcept {
    uint32_t count = 0;
    (void)ZrSafeArrayGetElementCount(array_, &count, nullptr);
    return count;
  }
  /// Bounds lends the bounds until the shape changes or the array is destroyed. It has no dimensions for null.
  [[nodiscard]] BoundsView Bounds() const& noexcept {
    BoundsView view;
    if (Failed(ZrSafeArrayGetBounds(array_, &view.count, &view.first))) return BoundsView();
    return view;
  }
  BoundsView Bounds() const&& = delete;

  /// Redim changes the shape. Elements keep their position in the storage. The codes are those of ZrSafeArrayRedim
  /// (array.h). Throws std::bad_alloc when out of memory; the array is unchanged then.
  Result<void> Redim(const Bound* bounds, uint32_t dimensions) {
    return Result<void>(ZrSafeArrayRedim(array_, dimensions, bounds));
  }
  /// ChangeType converts all elements in place. The code is 1, a success, if some did not convert: those are zero, null
  /// or empty then, and their old values are lost. Other codes are those of ZrSafeArrayChangeType (array.h). Throws
  /// std::bad_alloc when out of memory; the array is unchanged then.
  Result<void> ChangeType(uint16_t tag) { return Result<void>(ZrSafeArrayChangeType(array_, 0, tag)); }

  /// Two arrays are equal if their shapes and elements are (ZrSafeArrayCompare). Two null arrays are equal.
  friend bool operator==(const AnyArray& left, const AnyArray& right) {
    if (left.array_ == nullptr || right.array_ == nullptr) return left.array_ == right.array_;
    uint8_t equal = 0;  // not written for different shapes
    return !Failed(ZrSafeArrayCompare(left.array_, right.array_, &equal)) && equal != 0;
  }
  friend bool operator!=(const AnyArray& left, const AnyArray& right) { return !(left == right); }

 private:
  static void Destroy(ZRSAFEARRAY array) noexcept {
    if (array != nullptr) (void)ZrSafeArrayDestroy(array);
  }

  ZRSAFEARRAY array_ = nullptr;
};
static_assert(sizeof(AnyArray) == sizeof(ZRSAFEARRAY), "an AnyArray is its handle");

}  // namespace zr

#endif
