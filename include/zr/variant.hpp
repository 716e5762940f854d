// Variant owns a value of any type (zrcore/variant.h).
//
//     zr::Variant value = 95.5;                            // ZR_VT_R8
//     zr::Variant text = u"95.5";                          // ZR_VT_STR
//     zr::Result<int32_t> whole = value.To<int32_t>();     // the library's conversion engine
//
// A Variant is a ZRVARIANT of 16 bytes. Copies copy the value as ZrVariantCopy does; a moved-from Variant is empty.
// Functions throw std::bad_alloc when out of memory, or terminate the process where variant.h says so.
//
// The type follows from the C++ type of the value: integers by size and sign, so that `long` is ZR_VT_I8 on Linux and
// ZR_VT_I4 on Windows. Pointers, characters and 8-bit texts do not convert to a Variant.
//
// There is no hash: equality of variants is not transitive (an infinity equals most numbers).

#ifndef ZR_VARIANT_HPP
#define ZR_VARIANT_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "zr/any_array.hpp"
#include "zr/blob.hpp"
#include "zr/date_time.hpp"
#include "zr/ptr.hpp"
#include "zr/ref.hpp"
#include "zr/result.hpp"
#include "zr/sref.hpp"
#include "zr/string.hpp"
#include "zr/time_span.hpp"
#include "zr/uuid.hpp"
#include "zrcore/variant.h"

