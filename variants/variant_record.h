// Records as the rest of the library holds them: release, copy, and an owner.
//
// What holds everywhere below:
//   1. A record whose tag word has ZR_VT_BYREF owns nothing, whatever its tag.
//   2. The tag word is written before the payload and the payload in one step: a record that an exception leaves behind
//      has its tag and a null payload, which every function takes.

#pragma once

#include <cassert>
#include <utility>

#include "frame/heap.h"
#include "identifiers/reference_records.h"
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

// Lets go of what the record owns, with the result of ZrVariantClear. The record is left as it is.
ZRRESULT ReleaseVariant(const ZRVARIANT& variant);

// Whether there is anything to release, so that most records need no call.
inline bool OwnsSomething(const ZRVARIANT& variant) noexcept {
  if (HasFlag(variant.Type, ZR_VT_BYREF)) return false;
  return HasFlag(variant.Type, ZR_VT_ARRAY) || IsOwned(TagOf(variant.Type).kind);
}

// Releases without a word and writes the reset pattern; the pattern first, should a release throw.
inline void ResetVariant(ZRVARIANT& variant) {
  const ZRVARIANT before = std::exchange(variant, kResetVariant);
  if (OwnsSomething(before)) (void)ReleaseVariant(before);
}

// Makes a copy of `source` in a record that has been reset; the source may be this very record.
ZRRESULT CopyIntoReset(ZRVARIANT& destination, const ZRVARIANT& source);

// A record of the library's own, released at the end of the scope.
class CVariantHolder {
 public:
  CVariantHolder() noexcept = default;
  static CVariantHolder Adopt(ZRVARIANT& variant) noexcept {
    return CVariantHolder(std::exchange(variant, kResetVariant));
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
    assert(!OwnsSomething(variant_));
    return &variant_;
  }

 private:
  explicit CVariantHolder(const ZRVARIANT& variant) noexcept : variant_(variant) {}
  ZRVARIANT variant_ = kResetVariant;
};
