// Array<T> owns a safe array with elements of type T (zrcore/array.h).
//
//     zr::Array<double> distances = {9376, 23463.2};
//     double first = distances.At(0).Value();
//     if (auto lent = distances.Lend()) {              // sets the access flag until `lent` is destroyed
//       for (double& distance : *lent) distance *= 2;
//     }
//
// An Array is one pointer, and either null or an array whose tag belongs to T. Element types are the integers of 8 to
// 64 bits, bool, float, double, char32_t, DateTime, TimeSpan, Currency, Uuid, String, Blob, Ref, Sref, Variant and
// Ptr<IZrUnknown>. A copy copies all elements; a moved-from Array is null.
//
// At and Set check each index against its bound, unlike the exports, which check only the sign of the offset. Both set
// the access flag while they run, so they fail with ZR_R_INVALID_OBJECT_STATE while the elements are lent.

#ifndef ZR_ARRAY_HPP
#define ZR_ARRAY_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <type_traits>
#include <utility>

#include "zr/any_array.hpp"
#include "zr/variant.hpp"

namespace zr {

/// ElementTraits connects an element type with the storage of arrays:
///
///   Stored          the type of a variable for ZrSafeArrayGetElement, and of an element in the storage
///   kTag            the tag of the elements
///   Take(stored)    makes the element of what ZrSafeArrayGetElement has stored
///   Lower(element)  what ZrSafeArrayPutElement reads
template <class T, class = void>
struct ElementTraits;

namespace detail {

template <class T, class Stored_>
struct PlainElement {
  using Stored = Stored_;
  static constexpr uint16_t kTag = ValueTraits<T>::kTag;
  static T Take(const Stored& stored) noexcept { return T(stored); }
  static Stored Lower(const T& element) noexcept { return Stored(element); }
};

template <class T>
struct TickedElement {
  using Stored = int64_t;
  static constexpr uint16_t kTag = ValueTraits<T>::kTag;
  static T Take(Stored stored) noexcept { return T(stored); }
  static Stored Lower(T element) noexcept { return element.Ticks(); }
};

// Elements that lie in the storage as one pointer, which an owner of the same size manages.
template <class T, class Handle>
struct HandleElement {
  using Stored = Handle;
  static constexpr uint16_t kTag = ValueTraits<T>::kTag;
  static T Take(Handle stored) noexcept { return T::Adopt(stored); }
  static Handle Lower(const T& element) noexcept { return const_cast<Handle>(element.Get()); }
};

template <class T, class = void>
struct HasElementTraits : std::false_type {};
template <class T>
struct HasElementTraits<T, std::void_t<typename ElementTraits<T>::Stored>> : std::true_type {};

}  // namespace detail

template <class T>
struct ElementTraits<T,
                     std::enable_if_t<detail::kIsInteger<T> || std::is_same_v<T, float> || std::is_same_v<T, double>>>
    : detail::PlainElement<T, T> {};
template <>
struct ElementTraits<bool> {
  using Stored = uint8_t;
  static constexpr uint16_t kTag = ZR_VT_BOOL;
  static bool Take(Stored stored) noexcept { return stored != 0; }
  static Stored Lower(bool element) noexcept { return element ? 1 : 0; }
};
template <>
struct ElementTraits<char32_t> : detail::PlainElement<char32_t, uint32_t> {};
template <>
struct ElementTraits<DateTime> : detail::TickedElement<DateTime> {};
template <>
struct ElementTraits<TimeSpan> : detail::TickedElement<TimeSpan> {};
template <>
struct ElementTraits<Currency> {
  using Stored = ZRCY;
  static constexpr uint16_t kTag = ZR_VT_CY;
  static Currency Take(Stored stored) noexcept { return Currency{stored}; }
  static Stored Lower(Currency element) noexcept { return element.value; }
};
template <>
struct ElementTraits<Uuid> : detail::PlainElement<Uuid, ZRUUID> {};
template <>
struct ElementTraits<String> : detail::HandleElement<String, ZRSTR> {};
template <>
struct ElementTraits<Blob> : detail::HandleElement<Blob, ZRBLOB> {};
template <>
struct ElementTraits<Sref> : detail::HandleElement<Sref, ZRSREF*> {};
template <>
struct ElementTraits<Ptr<IZrUnknown>> : detail::HandleElement<Ptr<IZrUnknown>, IZrUnknown*> {};
template <>
struct ElementTraits<Ref> {
  using Stored = ZRREF*;
  static constexpr uint16_t kTag = ZR_VT_REF;
  static Ref Take(Stored stored) noexcept {
    const Ref copy = stored != nullptr ? Ref(*stored) : Ref();
    ZrDestroyREF(stored);
    return copy;
  }
  static Stored Lower(const Ref& element) noexcept { return const_cast<Ref*>(&element); }  // only read
};
template <>
struct ElementTraits<Variant> {
  using Stored = ZRVARIANT;
  static constexpr uint16_t kTag = ZR_VT_VARIANT;
  static Variant Take(const Stored& stored) noexcept { return Variant::Adopt(stored); }
  static Stored Lower(const Variant& element) noexcept { return *element.Get(); }  // a record that owns nothing
};

/// Lent is access to the elements of an array, which lie next to each other. It is a contiguous range, so in C++20 it
/// converts to std::span. While it exists the array's access flag is set.
///
/// The array must not be reshaped, assigned to or destroyed meanwhile: the flag does not prevent that, and the elements
/// are freed, which is undefined behaviour. The array may be moved.
///
/// Strings, blobs and references are lent as handles of the C boundary, which the array owns. Do not release them.
template <class Stored>
class Lent {
 public:
  Lent() noexcept = default;
  Lent(Lent&& other) noexcept
      : array_(std::exchange(other.array_, nullptr)),
        first_(std::exchange(other.first_, nullptr)),
        count_(std::exchange(other.count_, 0)) {}
  Lent& operator=(Lent other) noexcept {
    std::swap(array_, other.array_);
    std::swap(first_, other.first_);
    std::swap(count_, other.count_);
    return *this;
  }
  ~Lent() {
    if (array_ != nullptr) (void)ZrSafeArrayUnaccessData(array_);
  }

