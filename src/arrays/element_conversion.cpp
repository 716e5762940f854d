// Conversion of array elements: numbers, and numbers to texts and back, in loops; everything else one by one through a
// variant that borrows the element.
//
// Elements convert by the rules of variants (conversion_rules.h), with these differences, which callers rely on:
//
//   1. The element is first given a plain tag (VariantTag): booleans and ZR_VT_BYTE are ZR_VT_UI1, ZR_VT_CHAR32 is
//      ZR_VT_UI4, and so on. So the boolean 1 becomes the text "1" and not "TRUE", and a ZR_VT_QWORD becomes a
//      ZR_VT_DATETIME as a number, not as an address.
//   2. If the plain tag and the target have the same storage, the payload is copied unchanged (IsDirect): a ZR_VT_UI1
//      of 2 becomes a boolean with the byte 2, where a variant would become 1.
//   3. ZR_VT_TIME and ZR_VT_DATETIME convert to 64-bit integers, to currency and to each other, with their bits
//      unchanged; also to ZR_VT_R8, ZR_VT_STR and ZR_VT_VARIANT. To all other types they do not convert.
//   4. Elements that are variants convert by their own tags, without the rules 1 and 3.
//
// An element that does not convert becomes zero or null, and the others are converted nevertheless.

#include "arrays/element_conversion.h"

#include <array>
#include <concepts>
#include <cstring>
#include <type_traits>

#include "arrays/accessor.h"
#include "text/real_text.h"
#include "variants/conversion.h"
#include "variants/number_rule.h"
#include "variants/numeric_targets.h"
#include "variants/text_target.h"
#include "variants/variant_record.h"

// The tag that an element has when it is converted as a variant.
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

// Both are handled before the table of rules, which would let them convert to all numbers.
static bool IsTime(uint16_t elementTag) noexcept { return elementTag == ZR_VT_TIME || elementTag == ZR_VT_DATETIME; }

// Whether an element stores the payload of a variant with this tag unchanged: both have the same representation.
static bool IsDirect(uint16_t variantTag, uint16_t elementTag) noexcept {
  return StorageOf(variantTag) == StorageOf(elementTag);
}

// ---- In loops ------------------------------------------------------------------------------------------------------

// Whether every value of Source is in the range of Target. Floating point never is, because of NaN.
template <class Target, class Source>
inline constexpr bool kAlwaysFits =
    std::integral<Source>&& kLowerBound<Target> <= kLowerBound<Source>&& kUpperBound<Source> <= kUpperBound<Target>;

// Converts as StoreNumber does. The loops have no branches, so the compiler can vectorise them. Per element:
//
//   value    the number in binary64, for the comparison with the bounds
//   fits     both comparisons, combined by `&`: `&&` would be a branch. False for NaN
//   target   the number, or 0 if it does not fit. The selection comes before CutNumber, because casting a number that
//            is out of range to an integer is undefined behaviour
//   refused  collects whether any element did not fit; it is examined once, after the loop
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

// Converts to ZR_VT_UI1, then makes every byte 0 or 1 in a second loop, which has no branches.
template <BulkConversion* toByte>
static bool ConvertToBool(const void* from, void* to, uint32_t count) {
  const bool allConverted = toByte(from, to, count);
  auto* target = static_cast<uint8_t*>(to);
  for (uint32_t index = 0; index < count; ++index) target[index] = target[index] != 0;
  return allConverted;
}

// ZR_VT_R8 to a time or a currency: without a range check, so every element converts.
static bool Truncate(const void* from, void* to, uint32_t count) noexcept {
  const auto* source = static_cast<const double*>(from);
  auto* target = static_cast<int64_t*>(to);
  for (uint32_t index = 0; index < count; ++index) target[index] = TruncateToInt64(source[index]);
  return true;
}

// For a source of the same width.
template <std::size_t width>
static bool CopyBits(const void* from, void* to, uint32_t count) noexcept {
  std::memcpy(to, from, width * count);
  return true;
}

// For two types that do not convert: all elements become zero.
template <std::size_t width>
static bool Refuse(const void* /*from*/, void* to, uint32_t count) noexcept {
  std::memset(to, 0, width * count);
  return false;
}

