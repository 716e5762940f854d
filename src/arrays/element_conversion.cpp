// Numbers are converted in loops, by the rule that a single variant follows; everything else one by one, through a
// variant that borrows the element.
//
// What an element of an array is as a variant differs a little from what its tag says: a boolean is its number, and the
// unsigned types by other names are those of the plain names. Of the counts of time a few targets take the bits, and
// the others nothing.

#include "arrays/element_conversion.h"

#include <array>
#include <concepts>
#include <cstring>

#include "arrays/accessor.h"
#include "variants/conversion.h"
#include "variants/number_rule.h"
#include "variants/variant_record.h"

// The tag of an element as a variant.
static constexpr uint16_t VariantTag(uint16_t elementTag) noexcept {
  switch (elementTag) {
    case ZR_VT_BOOL:
    case ZR_VT_BYTE:
      return ZR_VT_UI1;
    case ZR_VT_WORD:
      return ZR_VT_UI2;
    case ZR_VT_DWORD:
    case ZR_VT_CHAR32:
      return ZR_VT_UI4;
    case ZR_VT_QWORD:
      return ZR_VT_UI8;
    default:
      return elementTag;
  }
}

static bool IsTime(uint16_t elementTag) noexcept { return elementTag == ZR_VT_TIME || elementTag == ZR_VT_DATETIME; }

// Whether an element takes the payload of a variant as it is.
static bool IsDirect(uint16_t variantTag, uint16_t elementTag) noexcept {
  return StorageOf(variantTag) == StorageOf(elementTag);
}

// ---- In loops ------------------------------------------------------------------------------------------------------

template <class Target, class Source>
inline constexpr bool kAlwaysFits =
    std::integral<Source>&& kLowerBound<Target> <= kLowerBound<Source>&& kUpperBound<Source> <= kUpperBound<Target>;

// As StoreNumber, with nothing in the loop that depends on the outcome but what is selected by it.
template <class Target, class Source>
static bool ConvertInRange(const void* from, void* to, uint32_t count) noexcept {
  const auto* source = static_cast<const Source*>(from);
  auto* target = static_cast<Target*>(to);
  if constexpr (kAlwaysFits<Target, Source>) {
    for (uint32_t index = 0; index < count; ++index) target[index] = CutNumber<Target>(source[index]);
    return true;
  } else {
    constexpr double kLowest = kLowerBound<Target>, kGreatest = kUpperBound<Target>;
    uint32_t refused = 0;
    for (uint32_t index = 0; index < count; ++index) {
      const auto value = static_cast<double>(source[index]);
      const bool fits = (value >= kLowest) & (kGreatest >= value);
      target[index] = CutNumber<Target>(fits ? source[index] : Source{});
      refused |= fits ? 0u : 1u;
    }
    return refused == 0;
  }
}

template <class Source>
static bool ConvertToBool(const void* from, void* to, uint32_t count) noexcept {
  const bool all = ConvertInRange<uint8_t, Source>(from, to, count);
  auto* target = static_cast<uint8_t*>(to);
  for (uint32_t index = 0; index < count; ++index) target[index] = target[index] != 0;
  return all;
}

static bool Truncate(const void* from, void* to, uint32_t count) noexcept {
  const auto* source = static_cast<const double*>(from);
  auto* target = static_cast<int64_t*>(to);
  for (uint32_t index = 0; index < count; ++index) target[index] = TruncateToInt64(source[index]);
  return true;
}

template <std::size_t width>
static bool CopyBits(const void* from, void* to, uint32_t count) noexcept {
  std::memcpy(to, from, width * count);
  return true;
}

template <std::size_t width>
static bool Refuse(const void* /*from*/, void* to, uint32_t count) noexcept {
  std::memset(to, 0, width * count);
  return false;
}

// One row a source, one cell a target, both in the order of Storage; currency is a signed count. A boolean is stored as
// a byte, but has a cell of its own.
static constexpr std::size_t kNumberStorages = static_cast<std::size_t>(Storage::Currency) + 1;
static constexpr std::size_t kBoolCell = kNumberStorages;
using LoopRow = std::array<BulkConversion*, kNumberStorages + 1>;
template <class Source>
static constexpr LoopRow kLoopsFrom = {
    ConvertInRange<int8_t, Source>,   ConvertInRange<uint8_t, Source>,  ConvertInRange<int16_t, Source>,
    ConvertInRange<uint16_t, Source>, ConvertInRange<int32_t, Source>,  ConvertInRange<uint32_t, Source>,
    ConvertInRange<int64_t, Source>,  ConvertInRange<uint64_t, Source>, ConvertInRange<float, Source>,
    ConvertInRange<double, Source>,   ConvertInRange<int64_t, Source>,  ConvertToBool<Source>};
