// Variant records from initialisation to release: what each kind of payload needs when it is copied and released.
//
// Each operation first looks at the flags and then at the kind of the tag (variant_tags.h):
//
//     tag word           copy                            release               CopyInd
//     number             the whole record                nothing               as copy
//     owned kind         DuplicatePayload                ReleasePayload        as copy
//     any | ARRAY        CopyArray                       DestroyArray          as copy
//     any | BYREF        the address                     nothing               a copy of what is at the address
//     VARIANT | BYREF    the address                     nothing               a copy of the last record of the chain
//
// The exports validate in the order that variant.h states. A destination is released before the source's Value is read,
// so a record that is copied onto itself becomes empty: callers rely on it.

#include "variants/variant_record.h"

#include <cstring>

#include "blobs/blob_handle.h"
#include "identifiers/reference.h"
#include "text/counted_string.h"
#include "variants/array_payload.h"

// ---- Payloads ------------------------------------------------------------------------------------------------------

ZRSREF* DuplicateSref(const ZRSREF& source) {
  ZRSREF* copy = nullptr;
  (void)ZrCopySREF(&source, &copy);  // an SREF without ref and text has no copy, which is a success
  return copy;
}

ZRVARIANTVALUE DuplicatePayload(PayloadKind kind, ZRVARIANTVALUE payload) {
  if (kind == PayloadKind::String) {  // first, since null is not copied as null but as the empty string
    payload.string = ShareString(payload.string);
    return payload;
  }
  if (payload.address == nullptr) return payload;
  switch (kind) {
    case PayloadKind::Blob:
      payload.blob = ShareBlob(payload.blob);
      break;
    case PayloadKind::Interface:
      payload.unknown->AddRef();
      break;
    case PayloadKind::Uuid:
      payload.uuid = HeapNew<ZRUUID>(*payload.uuid);
      break;
    case PayloadKind::Ref:
      payload.ref = AllocateRef(*payload.ref);
      break;
    case PayloadKind::Sref:
      payload.sref = DuplicateSref(*payload.sref);
      break;
    default:
      break;  // nothing to own
  }
  return payload;
}

void ReleasePayload(PayloadKind kind, ZRVARIANTVALUE payload) {
  if (payload.address == nullptr) return;
  switch (kind) {
    case PayloadKind::Blob:
      ReleaseBlob(payload.blob);
      break;
    case PayloadKind::Interface:
      payload.unknown->Release();
      break;
    case PayloadKind::Uuid:
      ZrDestroyUUID(payload.uuid);
      break;
    case PayloadKind::String:
      ReleaseString(payload.string);
      break;
    case PayloadKind::Ref:
      RecycleRef(payload.ref);
      break;
    case PayloadKind::Sref:
      ZrDestroySREF(payload.sref);
      break;
    default:
      break;  // nothing owned
  }
}

// ---- Records -------------------------------------------------------------------------------------------------------

ZRRESULT ReleaseOwned(uint16_t tagWord, ZRVARIANTVALUE value) {
  if (HasFlag(tagWord, ZR_VT_ARRAY)) return DestroyArray(value.array);
  ReleasePayload(TagOf(tagWord).kind, value);
  return ZR_R_OK;
}

// The tag word is stored first and nothing is stored twice, so an exception from a copy leaves a record that any
// function accepts: the tag word and a null Value. A by-reference record with the tag 0 loses its address.
//
// Inlined into ZrVariantCopy: for most records the copy takes less time than another call.
[[gnu::always_inline]] static inline ZRRESULT CopyRecord(ZRVARIANT& destination, const ZRVARIANT& source) {
  const uint16_t tagWord = source.Type;
  const PayloadKind kind = TagOf(tagWord).kind;
  if (IsInline(kind) && !HasFlag(tagWord, ZR_VT_ARRAY)) {
    destination = source;  // marker words included, which ZrVariantCompare compares for numbers
    return ZR_R_OK;
  }
  destination.Type = tagWord;
  const bool isByRef = HasFlag(tagWord, ZR_VT_BYREF);
  if (HasFlag(tagWord, ZR_VT_ARRAY)) {
    if (!isByRef) return CopyArray(source.Value.array, &destination.Value.array);
    destination.Value = source.Value;
    return ZR_R_OK;
  }
  if (kind == PayloadKind::Empty) return ZR_R_OK;
  if (kind == PayloadKind::Unassigned) return ZR_R_INVALID_ARGUMENTS;
  destination.Value = isByRef ? source.Value : DuplicatePayload(kind, source.Value);
  return ZR_R_OK;
}