// The loops for the range rule: one row per source, one cell per target, both in the order of Storage. Currency is a
// signed 64-bit count. ZR_VT_BOOL shares the storage Unsigned8 with other tags but needs another loop, so it has a cell
// of its own after the others. A boolean source needs no row of its own: it is a ZR_VT_UI1.
static constexpr std::size_t kNumberStorages = static_cast<std::size_t>(Storage::Currency) + 1;
static constexpr std::size_t kBoolCell = kNumberStorages;
using LoopRow = std::array<BulkConversion*, kNumberStorages + 1>;
template <class Source>
static constexpr LoopRow kLoopsFrom = {
    ConvertInRange<int8_t, Source>,   ConvertInRange<uint8_t, Source>,  ConvertInRange<int16_t, Source>,
    ConvertInRange<uint16_t, Source>, ConvertInRange<int32_t, Source>,  ConvertInRange<uint32_t, Source>,
    ConvertInRange<int64_t, Source>,  ConvertInRange<uint64_t, Source>, ConvertInRange<float, Source>,
    ConvertInRange<double, Source>,   ConvertInRange<int64_t, Source>,  ConvertToBool<ConvertInRange<uint8_t, Source>>};
static constexpr std::array<LoopRow, kNumberStorages> kLoops = {
    kLoopsFrom<int8_t>,  kLoopsFrom<uint8_t>,  kLoopsFrom<int16_t>, kLoopsFrom<uint16_t>,
    kLoopsFrom<int32_t>, kLoopsFrom<uint32_t>, kLoopsFrom<int64_t>, kLoopsFrom<uint64_t>,
    kLoopsFrom<float>,   kLoopsFrom<double>,   kLoopsFrom<int64_t>};

// Writes the text of every number, as ToStr does. A text is null if there is no memory for it; this does not count as a
// failure. Nor is it a failure when a variant converts.
template <class Source>
static bool WriteTexts(const void* from, void* to, uint32_t count) noexcept {
  const auto* source = static_cast<const Source*>(from);
  auto* target = static_cast<ZRSTR*>(to);
  for (uint32_t index = 0; index < count; ++index) {
    if constexpr (std::floating_point<Source>) {
      target[index] = NewFixedText(double{source[index]});
    } else {
      target[index] = NewIntegerText(std::common_type_t<Source, int32_t>{source[index]});
    }
  }
  return true;
}

// Parses every text. A null text is an empty text, which is the number 0.
template <class Target>
static bool ParseTexts(const void* from, void* to, uint32_t count) {
  const auto* source = static_cast<const ZRSTR*>(from);
  auto* target = static_cast<Target*>(to);
  bool allConverted = true;
  for (uint32_t index = 0; index < count; ++index) {
    Target number{};
    if (source[index] != nullptr && ParseNumber(source[index], number) != ZR_R_OK) {
      number = Target{};
      allConverted = false;
    }
    target[index] = number;
  }
  return allConverted;
}

// The loops from and to texts, in the order of Storage. Texts convert to currency by a rule of their own, one by one,
// so that cell is null.
static constexpr std::array<BulkConversion*, kNumberStorages> kWriteTexts = {
    WriteTexts<int8_t>,  WriteTexts<uint8_t>,  WriteTexts<int16_t>, WriteTexts<uint16_t>,
    WriteTexts<int32_t>, WriteTexts<uint32_t>, WriteTexts<int64_t>, WriteTexts<uint64_t>,
    WriteTexts<float>,   WriteTexts<double>,   WriteTexts<int64_t>};
static constexpr LoopRow kParseTexts = {ParseTexts<int8_t>,
                                        ParseTexts<uint8_t>,
                                        ParseTexts<int16_t>,
                                        ParseTexts<uint16_t>,
                                        ParseTexts<int32_t>,
                                        ParseTexts<uint32_t>,
                                        ParseTexts<int64_t>,
                                        ParseTexts<uint64_t>,
                                        ParseTexts<float>,
                                        ParseTexts<double>,
                                        nullptr,
                                        ConvertToBool<ParseTexts<uint8_t>>};

