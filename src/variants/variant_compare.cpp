// Comparison of variants: the functions here return a result code and write `*equal`, or leave it unchanged.
//
// The two are independent, and callers rely on every combination:
//
//     ZR_R_OK, written       the ordinary case
//     ZR_R_OK, unchanged     an address in a by-reference record is null, or two arrays have different shapes
//     a failure, written     an SREF with a ref was compared with an SREF whose text is not a REF
//     a failure, unchanged   the values cannot be compared
//
// So no function here writes a default first. The order of the checks matters, too: tags that cannot be compared by
// reference fail even if an address is null.
//
// Records whose tag words differ are unequal; that is decided before anything else. A value that is held by reference
// is compared with another one held by reference, never with one that is held by value.

#include <cmath>
#include <cstring>
#include <limits>

#include "blobs/blob_manager.h"
#include "identifiers/reference.h"
#include "text/counted_string.h"
#include "variants/array_payload.h"
#include "variants/variant_tags.h"

// Whether two numbers differ by at most one epsilon, absolute up to a magnitude of 1.0 and relative above:
// |left - right| <= epsilon * max(1, |left|, |right|).
//
// All comparisons with NaN are false, here with these outcomes: a NaN never becomes the scale (std::max could return
// it), and NaN equals nothing. With an infinity both sides of the last comparison are infinite, so it equals every
// other number; infinity - infinity is NaN, so it does not equal itself. Callers rely on both.
static bool AreClose(double left, double right, double epsilon) noexcept {
  double scale = 1.0;
  for (const double magnitude : {std::fabs(left), std::fabs(right)}) {
    if (magnitude > scale) scale = magnitude;
  }
  return scale * epsilon >= std::fabs(left - right);
}

// The payloads as float or double. The arithmetic is in binary64 for both, only the epsilon is that of the type.
template <class Real>
static bool AreClose(ZRVARIANTVALUE left, ZRVARIANTVALUE right) noexcept {
  Real a, b;
  std::memcpy(&a, &left, sizeof a);
  std::memcpy(&b, &right, sizeof b);
  return AreClose(double{a}, double{b}, double{std::numeric_limits<Real>::epsilon()});
}

// Compares payloads of the kinds that are compared alike by value and by reference. Null handles are passed on to their
// families, which decide: a null string equals an empty one, a null UUID or blob is an invalid argument.
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
      *equal = AreStringsEqual(left.string, right.string);
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

// Whether all 16 bytes are equal, marker words and unused bytes of the payload included: callers rely on it. The tag
// words are known to be equal.
static bool HaveSameBytes(const ZRVARIANT& left, const ZRVARIANT& right) noexcept {
  return left.Value.ui8 == right.Value.ui8 && left.Reserved1 == right.Reserved1 && left.Reserved2 == right.Reserved2 &&
         left.Reserved3 == right.Reserved3;
}

// A ZR_VT_VARIANT by value and tags that are not assigned are invalid arguments.
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

// Compares the values at two addresses. Only the width of the value is compared, not whole records as by value.
static ZRRESULT CompareReferenced(CTag tag, const void* left, const void* right, uint8_t* equal) {
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
  if (left == nullptr || right == nullptr) return ZR_R_OK;  // `*equal` stays unchanged
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
  if (left.Value.address == nullptr || right.Value.address == nullptr) return ZR_R_OK;  // `*equal` stays unchanged
  return CompareArrays(ArrayAtAddress(left.Value.address), ArrayAtAddress(right.Value.address), equal);
}

// Two references to records are followed in step. At each step the tag words must be equal, so chains of different
// length are unequal.
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
    if (tag.kind != PayloadKind::Carried) return CompareReferenced(tag, leftAddress, rightAddress, equal);
    if (leftAddress == nullptr || rightAddress == nullptr) return ZR_R_OK;  // `*equal` stays unchanged
    left = static_cast<const ZRVARIANT*>(leftAddress);
    right = static_cast<const ZRVARIANT*>(rightAddress);
  }
}
