// The kinds of elements: how one element is initialised, copied, released, read and compared.
//
// There are three shapes of kinds: plain elements (numbers and UUIDs), pointers, and variants. Plain elements are
// copied and compared by their bytes and need no operations. The others have these:
//
//   Initialise      turns elements of zero bytes into empty ones
//   Copy            into a new element, when an array is copied
//   CopyForRedim    the same when the shape of an array changes
//   Acquire         makes a copy of a value that is put; a result other than ZR_R_OK refuses the value
//   Release         releases an element that is not null
//   Deliver         copies an element into a caller's variable
//   DeliverNothing  is called instead if the array has no elements
//   AreEqual        is false also if the family's comparison fails or writes no result
//
// Callers rely on what each operation does with null and with an SREF that has neither a ref nor a text ("no content"):
//
//                   null string    null blob   null REF or SREF   no content           null interface pointer
//   Copy            null           null        null               null                 null
//   CopyForRedim    empty string   null        null               null                 null
//   Acquire         empty string   null        refused            refused, result 1    null
//   Deliver         unchanged      unchanged   unchanged          null                 null

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

// Whether a family's own comparison succeeds and finds the elements equal. The result is 0 if the comparison writes
// nothing.
template <auto compare, class Pointer>
bool AreEqualBy(Pointer left, Pointer right) noexcept(noexcept(compare(left, right, nullptr))) {
  uint8_t equal = 0;
  return compare(left, right, &equal) == ZR_R_OK && equal != 0;
}

// The operations that all kinds of pointers share. Traits is the derived class with the three others: Acquire, Release
// and AreEqual.
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
  // Null is passed on, unlike in Copy: a null string becomes an empty one. A value that is refused stays null.
  static void CopyForRedim(const Element& from, Element& to) { (void)Traits::Acquire(from, to); }
  // The variable's old value is overwritten and not released. A null element does not even overwrite it.
  static ZRRESULT Deliver(const Element& from, Element& to) {
    if (from != nullptr) (void)Traits::Acquire(from, to);
    return ZR_R_OK;
  }
  static void DeliverNothing(Element& /*to*/) noexcept {}
};

// Each array element has a blob handle of its own; the bytes are shared until one of them is changed.
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
    to = ShareString(from);  // the shared empty string for null
    return ZR_R_OK;
  }
  static void Release(ZRSTR element) noexcept { ReleaseString(element); }
  static bool AreEqual(ZRSTR left, ZRSTR right) noexcept { return AreStringsEqual(left, right); }
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

// Interface pointers differ in two ways. A null element is delivered, too: the variable becomes null. And if the array
// has no elements, the object that the caller's variable points at gets one more reference, as if it had been
// delivered. Both are part of the contract. A caller must set the variable to null before a get, or the object that it
// points at leaks.
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

// Variants are copied as ZrVariantCopy does. An element that cannot be copied keeps the tag word with a null Value;
// that is reported by Acquire and Deliver only. Both release the old value of their target first.
struct VariantTraits {
  using Element = ZRVARIANT;
  static constexpr bool kIsPlain = false;
  static constexpr bool kIsPointer = false;
  static constexpr std::size_t kWidth = sizeof(ZRVARIANT);

  static void Initialise(ZRVARIANT* elements, uint32_t count) noexcept {
    for (uint32_t index = 0; index < count; ++index) elements[index] = kResetVariant;
  }
  static void Copy(const ZRVARIANT& from, ZRVARIANT& to) { (void)CopyIntoReset(to, from); }
  static void CopyForRedim(const ZRVARIANT& from, ZRVARIANT& to) { (void)CopyIntoReset(to, from); }
  static ZRRESULT Acquire(const ZRVARIANT& from, ZRVARIANT& to) { return ZrVariantCopy(&to, &from); }
  static void Release(ZRVARIANT& element) { (void)ZrVariantClear(&element); }
  static ZRRESULT Deliver(const ZRVARIANT& from, ZRVARIANT& to) { return ZrVariantCopy(&to, &from); }
  static void DeliverNothing(ZRVARIANT& /*to*/) noexcept {}
  static bool AreEqual(const ZRVARIANT& left, const ZRVARIANT& right) {
    return AreEqualBy<ZrVariantCompare>(&left, &right);
  }
};
