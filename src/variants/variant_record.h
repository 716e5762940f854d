// Records as the rest of the library holds them: release, copy, and an owner.
//
// What holds everywhere below:
//   1. A record whose tag word has ZR_VT_BYREF owns nothing, whatever its tag.
//   2. The tag word is written before the payload and the payload in one step: a record that an exception leaves behind
//      has its tag and a null payload, which every function takes.
//   3. A record is read field by field, and Value only where it is owned: one of the fields has often just been
//      written, and a wider load would have to wait until that store has reached the cache.

#pragma once

#include <cassert>
#include <utility>

#include "identifiers/reference_records.h"
#include "runtime/heap.h"
#include "variants/variant_tags.h"

inline constexpr ZRVARIANT kResetVariant = ZR_VARIANT_INIT;

// ---- Payloads ------------------------------------------------------------------------------------------------------

// A copy of a record that may lack both: then, and only then, null. Throws std::bad_alloc.
[[nodiscard]] ZRSREF* DuplicateSref(const ZRSREF& source);

// One more owner of an owned kind's payload: shares, retains or duplicates. Null stays null, but a null string becomes
// an empty one.
[[nodiscard]] ZRVARIANTVALUE DuplicatePayload(PayloadKind kind, ZRVARIANTVALUE payload);

void ReleasePayload(PayloadKind kind, ZRVARIANTVALUE payload);

// ---- Records -------------------------------------------------------------------------------------------------------

// Whether there is anything to release, so that most records need no call.
inline bool OwnsSomething(uint16_t tagWord) noexcept {
  if (HasFlag(tagWord, ZR_VT_BYREF)) return false;
  return HasFlag(tagWord, ZR_VT_ARRAY) || IsOwned(TagOf(tagWord).kind);
}

// Lets go of what a record owns that has this tag word and, if it owns something, this payload.
ZRRESULT ReleaseOwned(uint16_t tagWord, ZRVARIANTVALUE value);

// Releases without a word and writes the reset pattern; the pattern first, should a release throw.
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

// Makes a copy of `source` in a record that has been reset; the source may be this very record.
ZRRESULT CopyIntoReset(ZRVARIANT& destination, const ZRVARIANT& source);

// A record of the library's own, released at the end of the scope.
class CVariantHolder {
 public:
  CVariantHolder() noexcept = default;
  static CVariantHolder Adopt(ZRVARIANT& variant) noexcept {  // what it owns; no numbers
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
    std::swap(variant_, taken.variant_);  // what this held goes with `taken`
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