namespace zr {

template <class T>
class Array;

/// Currency is a ZRCY: an amount of money in the unit that the program chooses, as the boundary has it.
struct Currency {
  ZRCY value = 0;
  friend constexpr bool operator==(Currency left, Currency right) noexcept { return left.value == right.value; }
  friend constexpr bool operator!=(Currency left, Currency right) noexcept { return left.value != right.value; }
};

/// ValueTraits connects a C++ type with a tag of variants. It is defined for the types that a Variant can have:
///
///   kTag             the tag
///   Load(payload)    a copy of the value in a record with that tag
///   Take(payload)    the value itself; the record must not be cleared afterwards
///   Store(payload)   stores a value in a record that has none
template <class T, class = void>
struct ValueTraits;

namespace detail {

template <class T, uint16_t tag, class Field, Field ZRVARIANTVALUE::*field>
struct ScalarTraits {
  static constexpr uint16_t kTag = tag;
  static T Load(const ZRVARIANTVALUE& payload) noexcept { return static_cast<T>(payload.*field); }
  static T Take(ZRVARIANTVALUE& payload) noexcept { return Load(payload); }
  static void Store(ZRVARIANTVALUE& payload, T value) noexcept { payload.*field = static_cast<Field>(value); }
};

template <std::size_t size, bool isSigned>
struct IntegerField;
template <>
struct IntegerField<1, true> : ScalarTraits<int8_t, ZR_VT_I1, int8_t, &ZRVARIANTVALUE::i1> {};
template <>
struct IntegerField<2, true> : ScalarTraits<int16_t, ZR_VT_I2, int16_t, &ZRVARIANTVALUE::i2> {};
template <>
struct IntegerField<4, true> : ScalarTraits<int32_t, ZR_VT_I4, int32_t, &ZRVARIANTVALUE::i4> {};
template <>
struct IntegerField<8, true> : ScalarTraits<int64_t, ZR_VT_I8, int64_t, &ZRVARIANTVALUE::i8> {};
template <>
struct IntegerField<1, false> : ScalarTraits<uint8_t, ZR_VT_UI1, uint8_t, &ZRVARIANTVALUE::ui1> {};
template <>
struct IntegerField<2, false> : ScalarTraits<uint16_t, ZR_VT_UI2, uint16_t, &ZRVARIANTVALUE::ui2> {};
template <>
struct IntegerField<4, false> : ScalarTraits<uint32_t, ZR_VT_UI4, uint32_t, &ZRVARIANTVALUE::ui4> {};
template <>
struct IntegerField<8, false> : ScalarTraits<uint64_t, ZR_VT_UI8, uint64_t, &ZRVARIANTVALUE::ui8> {};

// Characters are not numbers: what a caller means by one is anybody's guess.
template <class T>
constexpr bool kIsInteger = std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
                            !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char16_t> && !std::is_same_v<T, char32_t>
#if defined(__cpp_char8_t)
                            && !std::is_same_v<T, char8_t>
#endif
    ;

// Values that a record holds by a handle with an owner in this layer.
template <class Owner, uint16_t tag, class Handle, Handle ZRVARIANTVALUE::*field>
struct OwnerTraits {
  static constexpr uint16_t kTag = tag;
  static Owner Load(const ZRVARIANTVALUE& payload) {
    struct Borrowed {
      Owner owner;
      ~Borrowed() { (void)owner.Detach(); }  // also if the copy throws: the payload keeps the handle
    } borrowed{Owner::Adopt(payload.*field)};
    return borrowed.owner;
  }
  static Owner Take(ZRVARIANTVALUE& payload) noexcept { return Owner::Adopt(payload.*field); }
  static void Store(ZRVARIANTVALUE& payload, Owner value) noexcept { payload.*field = value.Detach(); }
};

// Values that a record holds by a pointer to an allocated record.
template <class Value, class Record, uint16_t tag, Record* ZRVARIANTVALUE::*field,
          ZRRESULT (*copy)(const Record*, Record**), void (*destroy)(Record*) noexcept>
struct RecordTraits {
  static constexpr uint16_t kTag = tag;
  static Value Load(const ZRVARIANTVALUE& payload) noexcept {
    return payload.*field != nullptr ? Value(*(payload.*field)) : Value();
  }
  static Value Take(ZRVARIANTVALUE& payload) noexcept {
    const Value value = Load(payload);
    destroy(payload.*field);
    return value;
  }
  static void Store(ZRVARIANTVALUE& payload, const Value& value) { (void)copy(&value, &(payload.*field)); }
};

template <class T, class = void>
struct HasValueTraits : std::false_type {};
template <class T>
struct HasValueTraits<T, std::void_t<decltype(ValueTraits<T>::kTag)>> : std::true_type {};

}  // namespace detail

template <class T>
struct ValueTraits<T, std::enable_if_t<detail::kIsInteger<T>>> : detail::IntegerField<sizeof(T), std::is_signed_v<T>> {
};
template <>
struct ValueTraits<bool> {
  static constexpr uint16_t kTag = ZR_VT_BOOL;
  static bool Load(const ZRVARIANTVALUE& payload) noexcept { return payload.boolean != 0; }
  static bool Take(ZRVARIANTVALUE& payload) noexcept { return Load(payload); }
  static void Store(ZRVARIANTVALUE& payload, bool value) noexcept { payload.boolean = value ? 1 : 0; }
};
template <>
struct ValueTraits<float> : detail::ScalarTraits<float, ZR_VT_R4, float, &ZRVARIANTVALUE::r4> {};
template <>
struct ValueTraits<double> : detail::ScalarTraits<double, ZR_VT_R8, double, &ZRVARIANTVALUE::r8> {};
template <>
struct ValueTraits<char32_t> : detail::ScalarTraits<char32_t, ZR_VT_CHAR32, uint32_t, &ZRVARIANTVALUE::char32> {};
template <>
struct ValueTraits<DateTime> {
  static constexpr uint16_t kTag = ZR_VT_DATETIME;
  static DateTime Load(const ZRVARIANTVALUE& payload) noexcept { return DateTime(payload.dateTime); }
  static DateTime Take(ZRVARIANTVALUE& payload) noexcept { return Load(payload); }
  static void Store(ZRVARIANTVALUE& payload, DateTime value) noexcept { payload.dateTime = value.Ticks(); }
};
/// A TimeSpan is a ZR_VT_TIME.
template <>
struct ValueTraits<TimeSpan> {
  static constexpr uint16_t kTag = ZR_VT_TIME;
  static TimeSpan Load(const ZRVARIANTVALUE& payload) noexcept { return TimeSpan(payload.time); }
  static TimeSpan Take(ZRVARIANTVALUE& payload) noexcept { return Load(payload); }
  static void Store(ZRVARIANTVALUE& payload, TimeSpan value) noexcept { payload.time = value.Ticks(); }
};
template <>
struct ValueTraits<Currency> {
  static constexpr uint16_t kTag = ZR_VT_CY;
  static Currency Load(const ZRVARIANTVALUE& payload) noexcept { return Currency{payload.cy}; }
  static Currency Take(ZRVARIANTVALUE& payload) noexcept { return Load(payload); }
  static void Store(ZRVARIANTVALUE& payload, Currency value) noexcept { payload.cy = value.value; }
};
template <>
struct ValueTraits<String> : detail::OwnerTraits<String, ZR_VT_STR, ZRSTR, &ZRVARIANTVALUE::string> {};
template <>
struct ValueTraits<Blob> : detail::OwnerTraits<Blob, ZR_VT_BLOB, ZRBLOB, &ZRVARIANTVALUE::blob> {};
template <>
struct ValueTraits<Sref> : detail::OwnerTraits<Sref, ZR_VT_SREF, ZRSREF*, &ZRVARIANTVALUE::sref> {};
template <>
struct ValueTraits<Ptr<IZrUnknown>>
    : detail::OwnerTraits<Ptr<IZrUnknown>, ZR_VT_UNKNOWN, IZrUnknown*, &ZRVARIANTVALUE::unknown> {};
template <>
struct ValueTraits<Uuid>
    : detail::RecordTraits<Uuid, ZRUUID, ZR_VT_UUID, &ZRVARIANTVALUE::uuid, ZrCopyUUID, ZrDestroyUUID> {};
template <>
struct ValueTraits<Ref> : detail::RecordTraits<Ref, ZRREF, ZR_VT_REF, &ZRVARIANTVALUE::ref, ZrCopyREF, ZrDestroyREF> {};

/// Variant owns the value of a record with a tag word, or nothing.
class Variant {
 public:
  /// Makes an empty variant.
  Variant() noexcept = default;
  /// Makes a variant with a value of a type that ValueTraits knows. Throws std::bad_alloc when out of memory, as the
  /// copy of the value does.
  template <class T, class = std::enable_if_t<detail::HasValueTraits<std::decay_t<T>>::value>>
  Variant(T&& value) {
    using Traits = ValueTraits<std::decay_t<T>>;
    Traits::Store(value_.Value, std::forward<T>(value));
    value_.Type = Traits::kTag;  // last: Store may throw
  }
  /// Makes a ZR_VT_STR with a copy of a text.
  Variant(StringView units) : Variant(String(units)) {}
  Variant(const WCHAR* text) : Variant(String(text)) {}
  Variant(const std::basic_string<WCHAR>& units) : Variant(String(units)) {}
  /// Takes an array. Null makes an empty variant.
  Variant(AnyArray array) noexcept {
    if (array.Get() == nullptr) return;
    value_.Type = static_cast<uint16_t>(array.Tag() | ZR_VT_ARRAY);
    value_.Value.array = array.Detach();
  }
  /// Takes an array with a fixed element type (array.hpp).
  template <class T>
  Variant(Array<T> array) noexcept : Variant(AnyArray(std::move(array))) {}
  /// An object is held by its IZrUnknown.
  template <class I, class = std::enable_if_t<!std::is_same_v<I, IZrUnknown>>>
  Variant(Ptr<I> object) : Variant(Ptr<IZrUnknown>(std::move(object))) {}
  /// 8-bit text has no encoding of its own: use String::FromUtf8.
  Variant(const char*) = delete;
  Variant(std::string_view) = delete;