ZRRESULT CopyIntoReset(ZRVARIANT& destination, const ZRVARIANT& source) { return CopyRecord(destination, source); }

// ---- Copying through an address ------------------------------------------------------------------------------------

// The payload for a by-reference record whose address is null: a new nil record or an empty string, so that the copy is
// a value like any other; but zero for numbers, and null for blobs and interface pointers.
static ZRVARIANTVALUE PayloadForNullAddress(PayloadKind kind) {
  ZRVARIANTVALUE payload = kResetVariant.Value;
  switch (kind) {
    case PayloadKind::Uuid:
      payload.uuid = ZrCreateUUID();
      break;
    case PayloadKind::String:
      payload.string = ShareString(nullptr);
      break;
    case PayloadKind::Ref:
      payload.ref = ZrCreateREF();
      break;
    case PayloadKind::Sref:
      payload.sref = ZrCreateSREF();
      break;
    default:
      break;  // zero or null
  }
  return payload;
}

// A copy of the value at an address. Only the width of the value may be read: the variable that the address refers to
// may be a single byte.
static ZRVARIANTVALUE CopyPayloadAtAddress(CTag tag, const void* address) {
  if (address == nullptr) return PayloadForNullAddress(tag.kind);
  ZRVARIANTVALUE payload = kResetVariant.Value;
  std::memcpy(&payload, address, tag.width);
  return IsOwned(tag.kind) ? DuplicatePayload(tag.kind, payload) : payload;
}

// Copies the value that a by-reference record refers to into a record that has been reset. A Carried source is a
// reference to a record whose address is null: it becomes a ZR_VT_VARIANT with a null Value.
static ZRRESULT CopyReferenced(ZRVARIANT& destination, const ZRVARIANT& source) {
  const uint16_t tagWord = source.Type & ZR_VT_TYPEMASK;
  const void* address = source.Value.address;
  if (HasFlag(source.Type, ZR_VT_ARRAY)) {
    if (address == nullptr) return ZR_R_INVALID_POINTER;
    destination.Type = tagWord | ZR_VT_ARRAY;
    return CopyArray(ArrayAtAddress(address), &destination.Value.array);
  }
  const CTag tag = TagOf(tagWord);
  destination.Type = tagWord;
  if (tag.kind == PayloadKind::Empty || tag.kind == PayloadKind::Unassigned) return ZR_R_INVALID_ARGUMENTS;
  if (tag.kind != PayloadKind::Carried) destination.Value = CopyPayloadAtAddress(tag, address);
  return ZR_R_OK;
}

// ---- The exports ---------------------------------------------------------------------------------------------------

ZRRESULT ZrVariantInit(ZRVARIANT* variant) noexcept {
  if (variant == nullptr) return ZR_R_INVALID_POINTER;
  *variant = kResetVariant;
  return ZR_R_OK;
}

// The tag word is judged after the record is zero: callers rely on the zeros whatever the result is. Tags that are not
// assigned, and tag 0 together with flags or bits without meaning, are invalid arguments; an array of any tag is valid.
ZRRESULT ZrVariantClear(ZRVARIANT* variant) {
  if (variant == nullptr) return ZR_R_INVALID_POINTER;
  if (variant->Type == ZR_VT_EMPTY) return ZR_R_OK;
  const uint16_t tagWord = variant->Type;
  if (OwnsSomething(tagWord)) return ReleaseOwned(tagWord, std::exchange(*variant, ZRVARIANT{}).Value);
  *variant = ZRVARIANT{};
  const PayloadKind kind = TagOf(tagWord).kind;
  const bool isInvalid = kind == PayloadKind::Unassigned || kind == PayloadKind::Empty;
  return isInvalid && !HasFlag(tagWord, ZR_VT_ARRAY) ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK;
}