static constexpr std::array<LoopRow, kNumberStorages> kLoops = {
    kLoopsFrom<int8_t>,  kLoopsFrom<uint8_t>,  kLoopsFrom<int16_t>, kLoopsFrom<uint16_t>,
    kLoopsFrom<int32_t>, kLoopsFrom<uint32_t>, kLoopsFrom<int64_t>, kLoopsFrom<uint64_t>,
    kLoopsFrom<float>,   kLoopsFrom<double>,   kLoopsFrom<int64_t>};

static BulkConversion* ForWidth(std::size_t width, BulkConversion* one, BulkConversion* two, BulkConversion* four,
                                BulkConversion* eight) noexcept {
  return width == 1 ? one : width == 2 ? two : width == 4 ? four : eight;
}

BulkConversion* FindBulkConversion(uint16_t sourceTag, uint16_t targetTag) noexcept {
  const Storage source = StorageOf(sourceTag), target = StorageOf(targetTag);
  if (!IsNumber(source) || !IsNumber(target)) return nullptr;
  const std::size_t width = TagOf(targetTag).width;
  BulkConversion* const copy = ForWidth(width, CopyBits<1>, CopyBits<2>, CopyBits<4>, CopyBits<8>);
  BulkConversion* const refuse = ForWidth(width, Refuse<1>, Refuse<2>, Refuse<4>, Refuse<8>);
  if (IsTime(sourceTag)) {
    const bool keepsBits = target == Storage::Signed64 || target == Storage::Unsigned64 || target == Storage::Currency;
    return keepsBits ? copy : target == Storage::Real64 ? ConvertInRange<double, int64_t> : refuse;
  }
  const uint16_t variantTag = VariantTag(sourceTag);
  if (IsDirect(variantTag, targetTag)) return copy;
  switch (RuleOf(variantTag, targetTag)) {
    case Rule::Range:
      return kLoops[static_cast<std::size_t>(source)]
                   [targetTag == ZR_VT_BOOL ? kBoolCell : static_cast<std::size_t>(target)];
    case Rule::Word:
      return copy;
    case Rule::Truncate:
      return Truncate;
    default:
      return refuse;
  }
}

// ---- One by one ----------------------------------------------------------------------------------------------------

// Of a width that a payload can have, each with a move of its own.
static void CopyPayload(void* to, const void* from, std::size_t width) noexcept {
  switch (width) {
    case 1:
      std::memcpy(to, from, 1);
      break;
    case 2:
      std::memcpy(to, from, 2);
      break;
    case 4:
      std::memcpy(to, from, 4);
      break;
    default:
      std::memcpy(to, from, 8);
      break;
  }
}

// Makes of a reset record the variant that the element is, which owns nothing. A UUID's payload is the element itself.
// The record is filled in its place: a copy of all of it would have to wait for the narrower payload just written.
static void LendElement(uint16_t tag, const char* element, ZRVARIANT& lent) noexcept {
  const CTag what = TagOf(tag);
  switch (what.kind) {
    case PayloadKind::Carried:
      std::memcpy(&lent, element, sizeof lent);
      if (!HasFlag(lent.Type, ZR_VT_ARRAY | ZR_VT_BYREF)) lent = LendCopy(lent);
      return;
    case PayloadKind::Uuid:
      lent.Type = tag;
      lent.Value.address = const_cast<char*>(element);
      return;
    case PayloadKind::Ref:
    case PayloadKind::Sref:
    case PayloadKind::String:
      std::memcpy(&lent.Value.address, element, sizeof lent.Value.address);
      lent.Type = tag;
      lent = LendCopy(lent);  // null for a ZRSREF without fields
      if (lent.Value.address == nullptr) lent = kResetVariant;
      return;
    default:
      lent.Type = VariantTag(tag);
      CopyPayload(&lent.Value, element, what.width);
      return;
  }
}

// An owner of a payload that isn't in its place yet.
class CPayloadHolder {
 public:
  CPayloadHolder(PayloadKind kind, ZRVARIANTVALUE payload) noexcept : kind_(kind), payload_(payload) {}
  CPayloadHolder(const CPayloadHolder&) = delete;
  CPayloadHolder& operator=(const CPayloadHolder&) = delete;
  ~CPayloadHolder() { ReleasePayload(kind_, payload_); }

