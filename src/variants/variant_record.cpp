// The life of records: what each kind of payload needs when it is copied and when it is released.

#include "variants/variant_record.h"

#include <cstring>

#include "blobs/blob_handle.h"
#include "identifiers/reference.h"
#include "text/counted_string.h"
#include "variants/array_payload.h"

// ---- Payloads ------------------------------------------------------------------------------------------------------

ZRSREF* DuplicateSref(const ZRSREF& source) {
  ZRSREF* copy = nullptr;
  (void)ZrCopySREF(&source, &copy);  // without ref and text there is no copy, which is no failure
  return copy;
}

ZRVARIANTVALUE DuplicatePayload(PayloadKind kind, ZRVARIANTVALUE payload) {
  if (kind == PayloadKind::String) {
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

ZRRESULT CopyIntoReset(ZRVARIANT& destination, const ZRVARIANT& source) {
  const uint16_t tagWord = source.Type;
  const PayloadKind kind = TagOf(tagWord).kind;
  if (IsInline(kind) && !HasFlag(tagWord, ZR_VT_ARRAY)) {
    destination = source;  // the marker words too
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

// ---- Copying through an address ------------------------------------------------------------------------------------

// What a null address stands for.
static ZRVARIANTVALUE PayloadOfNothing(PayloadKind kind) {
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
      break;  // zero, or a null handle
  }
  return payload;
}

static ZRVARIANTVALUE PayloadBehind(CTag tag, const void* address) {
  if (address == nullptr) return PayloadOfNothing(tag.kind);
  ZRVARIANTVALUE payload = kResetVariant.Value;
  std::memcpy(&payload, address, tag.width);
  return IsOwned(tag.kind) ? DuplicatePayload(tag.kind, payload) : payload;
}

static ZRRESULT CopyBehind(ZRVARIANT& destination, const ZRVARIANT& source) {
  const uint16_t tagWord = source.Type & ZR_VT_TYPEMASK;
  const void* address = source.Value.address;
  if (HasFlag(source.Type, ZR_VT_ARRAY)) {
    if (address == nullptr) return ZR_R_INVALID_POINTER;
    destination.Type = tagWord | ZR_VT_ARRAY;
    return CopyArray(ArrayBehind(address), &destination.Value.array);
  }
  const CTag tag = TagOf(tagWord);
  destination.Type = tagWord;
  if (tag.kind == PayloadKind::Empty || tag.kind == PayloadKind::Unassigned) return ZR_R_INVALID_ARGUMENTS;
  if (tag.kind != PayloadKind::Carried) destination.Value = PayloadBehind(tag, address);
  return ZR_R_OK;
}

// ---- The exports ---------------------------------------------------------------------------------------------------

ZRRESULT ZrVariantInit(ZRVARIANT* variant) noexcept {
  if (variant == nullptr) return ZR_R_INVALID_POINTER;
  *variant = kResetVariant;
  return ZR_R_OK;
}

ZRRESULT ZrVariantClear(ZRVARIANT* variant) {
  if (variant == nullptr) return ZR_R_INVALID_POINTER;
  if (variant->Type == ZR_VT_EMPTY) return ZR_R_OK;
  const uint16_t tagWord = variant->Type;
  if (OwnsSomething(tagWord)) return ReleaseOwned(tagWord, std::exchange(*variant, ZRVARIANT{}).Value);
  *variant = ZRVARIANT{};
  const PayloadKind kind = TagOf(tagWord).kind;
  const bool isBad = kind == PayloadKind::Unassigned || kind == PayloadKind::Empty;
  return isBad && !HasFlag(tagWord, ZR_VT_ARRAY) ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK;
}

ZRRESULT ZrVariantCopy(ZRVARIANT* destination, const ZRVARIANT* source) {
  if (destination == nullptr || source == nullptr) return ZR_R_INVALID_POINTER;
  ResetVariant(*destination);
  return CopyIntoReset(*destination, *source);
}

ZRRESULT ZrVariantCopyInd(ZRVARIANT* destination, const ZRVARIANT* source) {
  if (destination == nullptr || source == nullptr) return ZR_R_INVALID_POINTER;
  if (!HasFlag(source->Type, ZR_VT_BYREF)) return ZrVariantCopy(destination, source);
  ResetVariant(*destination);
  constexpr uint16_t kRecordBehind = ZR_VT_VARIANT | ZR_VT_BYREF;
  constexpr uint16_t kKnownBits = ZR_VT_TYPEMASK | ZR_VT_ARRAY | ZR_VT_BYREF;
  while ((source->Type & kKnownBits) == kRecordBehind && source->Value.address != nullptr) {
    source = static_cast<const ZRVARIANT*>(source->Value.address);
    if (!HasFlag(source->Type, ZR_VT_BYREF)) return CopyIntoReset(*destination, *source);
  }
  return CopyBehind(*destination, *source);
}

// Whether the payload of its kind has no content.
static bool IsPayloadEmpty(PayloadKind kind, ZRVARIANTVALUE payload) noexcept {
  switch (kind) {
    case PayloadKind::Blob: {
      uint32_t length = 0;  // a null handle has none
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

static bool IsArrayEmpty(const ZRVARIANT& variant) noexcept {
  ZRSAFEARRAY array = variant.Value.array;
  if (array != nullptr && HasFlag(variant.Type, ZR_VT_BYREF)) array = ArrayBehind(variant.Value.address);
  return array != nullptr && ArrayElementCount(array) == 0;
}

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