  [[nodiscard]] Stored* data() const noexcept { return first_; }
  [[nodiscard]] std::size_t size() const noexcept { return count_; }
  [[nodiscard]] bool empty() const noexcept { return count_ == 0; }
  [[nodiscard]] Stored* begin() const noexcept { return first_; }
  [[nodiscard]] Stored* end() const noexcept { return first_ + count_; }
  [[nodiscard]] Stored& operator[](std::size_t index) const noexcept { return first_[index]; }

 private:
  template <class T>
  friend class Array;
  Lent(ZRSAFEARRAY array, Stored* first, std::size_t count) noexcept : array_(array), first_(first), count_(count) {}

  ZRSAFEARRAY array_ = nullptr;
  Stored* first_ = nullptr;
  std::size_t count_ = 0;
};

/// Array owns an array with elements of type T, or null.
template <class T>
class Array {
  static_assert(detail::HasElementTraits<T>::value, "arrays cannot have elements of this type");
  using Traits = ElementTraits<T>;

 public:
  /// The type of the elements that Lend lends: T for numbers, a handle or record for other types.
  using Stored = typename Traits::Stored;
  /// The tag of the elements.
  static constexpr uint16_t kTag = Traits::kTag;

  Array() noexcept = default;
  /// Makes an array of one dimension with `count` zeros, empty values or null pointers. The first index is
  /// `lowerBound`.
  explicit Array(uint32_t count, int32_t lowerBound = 0) : Array({Bound{count, lowerBound}}) {}
  /// Makes an array with these dimensions. If the product of the counts does not fit 32 bits, it wraps around, and At
  /// and Set refuse every index.
  explicit Array(std::initializer_list<Bound> bounds)
      : array_(kTag, static_cast<uint32_t>(bounds.size()), bounds.begin()) {}
  /// Makes an array of one dimension with these elements.
  Array(std::initializer_list<T> elements) : Array(elements.begin(), static_cast<uint32_t>(elements.size())) {}
  /// Makes an array of one dimension with copies of `count` elements.
  Array(const T* elements, uint32_t count) : Array(count) {
    if constexpr (std::is_same_v<T, Stored>) {
      if (auto lent = Lend(); lent && count != 0) std::memcpy(lent->data(), elements, count * sizeof(T));
    } else {
      for (uint32_t index = 0; index < count; ++index) (void)Put(&index, elements[index]);
    }
  }