ZRRESULT ZrVariantCopy(ZRVARIANT* destination, const ZRVARIANT* source) {
  if (destination == nullptr || source == nullptr) return ZR_R_INVALID_POINTER;
  ResetVariant(*destination);
  return CopyRecord(*destination, *source);
}

// References to records are followed up to the first record that holds its value, or that refers to something else than
// a record. The test ignores the bits without meaning but not ZR_VT_ARRAY: a reference to an array of variants is not a
// reference to a record.
//
// A by-reference record that is both arguments is reset before it is read: it is empty then, and fails in
// CopyReferenced.
ZRRESULT ZrVariantCopyInd(ZRVARIANT* destination, const ZRVARIANT* source) {
  if (destination == nullptr || source == nullptr) return ZR_R_INVALID_POINTER;
  if (!HasFlag(source->Type, ZR_VT_BYREF)) return ZrVariantCopy(destination, source);
  ResetVariant(*destination);
  constexpr uint16_t kReferenceToRecord = ZR_VT_VARIANT | ZR_VT_BYREF;
  constexpr uint16_t kKnownBits = ZR_VT_TYPEMASK | ZR_VT_ARRAY | ZR_VT_BYREF;
  while ((source->Type & kKnownBits) == kReferenceToRecord && source->Value.address != nullptr) {
    source = static_cast<const ZRVARIANT*>(source->Value.address);
    if (!HasFlag(source->Type, ZR_VT_BYREF)) return CopyIntoReset(*destination, *source);
  }
  return CopyReferenced(*destination, *source);
}

// Whether a payload has no content. Numbers and interface pointers always have content, even 0 and null.
static bool IsPayloadEmpty(PayloadKind kind, ZRVARIANTVALUE payload) noexcept {
  switch (kind) {
    case PayloadKind::Blob: {
      uint32_t length = 0;  // stays 0 for a null handle
      (void)ZrBlobByteLen(payload.blob, &length);
      return length == 0;
    }
    case PayloadKind::Uuid: {
      static constexpr ZRUUID kNil{};
      return payload.uuid == nullptr || std::memcmp(payload.uuid, &kNil, sizeof kNil) == 0;
    }
    case PayloadKind::String:
      return StringLen(payload.string) == 0;
    case PayloadKind::Ref:
      return payload.ref == nullptr || IsNilRef(*payload.ref);
    case PayloadKind::Sref:
      if (payload.sref == nullptr) return true;
      return payload.sref->ref != nullptr ? IsNilRef(*payload.sref->ref) : StringLen(payload.sref->text) == 0;
    default:
      return false;
  }
}

// A null array has content, and so has a null address: both are the same word of the record, so one check covers both.
// Callers rely on it, although a null string or blob has no content.
static bool IsArrayEmpty(const ZRVARIANT& variant) noexcept {
  ZRSAFEARRAY array = variant.Value.array;
  if (array != nullptr && HasFlag(variant.Type, ZR_VT_BYREF)) array = ArrayAtAddress(variant.Value.address);
  return array != nullptr && ArrayElementCount(array) == 0;
}

// Each turn of the loop examines one record; a reference to a record leads to the next turn.
//
// For an owned kind that is held by reference, the handle is read at the address. Numbers and interface pointers are
// never empty, so their addresses are not read and may be null.
uint8_t ZrVariantIsContentEmpty(const ZRVARIANT* variant) noexcept {
  if (variant == nullptr) return 0;
  for (;; variant = static_cast<const ZRVARIANT*>(variant->Value.address)) {
    if (HasFlag(variant->Type, ZR_VT_ARRAY)) return IsArrayEmpty(*variant);
    const PayloadKind kind = TagOf(variant->Type).kind;
    if (kind == PayloadKind::Unassigned || kind == PayloadKind::Empty) return 1;
    const bool isByRef = HasFlag(variant->Type, ZR_VT_BYREF);
    if (kind != PayloadKind::Carried) {
      ZRVARIANTVALUE payload = variant->Value;
      if (isByRef && IsOwned(kind) && kind != PayloadKind::Interface) {
        if (payload.address == nullptr) return 1;
        std::memcpy(&payload, payload.address, sizeof payload);
      }
      return IsPayloadEmpty(kind, payload);
    }
    if (!isByRef) return 0;
    if (variant->Value.address == nullptr) return 1;
  }
}