// The instantiation for a width in bytes, which is 1, 2, 4 or 8.
static BulkConversion* ForWidth(std::size_t width, BulkConversion* one, BulkConversion* two, BulkConversion* four,
                                BulkConversion* eight) noexcept {
  return width == 1 ? one : width == 2 ? two : width == 4 ? four : eight;
}

// The order of the tests matters. Among numbers, times come first, since the table would let them convert to all
// numbers. Direct copies come before the table, since it has the range rule for ZR_VT_UI1 to ZR_VT_BOOL and would make
// 2 a 1, and since it has no rule for two tags that are equal.
BulkConversion* FindBulkConversion(uint16_t sourceTag, uint16_t targetTag) noexcept {
  const Storage source = StorageOf(sourceTag), target = StorageOf(targetTag);
  const std::size_t targetCell = targetTag == ZR_VT_BOOL ? kBoolCell : static_cast<std::size_t>(target);
  if (IsNumber(source) && target == Storage::String) {
    return IsTime(sourceTag) ? nullptr : kWriteTexts[static_cast<std::size_t>(source)];
  }
  if (source == Storage::String && IsNumber(target)) {
    return RuleOf(sourceTag, targetTag) == Rule::Parse ? kParseTexts[targetCell] : nullptr;
  }
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
      return kLoops[static_cast<std::size_t>(source)][targetCell];
    case Rule::Word:
      return copy;
    case Rule::Truncate:
      return Truncate;
    default:
      return refuse;
  }
}

// ---- One by one ----------------------------------------------------------------------------------------------------

// Copies a payload of 1, 2, 4 or 8 bytes. With a constant size each memcpy is a single move; with a variable size it
// would be a call.
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

// Fills a reset record with the variant that an element is. The record borrows the element's payload and owns nothing:
// it must not be released, and it must not outlive the element.
//
//     ZR_VT_VARIANT     the variant in the element, normalised unless it is an array or by reference
//     ZR_VT_UUID        the payload is the address of the element, because the element is the UUID itself
//     REF, SREF, STR    the pointer, normalised. Null, or an SREF without content, becomes an empty variant, which does
//                       not convert; a null string becomes an empty string, which does
//     all others        the payload under the plain tag of VariantTag
//
// The record is an argument and not the result: copying 16 bytes directly after a narrower payload was written would
// wait until that store has reached the cache.
static void LendElement(uint16_t tag, const char* element, ZRVARIANT& lent) noexcept {
  const CTag info = TagOf(tag);
  switch (info.kind) {
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
      lent = LendCopy(lent);  // null for an SREF without content
      if (lent.Value.address == nullptr) lent = kResetVariant;
      return;
    default:
      lent.Type = VariantTag(tag);
      CopyPayload(&lent.Value, element, info.width);
      return;
  }
}

// The owner of a payload until it is stored in an element; releases it if it never is.
class CPayloadHolder {
 public:
  CPayloadHolder(PayloadKind kind, ZRVARIANTVALUE payload) noexcept : kind_(kind), payload_(payload) {}
  CPayloadHolder(const CPayloadHolder&) = delete;
  CPayloadHolder& operator=(const CPayloadHolder&) = delete;
  ~CPayloadHolder() { ReleasePayload(kind_, payload_); }