  /// From takes an array whose element type is known only at run time. ZR_R_NOT_SUPPORTED if its tag is not kTag; the
  /// array is destroyed then.
  static Result<Array> From(AnyArray array) {
    if (array.Tag() != kTag) return Failure{ZR_R_NOT_SUPPORTED};
    Array made;
    made.array_ = std::move(array);
    return made;
  }
  /// From takes the array of a variant. ZR_R_NOT_SUPPORTED if the value is not an array of this element type.
  static Result<Array> From(Variant value) {
    Result<AnyArray> array = value.TakeArray();
    if (!array) return Failure{array.Code()};
    return From(*std::move(array));
  }
  /// From takes an array of another type with the same tag, such as `long` for `long long`. ZR_R_NOT_SUPPORTED if the
  /// tags differ: use To.
  template <class U>
  static Result<Array> From(Array<U> array) {
    return From(AnyArray(std::move(array)));
  }
  /// Any lends the array as one with a type known at run time; on a temporary it moves the array out.
  [[nodiscard]] const AnyArray& Any() const& noexcept { return array_; }
  [[nodiscard]] AnyArray Any() && noexcept { return std::move(array_); }
  operator AnyArray() const& { return array_; }
  operator AnyArray() && noexcept { return std::move(array_); }

  /// Get lends the array to functions of the C boundary.
  [[nodiscard]] ZRSAFEARRAY Get() const noexcept { return array_.Get(); }
  /// Detach gives the array to the caller, who destroys it with ZrSafeArrayDestroy.
  [[nodiscard]] ZRSAFEARRAY Detach() noexcept { return array_.Detach(); }
  /// Size returns the number of elements of all dimensions; 0 for null.
  [[nodiscard]] uint32_t Size() const noexcept { return array_.Size(); }
  /// Bounds lends the bounds until the shape changes or the array is destroyed.
  [[nodiscard]] BoundsView Bounds() const& noexcept { return array_.Bounds(); }
  BoundsView Bounds() const&& = delete;

  /// Redim changes the shape, as AnyArray::Redim does.
  Result<void> Redim(std::initializer_list<Bound> bounds) {
    return array_.Redim(bounds.begin(), static_cast<uint32_t>(bounds.size()));
  }

  /// At returns a copy of one element. It takes one index per dimension.
  ///
  /// @return ZR_R_INVALID_ARGUMENTS if an index is outside its bounds, the number of indices is wrong, or the bounds
  ///         have more than 0xFFFFFFFF elements; ZR_R_INVALID_OBJECT_STATE while the elements are lent;
  ///         ZR_R_INVALID_POINTER for null.
  template <class... Index>
  Result<T> At(Index... index) const {
    if (!(Fits(index) && ...)) return Failure{ZR_R_INVALID_ARGUMENTS};
    const uint32_t indices[] = {static_cast<uint32_t>(index)...};
    if (const ZRRESULT result = CheckIndices(indices, sizeof...(index)); Failed(result)) return Failure{result};
    Stored stored = Nothing();
    if (const ZRRESULT result = ZrSafeArrayGetElement(Get(), indices, &stored); Failed(result)) return Failure{result};
    return Traits::Take(stored);
  }
  /// Set replaces one element with a copy of the value. The codes are those of At, and those of ZrSafeArrayPutElement
  /// for the value: a null Sref makes the element null and fails with ZR_R_INVALID_ARGUMENTS. Throws std::bad_alloc
  /// when out of memory.
  template <class... Index>
  Result<void> Set(const T& value, Index... index) {
    if (!(Fits(index) && ...)) return Failure{ZR_R_INVALID_ARGUMENTS};
    const uint32_t indices[] = {static_cast<uint32_t>(index)...};
    if (const ZRRESULT result = CheckIndices(indices, sizeof...(index)); Failed(result)) return Failure{result};
    return Result<void>(Put(indices, value));
  }

