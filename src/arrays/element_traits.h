// The kinds of elements: what a single one needs when it is made, copied, released, delivered and compared.
//
// A kind that is plain is copied and compared by its bytes. The others have these operations:
//
//   Initialise      makes empty elements of zeros
//   Copy            into a fresh element, for the copy of an array; null stays null
//   Carry           the same for a change of shape, where the family's own copy decides
//   Acquire         one more owner for a value that is to be put; a result that isn't ZR_R_OK refuses it
//   Release         of an element that is not null
//   Deliver         into a caller's variable; DeliverNothing where the array has no elements
//   AreEqual        false also where the family's comparison fails

#pragma once

#include <cstddef>
#include <cstdint>

#include "blobs/blob_handle.h"
#include "text/counted_string.h"
#include "variants/variant_record.h"
#include "zrcore/reference.h"
#include "zrcore/variant.h"

template <class T>
struct PlainTraits {
  using Element = T;
  static constexpr bool kIsPlain = true;
  static constexpr std::size_t kWidth = sizeof(T);
};

using UuidTraits = PlainTraits<ZRUUID>;

// By a family's own comparison.
template <auto compare, class Pointer>
bool AreEqualBy(Pointer left, Pointer right) noexcept(noexcept(compare(left, right, nullptr))) {
  uint8_t equal = 0;
  return compare(left, right, &equal) == ZR_R_OK && equal != 0;
}

// What the pointers have in common, by the four operations of their kind.
template <class Traits, class Pointer>
struct PointerTraits {
  using Element = Pointer;
  static constexpr bool kIsPlain = false;
  static constexpr bool kIsPointer = true;
  static constexpr std::size_t kWidth = sizeof(void*);

  static void Initialise(Element* /*elements*/, uint32_t /*count*/) noexcept {}  // zero is null
  static void Copy(const Element& from, Element& to) {
    if (from != nullptr) (void)Traits::Acquire(from, to);
  }
  static void Carry(const Element& from, Element& to) { (void)Traits::Acquire(from, to); }  // a refused one stays null
  static ZRRESULT Deliver(const Element& from, Element& to) {
    if (from != nullptr) (void)Traits::Acquire(from, to);
    return ZR_R_OK;
  }
  static void DeliverNothing(Element& /*to*/) noexcept {}
};

struct BlobTraits : PointerTraits<BlobTraits, ZRBLOB> {
  static ZRRESULT Acquire(ZRBLOB from, ZRBLOB& to) {
    to = ShareBlob(from);
    return ZR_R_OK;
  }
  static void Release(ZRBLOB element) noexcept { ReleaseBlob(element); }
  static bool AreEqual(ZRBLOB left, ZRBLOB right) noexcept { return AreEqualBy<ZrCompareBlob>(left, right); }
};

struct StringTraits : PointerTraits<StringTraits, ZRSTR> {
  static ZRRESULT Acquire(ZRSTR from, ZRSTR& to) noexcept {
    to = ShareString(from);  // of null, the empty string
    return ZR_R_OK;
  }
  static void Release(ZRSTR element) noexcept { ReleaseString(element); }
  static bool AreEqual(ZRSTR left, ZRSTR right) noexcept { return CompareStrings(left, right) == 0; }
};

struct RefTraits : PointerTraits<RefTraits, ZRREF*> {
  static ZRRESULT Acquire(const ZRREF* from, ZRREF*& to) { return ZrCopyREF(from, &to); }
  static void Release(ZRREF* element) noexcept { ZrDestroyREF(element); }
  static bool AreEqual(const ZRREF* left, const ZRREF* right) noexcept { return AreEqualBy<ZrCompareREF>(left, right); }
};

struct SrefTraits : PointerTraits<SrefTraits, ZRSREF*> {
  static ZRRESULT Acquire(const ZRSREF* from, ZRSREF*& to) { return ZrCopySREF(from, &to); }
  static void Release(ZRSREF* element) noexcept { ZrDestroySREF(element); }
  static bool AreEqual(const ZRSREF* left, const ZRSREF* right) noexcept {
    return AreEqualBy<ZrCompareSREF>(left, right);
  }
};

// Objects are delivered null or not, and a caller's variable is taken at its word where there is nothing to deliver.
struct InterfaceTraits : PointerTraits<InterfaceTraits, IZrUnknown*> {
  static ZRRESULT Acquire(IZrUnknown* from, IZrUnknown*& to) {
    if (from != nullptr) from->AddRef();
    to = from;
    return ZR_R_OK;
  }
  static void Release(IZrUnknown* element) { element->Release(); }
  static ZRRESULT Deliver(IZrUnknown* from, IZrUnknown*& to) { return Acquire(from, to); }
  static void DeliverNothing(IZrUnknown*& to) {
    if (to != nullptr) to->AddRef();
  }
  static bool AreEqual(const IZrUnknown* left, const IZrUnknown* right) noexcept { return left == right; }
};

struct VariantTraits {
  using Element = ZRVARIANT;
  static constexpr bool kIsPlain = false;
  static constexpr bool kIsPointer = false;
  static constexpr std::size_t kWidth = sizeof(ZRVARIANT);

  static void Initialise(ZRVARIANT* elements, uint32_t count) noexcept {
    for (uint32_t index = 0; index < count; ++index) elements[index] = kResetVariant;
  }
  static void Copy(const ZRVARIANT& from, ZRVARIANT& to) { (void)CopyIntoReset(to, from); }
  static void Carry(const ZRVARIANT& from, ZRVARIANT& to) { (void)CopyIntoReset(to, from); }
  static ZRRESULT Acquire(const ZRVARIANT& from, ZRVARIANT& to) { return ZrVariantCopy(&to, &from); }
  static void Release(ZRVARIANT& element) { (void)ZrVariantClear(&element); }
  static ZRRESULT Deliver(const ZRVARIANT& from, ZRVARIANT& to) { return ZrVariantCopy(&to, &from); }
  static void DeliverNothing(ZRVARIANT& /*to*/) noexcept {}
  static bool AreEqual(const ZRVARIANT& left, const ZRVARIANT& right) {
    return AreEqualBy<ZrVariantCompare>(&left, &right);
  }
};