  ZRVARIANTVALUE& Get() noexcept { return payload_; }
  // Into an element of the kind, which is null before. Of a UUID the element has the bytes, not the record.
  void MoveInto(void* element, std::size_t width) noexcept {
    if (kind_ == PayloadKind::Uuid) {
      if (payload_.uuid != nullptr) std::memcpy(element, payload_.uuid, sizeof(ZRUUID));
      return;
    }
    CopyPayload(element, &payload_, width);
    payload_ = kResetVariant.Value;
  }

 private:
  PayloadKind kind_;
  ZRVARIANTVALUE payload_;
};

static bool StoreInterface(const ZRVARIANT& lent, uint16_t tag, void* element) {
  if (HasFlag(lent.Type, ZR_VT_ARRAY | ZR_VT_BYREF)) return false;
  const uint16_t lentTag = lent.Type & ZR_VT_TYPEMASK;  // without the bits that mean nothing
  const bool isTaken = lentTag == ZR_VT_DISPATCH || (lentTag == ZR_VT_UNKNOWN && tag == ZR_VT_UNKNOWN);
  if (!isTaken) return false;
  const ZRVARIANTVALUE payload = DuplicatePayload(PayloadKind::Interface, lent.Value);
  std::memcpy(element, &payload.address, sizeof payload.address);
  return true;
}

// A scalar by value. `isDirect` tells that the element takes the payload as it is.
static bool StoreValue(const ZRVARIANT& lent, bool isDirect, uint16_t tag, void* element) {
  const CTag what = TagOf(tag);
  CPayloadHolder stored(what.kind, kResetVariant.Value);
  if (isDirect) {
    if (what.kind == PayloadKind::Uuid) {
      if (lent.Value.uuid != nullptr) std::memcpy(element, lent.Value.uuid, sizeof(ZRUUID));
      return true;
    }
    stored.Get() = IsOwned(what.kind) ? DuplicatePayload(what.kind, lent.Value) : lent.Value;
  } else if (ConvertScalar(lent, tag, stored.Get()) != ZR_R_OK) {
    return false;
  }
  stored.MoveInto(element, what.width);
  return true;
}

static bool StoreScalar(const ZRVARIANT& lent, uint16_t tag, void* element) {
  if (HasFlag(lent.Type, ZR_VT_ARRAY)) return false;
  const uint16_t lentTag = lent.Type & ZR_VT_TYPEMASK;
  if (!HasFlag(lent.Type, ZR_VT_BYREF)) return StoreValue(lent, IsDirect(lentTag, tag), tag, element);
  CVariantHolder behind;
  if (ZrVariantCopyInd(behind.Receive(), &lent) < 0) return false;
  if (HasFlag(behind.Get().Type, ZR_VT_ARRAY)) {  // converts if its elements do, and no element has room for it
    CVariantHolder converted;
    return ZrVariantChangeType(converted.Receive(), &behind.Get(), 0, tag) == ZR_R_OK;
  }
  // Behind a reference to a record lies any tag, and only the very same is taken as it is: 2 becomes a boolean 1.
  const uint16_t tagBehind = behind.Get().Type & ZR_VT_TYPEMASK;
  const bool isDirect = lentTag == ZR_VT_VARIANT ? tagBehind == tag : IsDirect(tagBehind, tag);
  return StoreValue(LendCopy(behind.Get()), isDirect, tag, element);
}

bool ConvertElements(uint16_t sourceTag, const void* source, uint16_t targetTag, void* target, uint32_t count) {
  const std::size_t sourceWidth = ElementWidth(sourceTag), targetWidth = ElementWidth(targetTag);
  const bool isRefusedTime = IsTime(sourceTag) && targetTag != ZR_VT_STR && targetTag != ZR_VT_VARIANT;
  if (isRefusedTime) return false;
  const PayloadKind targetKind = TagOf(targetTag).kind;
  const auto* from = static_cast<const char*>(source);
  auto* to = static_cast<char*>(target);
  bool all = true;
  for (uint32_t index = 0; index < count; ++index, from += sourceWidth, to += targetWidth) {
    ZRVARIANT lent = kResetVariant;
    LendElement(sourceTag, from, lent);
    if (targetKind == PayloadKind::Carried) {
      (void)CopyIntoReset(*reinterpret_cast<ZRVARIANT*>(to), lent);  // as it is, a bad tag too
    } else if (targetKind == PayloadKind::Interface) {
      all = StoreInterface(lent, targetTag, to) && all;
    } else {
      all = StoreScalar(lent, targetTag, to) && all;
    }
  }
  return all;
}
