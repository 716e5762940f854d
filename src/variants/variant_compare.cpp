// Comparison. An answer is one of four: equal or not, and with which code, or a code without an answer.

#include <cmath>
#include <cstring>
#include <limits>

#include "blobs/blob_manager.h"
#include "identifiers/reference.h"
#include "text/counted_string.h"
#include "variants/array_payload.h"
#include "variants/variant_tags.h"

// Within one epsilon of a type, absolute up to 1.0 and relative above. Comparisons with NaN are false, and that
// decides.
static bool AreClose(double left, double right, double epsilon) noexcept {
  double scale = 1.0;
  for (const double magnitude : {std::fabs(left), std::fabs(right)}) {
    if (magnitude > scale) scale = magnitude;
  }
  return scale * epsilon >= std::fabs(left - right);
}

template <class Real>
static bool AreClose(ZRVARIANTVALUE left, ZRVARIANTVALUE right) noexcept {
  Real a, b;
  std::memcpy(&a, &left, sizeof a);
  std::memcpy(&b, &right, sizeof b);
  return AreClose(double{a}, double{b}, double{std::numeric_limits<Real>::epsilon()});
}

// Payloads of a kind that is compared the same way by value and through an address.
static ZRRESULT ComparePayloads(PayloadKind kind, ZRVARIANTVALUE left, ZRVARIANTVALUE right, uint8_t* equal) {
  switch (kind) {
    case PayloadKind::Real4:
      *equal = AreClose<float>(left, right);
      return ZR_R_OK;
    case PayloadKind::Real8:
      *equal = AreClose<double>(left, right);
      return ZR_R_OK;
    case PayloadKind::Blob:
      return g_blobManager.CompareBlob(left.blob, right.blob, equal);
    case PayloadKind::Uuid:
      return ZrCompareUUID(left.uuid, right.uuid, equal);
    case PayloadKind::String:
      *equal = CompareStrings(left.string, right.string) == 0;
      return ZR_R_OK;
    case PayloadKind::Ref:
      *equal = CompareRefs(left.ref, right.ref) == 0;
      return ZR_R_OK;
    case PayloadKind::Sref: {
      const CSrefOrder compared = CompareSrefs(left.sref, right.sref);
      *equal = compared.order == 0;
      return compared.result;
    }
    case PayloadKind::Interface:
      return ZR_R_NOT_SUPPORTED;
    default:
      return ZR_R_INVALID_ARGUMENTS;
  }
}

// All 16 bytes; the tag words are known to be equal.
static bool HaveSameBytes(const ZRVARIANT& left, const ZRVARIANT& right) noexcept {
  return left.Value.ui8 == right.Value.ui8 && left.Reserved1 == right.Reserved1 && left.Reserved2 == right.Reserved2 &&
         left.Reserved3 == right.Reserved3;
}

static ZRRESULT CompareByValue(const ZRVARIANT& left, const ZRVARIANT& right, uint8_t* equal) {
  const PayloadKind kind = TagOf(left.Type).kind;
  switch (kind) {
    case PayloadKind::Empty:
      *equal = 1;
      return ZR_R_OK;
    case PayloadKind::Number:
    case PayloadKind::Opaque:
      *equal = HaveSameBytes(left, right);
      return ZR_R_OK;
    default:
      return ComparePayloads(kind, left.Value, right.Value, equal);
  }
}

static ZRRESULT CompareBehind(CTag tag, const void* left, const void* right, uint8_t* equal) {
  switch (tag.kind) {
    case PayloadKind::Interface:
    case PayloadKind::Opaque:
      return ZR_R_NOT_SUPPORTED;
    case PayloadKind::Empty:
    case PayloadKind::Unassigned:
      return ZR_R_INVALID_ARGUMENTS;
    default:
      break;
  }
  if (left == nullptr || right == nullptr) return ZR_R_OK;  // and no answer
  if (tag.kind == PayloadKind::Number) {
    *equal = std::memcmp(left, right, tag.width) == 0;
    return ZR_R_OK;
  }
  ZRVARIANTVALUE leftValue{}, rightValue{};
  std::memcpy(&leftValue, left, tag.width);
  std::memcpy(&rightValue, right, tag.width);
  return ComparePayloads(tag.kind, leftValue, rightValue, equal);
}

static ZRRESULT CompareArrayRecords(const ZRVARIANT& left, const ZRVARIANT& right, uint8_t* equal) {
  if (!HasFlag(left.Type, ZR_VT_BYREF)) return CompareArrays(left.Value.array, right.Value.array, equal);
  if (left.Value.address == nullptr || right.Value.address == nullptr) return ZR_R_OK;  // and no answer
  return CompareArrays(ArrayBehind(left.Value.address), ArrayBehind(right.Value.address), equal);
}

ZRRESULT ZrVariantCompare(const ZRVARIANT* left, const ZRVARIANT* right, uint8_t* equal) {
  if (left == nullptr || right == nullptr || equal == nullptr) return ZR_R_INVALID_POINTER;
  for (;;) {
    if (left->Type != right->Type) {
      *equal = 0;
      return ZR_R_OK;
    }
    if (HasFlag(left->Type, ZR_VT_ARRAY)) return CompareArrayRecords(*left, *right, equal);
    if (!HasFlag(left->Type, ZR_VT_BYREF)) return CompareByValue(*left, *right, equal);
    const CTag tag = TagOf(left->Type);
    const void *leftAddress = left->Value.address, *rightAddress = right->Value.address;
    if (tag.kind != PayloadKind::Carried) return CompareBehind(tag, leftAddress, rightAddress, equal);
    if (leftAddress == nullptr || rightAddress == nullptr) return ZR_R_OK;  // and no answer
    left = static_cast<const ZRVARIANT*>(leftAddress);
    right = static_cast<const ZRVARIANT*>(rightAddress);
  }
}