  /// Lend sets the access flag and lends the elements until the result is destroyed.
  ///
  /// @return ZR_R_INVALID_OBJECT_STATE if the flag is set already; ZR_R_INVALID_POINTER for null.
  Result<Lent<Stored>> Lend() & { return LendAs<Stored>(); }
  Result<Lent<const Stored>> Lend() const& { return LendAs<const Stored>(); }
  Result<Lent<const Stored>> Lend() const&& = delete;

  /// To copies the array and converts the elements. The codes are those of AnyArray::ChangeType: 1, a success, if some
  /// did not convert, which are zero, null or empty then.
  template <class U>
  Result<Array<U>> To() const {
    AnyArray copy = array_;
    const Result<void> changed = copy.ChangeType(Array<U>::kTag);
    if (!changed) return Failure{changed.Code()};
    Result<Array<U>> typed = Array<U>::From(std::move(copy));
    if (!typed) return typed;
    return Result<Array<U>>(*std::move(typed), changed.Code());
  }

  /// Two arrays are equal if their shapes and elements are. Two null arrays are equal.
  friend bool operator==(const Array& left, const Array& right) { return left.array_ == right.array_; }
  friend bool operator!=(const Array& left, const Array& right) { return !(left == right); }

 private:
  // What a variable must contain before a get: null handles, or an initialised record.
  static Stored Nothing() noexcept {
    if constexpr (std::is_same_v<Stored, ZRVARIANT>) {
      return ZR_VARIANT_INIT;
    } else {
      return Stored();
    }
  }

  ZRRESULT Put(const uint32_t* indices, const T& value) {
    const Stored lowered = Traits::Lower(value);
    return ZrSafeArrayPutElement(Get(), indices, &lowered);
  }

  // Whether an index is a number of 32 bits, signed or unsigned.
  template <class Index>
  static constexpr bool Fits(Index index) noexcept {
    static_assert(std::is_integral_v<Index>, "an index is an integer");
    if constexpr (sizeof(Index) > sizeof(uint32_t)) {
      return index == static_cast<Index>(static_cast<uint32_t>(index)) ||
             index == static_cast<Index>(static_cast<int32_t>(index));
    } else {
      return (void)index, true;
    }
  }

  ZRRESULT CheckIndices(const uint32_t* indices, std::size_t count) const noexcept {
    if (Get() == nullptr) return ZR_R_INVALID_POINTER;
    const BoundsView bounds = array_.Bounds();
    if (bounds.count != count) return ZR_R_INVALID_ARGUMENTS;
    uint64_t elements = 1;
    for (uint32_t dimension = 0; dimension < count; ++dimension) {
      const uint32_t inDimension = bounds[dimension].elementCount;
      if (indices[dimension] - static_cast<uint32_t>(bounds[dimension].lowerBound) >= inDimension) {
        return ZR_R_INVALID_ARGUMENTS;
      }
      // A product of the counts that wraps makes an array with less storage than its bounds promise.
      elements *= inDimension;
      if (elements > UINT32_MAX) return ZR_R_INVALID_ARGUMENTS;
    }
    return ZR_R_OK;
  }

  template <class Element>
  Result<Lent<Element>> LendAs() const {
    void* data = nullptr;
    if (const ZRRESULT result = ZrSafeArrayAccessData(Get(), &data); Failed(result)) return Failure{result};
    return Lent<Element>(Get(), static_cast<Element*>(data), data != nullptr ? Size() : 0);
  }

  AnyArray array_;
};
static_assert(sizeof(Array<double>) == sizeof(ZRSAFEARRAY), "an Array is its handle");

}  // namespace zr

#endif