  /// Copies the value. A record with an unknown tag becomes empty.
  Variant(const Variant& other) { CopyFrom(other); }
  Variant(Variant&& other) noexcept : value_(other.Detach()) {}
  Variant& operator=(Variant other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Variant() { Release(); }

  /// Adopt takes the value of a record. The caller must not clear the record afterwards. A variant of a record by
  /// reference must not outlive the variable that the record refers to.
  [[nodiscard]] static Variant Adopt(const ZRVARIANT& record) noexcept {
    Variant made;
    made.value_ = record;
    return made;
  }
  /// CopyOf copies a record. If the record is by reference, the value that it refers to is copied. The codes are those
  /// of ZrVariantCopyInd: ZR_R_INVALID_ARGUMENTS for an unknown tag. Throws std::bad_alloc when out of memory.
  static Result<Variant> CopyOf(const ZRVARIANT& record) {
    Variant copy;
    if (const ZRRESULT result = ZrVariantCopyInd(&copy.value_, &record); Failed(result)) return Failure{result};
    return copy;
  }

  /// Get lends the record to functions of the C boundary.
  [[nodiscard]] const ZRVARIANT* Get() const noexcept { return &value_; }
  /// Put clears the value and returns the address for an out-parameter.
  [[nodiscard]] ZRVARIANT* Put() {
    Clear();
    return &value_;
  }
  /// Detach gives the value to the caller, who clears the record with ZrVariantClear.
  [[nodiscard]] ZRVARIANT Detach() noexcept {
    const ZRVARIANT record = value_;
    value_ = ZR_VARIANT_INIT;
    return record;
  }
  /// Clear releases the value, which leaves an empty variant.
  void Clear() {
    Release();
    value_ = ZR_VARIANT_INIT;
  }

  /// Type returns the tag word, with flags; Tag only the tag in it. IsArray and IsReference return whether the value is
  /// an array (ZR_VT_ARRAY), or is elsewhere (ZR_VT_BYREF).
  [[nodiscard]] uint16_t Type() const noexcept { return value_.Type; }
  [[nodiscard]] uint16_t Tag() const noexcept { return value_.Type & ZR_VT_TYPEMASK; }
  [[nodiscard]] bool IsEmpty() const noexcept { return value_.Type == ZR_VT_EMPTY; }
  [[nodiscard]] bool IsArray() const noexcept { return (value_.Type & ZR_VT_ARRAY) != 0; }
  [[nodiscard]] bool IsReference() const noexcept { return (value_.Type & ZR_VT_BYREF) != 0; }
  /// IsContentEmpty returns whether the value is empty as ZrVariantIsContentEmpty understands it, such as a text
  /// without units.
  [[nodiscard]] bool IsContentEmpty() const noexcept { return ZrVariantIsContentEmpty(&value_) != 0; }
  /// Is returns whether the variant has a value of type T, so that To<T> only copies it.
  template <class T>
  [[nodiscard]] bool Is() const noexcept {
    return value_.Type == ValueTraits<T>::kTag;
  }

  /// To returns the value as a T, converted by the library if it has another type.
  ///
  /// @return
  ///   - ZR_R_OK                 the value was copied or converted. If there is no memory for a new text, the String is
  ///                             empty.
  ///   - ZR_R_NOT_SUPPORTED      the types do not convert, the variant is empty, or the value is an array.
  ///   - ZR_R_INVALID_ARGUMENTS  a number is out of range, or a text is not a date, time, UUID or reference.
  ///   - ZR_R_FAILED             a text is not a number, or not one in the range of T.
  ///   - another code            as ZrVariantChangeType or, for a value by reference, ZrVariantCopyInd (variant.h).
  /// @throws std::bad_alloc when out of memory.
  ///
  /// A ZR_VT_QWORD, which no constructor makes, must not be converted to a DateTime: its number is read as an address.
  template <class T>
  Result<T> To() const& {
    using Traits = ValueTraits<T>;
    if (value_.Type == Traits::kTag) return Traits::Load(value_.Value);
    return Converted<T>(value_);
  }
  /// Of a variant that is moved or a temporary, a value that has type T already is moved out. The variant is empty
  /// then.
  template <class T>
  Result<T> To() && {
    using Traits = ValueTraits<T>;
    if (value_.Type != Traits::kTag) return Converted<T>(value_);
    ZRVARIANT taken = Detach();
    return Traits::Take(taken.Value);
  }

  /// ChangeType converts the value in place, an array element by element. After a failure the value is as before. The
  /// codes are those of ZrVariantChangeType; ZR_R_NOT_SUPPORTED for a value by reference. Throws std::bad_alloc when
  /// out of memory.
  Result<void> ChangeType(uint16_t tag) { return Result<void>(ZrVariantChangeType(&value_, &value_, 0, tag)); }

  /// ToArray returns a copy of the array. TakeArray moves it out, which leaves an empty variant. ZR_R_NOT_SUPPORTED if
  /// the value is not an array, or is an array by reference or null.
  Result<AnyArray> ToArray() const& {
    if (!HoldsArray()) return Failure{ZR_R_NOT_SUPPORTED};
    AnyArray copy;
    if (const ZRRESULT result = ZrSafeArrayCopy(value_.Value.array, copy.Put()); Failed(result)) return Failure{result};
    return copy;
  }
  Result<AnyArray> TakeArray() {
    if (!HoldsArray()) return Failure{ZR_R_NOT_SUPPORTED};
    return AnyArray::Adopt(Detach().Value.array);
  }

  /// Two variants are equal if ZrVariantCompare says so: values of one type compare as values, and numbers of different
  /// types are different.
  friend bool operator==(const Variant& left, const Variant& right) {
    uint8_t equal = 0;
    return !Failed(ZrVariantCompare(&left.value_, &right.value_, &equal)) && equal != 0;
  }
  friend bool operator!=(const Variant& left, const Variant& right) { return !(left == right); }

 private:
  [[nodiscard]] bool HoldsArray() const noexcept {
    return (value_.Type & (ZR_VT_ARRAY | ZR_VT_BYREF)) == ZR_VT_ARRAY && value_.Value.array != nullptr;
  }

  // No tag word below ZR_VT_BLOB owns anything, so a number needs no call.
  void Release() {
    if (value_.Type >= ZR_VT_BLOB) (void)ZrVariantClear(&value_);
  }

  // The part of To that calls the library. The test before it is inlined where the two are separate functions.
  template <class T>
  static Result<T> Converted(const ZRVARIANT& record) {
    Variant converted;
    const ZRVARIANT* source = &record;
    if ((record.Type & ZR_VT_BYREF) != 0) {
      if (const ZRRESULT result = ZrVariantCopyInd(&converted.value_, source); Failed(result)) return Failure{result};
      source = &converted.value_;
    }
    if ((source->Type & ZR_VT_ARRAY) != 0) return Failure{ZR_R_NOT_SUPPORTED};  // the export would convert its elements
    const ZRRESULT result = ZrVariantChangeType(&converted.value_, source, 0, ValueTraits<T>::kTag);
    if (Failed(result)) return Failure{result};
    converted.value_.Type = ZR_VT_EMPTY;  // Take takes what the record owns
    return Result<T>(ValueTraits<T>::Take(converted.value_.Value), result);
  }

  // Only a record with an unknown tag cannot be copied; the copy is empty then.
  void CopyFrom(const Variant& other) {
    if (Failed(ZrVariantCopy(&value_, &other.value_))) value_ = ZR_VARIANT_INIT;
  }

  ZRVARIANT value_ = ZR_VARIANT_INIT;
};
static_assert(sizeof(Variant) == sizeof(ZRVARIANT), "a Variant is its record");

}  // namespace zr

#endif