  ZRVARIANTVALUE& Get() noexcept { return payload_; }
  // Stores the payload in an element of the same kind, which must be null or zero. The element owns it afterwards. For
  // a UUID the element gets a copy of the bytes, and the holder still releases the record.
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

// Interface pointers convert to their own type, and ZR_VT_DISPATCH to ZR_VT_UNKNOWN, since every object has the
// operations of IZrUnknown. No other value converts, nor does any reference, not even one to an interface pointer.
static bool StoreInterface(const ZRVARIANT& lent, uint16_t tag, void* element) {
  if (HasFlag(lent.Type, ZR_VT_ARRAY | ZR_VT_BYREF)) return false;
  const uint16_t lentTag = lent.Type & ZR_VT_TYPEMASK;  // without the bits that mean nothing
  const bool isAccepted = lentTag == ZR_VT_DISPATCH || (lentTag == ZR_VT_UNKNOWN && tag == ZR_VT_UNKNOWN);
  if (!isAccepted) return false;
  const ZRVARIANTVALUE payload = DuplicatePayload(PayloadKind::Interface, lent.Value);
  std::memcpy(element, &payload.address, sizeof payload.address);
  return true;
}

// Stores a scalar that is held by value. With `isDirect` the element gets a copy of the payload unchanged; otherwise
// the payload is converted by the table of rules. A null UUID leaves the element nil, which is a success. Returns
// whether the element was stored.
static bool StoreValue(const ZRVARIANT& lent, bool isDirect, uint16_t tag, void* element) {
  const CTag info = TagOf(tag);
  CPayloadHolder stored(info.kind, kResetVariant.Value);
  if (isDirect) {
    if (info.kind == PayloadKind::Uuid) {
      if (lent.Value.uuid != nullptr) std::memcpy(element, lent.Value.uuid, sizeof(ZRUUID));
      return true;
    }
    stored.Get() = IsOwned(info.kind) ? DuplicatePayload(info.kind, lent.Value) : lent.Value;
  } else if (ConvertScalar(lent, tag, stored.Get()) != ZR_R_OK) {
    return false;
  }
  stored.MoveInto(element, info.width);
  return true;
}

// Stores a value that may be by reference. An array that is held by value does not convert.
//
// The value that a reference refers to is copied first. If the copy is an array, the reference led to a record with an
// array. The copy is converted as a variant would be, and the element counts as converted if that succeeds; but the
// element stays zero, because it cannot store an array.
static bool StoreScalar(const ZRVARIANT& lent, uint16_t tag, void* element) {
  if (HasFlag(lent.Type, ZR_VT_ARRAY)) return false;
  const uint16_t lentTag = lent.Type & ZR_VT_TYPEMASK;
  if (!HasFlag(lent.Type, ZR_VT_BYREF)) return StoreValue(lent, IsDirect(lentTag, tag), tag, element);
  CVariantHolder referenced;
  if (ZrVariantCopyInd(referenced.Receive(), &lent) < 0) return false;
  if (HasFlag(referenced.Get().Type, ZR_VT_ARRAY)) {
    CVariantHolder converted;
    return ZrVariantChangeType(converted.Receive(), &referenced.Get(), 0, tag) == ZR_R_OK;
  }
  // A reference to a record converts by the rules of variants: only an equal tag is direct, so a ZR_VT_UI1 of 2 becomes
  // the boolean 1. A reference to any other value is treated like an element: the same storage is direct, and 2
  // stays 2.
  const uint16_t referencedTag = referenced.Get().Type & ZR_VT_TYPEMASK;
  const bool isDirect = lentTag == ZR_VT_VARIANT ? referencedTag == tag : IsDirect(referencedTag, tag);
  return StoreValue(LendCopy(referenced.Get()), isDirect, tag, element);
}

// Each element is lent to a reset variant and stored by the kind of the target. Elements that are refused leave the
// target element empty, and the loop continues.
//
// Times come here only for targets that are not numbers; of these only texts and variants accept them. To variants
// every element converts, even one with a tag that is not assigned: the result of the copy is ignored.
bool ConvertElements(uint16_t sourceTag, const void* source, uint16_t targetTag, void* target, uint32_t count) {
  const std::size_t sourceWidth = ElementWidth(sourceTag), targetWidth = ElementWidth(targetTag);
  const bool isRefusedTime = IsTime(sourceTag) && targetTag != ZR_VT_STR && targetTag != ZR_VT_VARIANT;
  if (isRefusedTime) return false;
  const PayloadKind targetKind = TagOf(targetTag).kind;
  const auto* from = static_cast<const char*>(source);
  auto* to = static_cast<char*>(target);
  bool allConverted = true;
  for (uint32_t index = 0; index < count; ++index, from += sourceWidth, to += targetWidth) {
    ZRVARIANT lent = kResetVariant;
    LendElement(sourceTag, from, lent);
    if (targetKind == PayloadKind::Carried) {
      (void)CopyIntoReset(*reinterpret_cast<ZRVARIANT*>(to), lent);
    } else if (targetKind == PayloadKind::Interface) {
      allConverted = StoreInterface(lent, targetTag, to) && allConverted;
    } else {
      allConverted = StoreScalar(lent, targetTag, to) && allConverted;
    }
  }
  return allConverted;
}
