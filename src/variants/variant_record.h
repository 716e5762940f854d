// Variant records inside the library: release, copy, and an owner.
//
// A record owns its payload in two cases only: it has ZR_VT_ARRAY without ZR_VT_BYREF, or neither flag and a tag of an
// owned kind (string, blob, UUID, REF, SREF, interface pointer).
//
//     STR, string handle          one reference on the string: ReleaseOwned releases it
//     STR | BYREF, address        nothing: the variable at the address belongs to somebody else
//     STR | ARRAY, array handle   the array and all its elements
//     I4, number                  nothing
//
// What holds everywhere below:
//   1. A record whose tag word has ZR_VT_BYREF owns nothing, whatever its tag.
//   2. A copy writes the tag word first and then the whole payload at once. So when making the payload throws, the
//      destination has its tag and a null payload, and every function accepts such a record.
//   3. A record is released in the opposite order: it is reset first, and its payload is released afterwards. So if
//      Release of a foreign object throws, or looks at the record, the record is empty.
//   4. A record is read field by field, and Value only if the record owns it. Often one field has just been written; a
//      wider load would wait until that store has reached the cache.

#pragma once

#include <cassert>
#include <utility>

#include "identifiers/reference_records.h"
#include "runtime/heap.h"
#include "variants/variant_tags.h"

// An empty record with its marker words, as ZrVariantInit writes it.
inline constexpr ZRVARIANT kResetVariant = ZR_VARIANT_INIT;

// ---- Payloads ------------------------------------------------------------------------------------------------------

// A copy of an SREF; null if, and only if, the SREF has neither a ref nor a text. Throws std::bad_alloc.
[[nodiscard]] ZRSREF* DuplicateSref(const ZRSREF& source);

// Makes a payload of an owned kind for one more owner. Strings and blobs are shared, interface pointers get one more
// reference, records are duplicated. Null stays null, except that a null string becomes the shared empty string. Throws
// std::bad_alloc.
[[nodiscard]] ZRVARIANTVALUE DuplicatePayload(PayloadKind kind, ZRVARIANTVALUE payload);

// Releases a payload of any kind. Null is ignored, and so are kinds that own nothing.
void ReleasePayload(PayloadKind kind, ZRVARIANTVALUE payload);

// ---- Records -------------------------------------------------------------------------------------------------------

// Whether a record with this tag word owns its payload. It is inline, so that records without an owner, which are most
// of them, are released without a call.
inline bool OwnsSomething(uint16_t tagWord) noexcept {
  if (HasFlag(tagWord, ZR_VT_BYREF)) return false;
  return HasFlag(tagWord, ZR_VT_ARRAY) || IsOwned(TagOf(tagWord).kind);
}

// Releases what a record with this tag word and this payload owns. OwnsSomething(tagWord) must be true. Fails only for
// an array whose handle is null.
ZRRESULT ReleaseOwned(uint16_t tagWord, ZRVARIANTVALUE value);

// Resets a record, then releases what it owned. Errors of the release are ignored.
inline void ResetVariant(ZRVARIANT& variant) {
  const uint16_t tagWord = variant.Type;
  if (!OwnsSomething(tagWord)) {
    variant = kResetVariant;
    return;
  }
  const ZRVARIANTVALUE value = variant.Value;
  variant = kResetVariant;
  (void)ReleaseOwned(tagWord, value);
}

// Makes a copy of `source` in a record that has been reset. `source` may be the same record, which is empty then, and
// so the copy is empty. The result is that of ZrVariantCopy; after a failure the destination has the source's tag word
// and a null Value.
ZRRESULT CopyIntoReset(ZRVARIANT& destination, const ZRVARIANT& source);

// A record of the library's own, released at the end of the scope.
class CVariantHolder {
 public:
  CVariantHolder() noexcept = default;
  // Takes over what the record owns and resets the record. A value that is not owned, such as a number, is not taken
  // over but dropped: the holder is empty then.
  static CVariantHolder Adopt(ZRVARIANT& variant) noexcept {
    CVariantHolder holder;
    if (OwnsSomething(variant.Type)) {
      holder.variant_.Type = variant.Type;
      holder.variant_.Value = variant.Value;
    }
    variant = kResetVariant;
    return holder;
  }
  CVariantHolder(CVariantHolder&& other) noexcept : variant_(other.Detach()) {}
  CVariantHolder& operator=(CVariantHolder&& other) noexcept {
    CVariantHolder taken(std::move(other));
    std::swap(variant_, taken.variant_);  // `taken` releases what this held
    return *this;
  }
  ~CVariantHolder() { ResetVariant(variant_); }

  const ZRVARIANT& Get() const noexcept { return variant_; }
  ZRVARIANT& Mutable() noexcept { return variant_; }
  [[nodiscard]] ZRVARIANT Detach() noexcept { return std::exchange(variant_, kResetVariant); }
  ZRVARIANT* Receive() noexcept {  // for an out-parameter
    assert(!OwnsSomething(variant_.Type));
    return &variant_;
  }

 private:
  ZRVARIANT variant_ = kResetVariant;
};
