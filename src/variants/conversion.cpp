// ZrVariantChangeType: the choice of the conversion, and what happens to the destination.
//
//     ZrVariantChangeType
//       |-- equal tags ----------> a copy, or nothing in place
//       |-- by-reference source -> refused
//       |-- array source --------> ChangeArray: converts the elements of a private copy
//       |-- in place ------------> ChangeInPlace --.
//       '-- otherwise -----------> ChangeScalar ---+--> ConvertScalar --> rule of the table --> target function
//
// What holds for the destination:
//   1. A failure of an array conversion leaves it unchanged; the array is converted before the destination is touched.
//   2. A failed scalar conversion into another record leaves the destination released and empty.
//   3. A failed scalar conversion in place restores the value.
//   4. The source may be part of what the destination owns, such as an element of its array. So what the destination
//      owned is released after the conversion. Only with equal tags is it released first.
//
// A source is normalised before it is converted; see conversion.h.

#include "variants/conversion.h"

#include "text/counted_string.h"
#include "variants/array_payload.h"
#include "variants/numeric_targets.h"
#include "variants/structured_targets.h"
#include "variants/text_target.h"
#include "variants/variant_record.h"

// ---- Dispatch ------------------------------------------------------------------------------------------------------

// How to convert to a tag. Without a function nothing converts to it, and `refusal` is the result for every source:
// tags that exist but have no conversion return ZR_R_NOT_SUPPORTED, all others ZR_R_INVALID_ARGUMENTS.
struct CTarget {
  TargetFunction* convert = nullptr;
  Column column = kColumnCount;
  ZRRESULT refusal = ZR_R_INVALID_ARGUMENTS;
};

struct CTargetRow {
  uint16_t tag;
  CTarget target;
};

static constexpr CTarget kNoConversion{nullptr, kColumnCount, ZR_R_NOT_SUPPORTED};

// clang-format off
static constexpr CTargetRow kTargetRows[] = {
  {ZR_VT_BOOL,     {ToBool,             kNarrow}},
  {ZR_VT_I1,       {ToNumber<int8_t>,   kNarrow}},
  {ZR_VT_I2,       {ToNumber<int16_t>,  kNarrow}},
  {ZR_VT_I4,       {ToNumber<int32_t>,  kNarrow}},
  {ZR_VT_I8,       {ToNumber<int64_t>,  kInt64}},
  {ZR_VT_UI1,      {ToNumber<uint8_t>,  kNarrow}},
  {ZR_VT_UI2,      {ToNumber<uint16_t>, kNarrow}},
  {ZR_VT_UI4,      {ToNumber<uint32_t>, kNarrow}},
  {ZR_VT_UI8,      {ToNumber<uint64_t>, kUint64}},
  {ZR_VT_R4,       {ToNumber<float>,    kReal}},
  {ZR_VT_R8,       {ToNumber<double>,   kReal}},
  {ZR_VT_TIME,     {ToTime,             kTime}},
  {ZR_VT_DATETIME, {ToDateTime,         kDateTime}},
  {ZR_VT_CY,       {ToCY,               kCurrency}},
  {ZR_VT_BYTE,     {ToNumber<uint8_t>,  kNarrow}},
  {ZR_VT_WORD,     {ToNumber<uint16_t>, kNarrow}},
  {ZR_VT_DWORD,    {ToNumber<uint32_t>, kNarrow}},
  {ZR_VT_QWORD,    {ToNumber<uint64_t>, kUint64}},
  {ZR_VT_BLOB,     {ToBlob,             kBlob}},
  {ZR_VT_UNKNOWN,  kNoConversion},
  {ZR_VT_OPAQUE,   kNoConversion},
  {ZR_VT_CHAR32,   {ToChar32,           kChar32}},
  {ZR_VT_VARIANT,  kNoConversion},
  {ZR_VT_UUID,     {ToUUID,             kUuid}},
  {ZR_VT_STR,      {ToStr,              kText}},
  {ZR_VT_REF,      {ToREF,              kRef}},
  {ZR_VT_SREF,     {ToSREF,             kSref}},
  {ZR_VT_DISPATCH, kNoConversion},
};
// clang-format on

// The rows above by tag. Entries without a row, the shared one for great tags included, refuse with
// ZR_R_INVALID_ARGUMENTS.
static constexpr auto kTargets = [] {
  std::array<CTarget, kTagCount> targets{};
  for (const CTargetRow& row : kTargetRows) targets[row.tag] = row.target;
  return targets;
}();

ZRRESULT ConvertScalar(const ZRVARIANT& source, uint16_t target, ZRVARIANTVALUE& value) {
  const CTarget& to = kTargets[target <= ZR_VT_LAST ? target : ZR_VT_LAST + 1];  // flags make `target` greater, too
  if (to.convert == nullptr) return to.refusal;
  const Rule rule = RuleFor(source.Type, to.column);
  if (rule == Rule::NotSupported) return ZR_R_NOT_SUPPORTED;
  if (rule == Rule::Invalid) return ZR_R_INVALID_ARGUMENTS;
  return to.convert(rule, source, value);
}

Rule RuleOf(uint16_t source, uint16_t target) noexcept {
  const CTarget& to = kTargets[TagIndex(target)];
  if (to.convert != nullptr) return RuleFor(source, to.column);
  return to.refusal == ZR_R_NOT_SUPPORTED ? Rule::NotSupported : Rule::Invalid;
}

// ---- The destination -----------------------------------------------------------------------------------------------

// The record that ZrVariantCopy would make of a scalar, with the original's payload and without owning it; see
// LendCopy. Returns the original itself for numbers, whose copies have the same 16 bytes, and otherwise fills and
// returns `copy`. The record that is returned must not outlive either of the two.
static const ZRVARIANT& Lend(const ZRVARIANT& original, ZRVARIANT& copy) noexcept {
  const PayloadKind kind = TagOf(original.Type).kind;
  if (IsInline(kind)) return original;
  copy = kResetVariant;
  copy.Type = original.Type;
  if (!IsOwned(kind)) return copy;  // no payload: ZR_VT_EMPTY and tags that are not assigned
  copy.Value = original.Value;
  if (kind == PayloadKind::String && copy.Value.string == nullptr) copy.Value.string = &g_emptyString.terminator;
  if (kind == PayloadKind::Sref && copy.Value.sref != nullptr && copy.Value.sref->ref == nullptr &&
      copy.Value.sref->text == nullptr) {
    copy.Value.sref = nullptr;
  }
  return copy;
}

ZRVARIANT LendCopy(const ZRVARIANT& original) noexcept {
  ZRVARIANT copy;
  return Lend(original, copy);
}

// Converts into a record that has been reset. After a failure the record stays empty, but Value may hold what the
// target function has stored; nobody releases it.
static ZRRESULT ConvertIntoReset(ZRVARIANT& destination, const ZRVARIANT& source, uint16_t target) {
  const ZRRESULT result = ConvertScalar(source, target, destination.Value);
  if (result == ZR_R_OK) destination.Type = target;
  return result;
}

// The general path: the old value of the destination is released at the end, since the source may be part of it.
static ZRRESULT ChangeAndRelease(ZRVARIANT& destination, const ZRVARIANT& source, uint16_t target) {
  const CVariantHolder oldValue = CVariantHolder::Adopt(destination);
  ZRVARIANT copy;
  return ConvertIntoReset(destination, Lend(source, copy), target);
}

// Whether the original can be converted without being normalised: the payload of a copy would be the same. A copy may
// have other marker words, but no conversion reads them.
static bool IsNormalised(const ZRVARIANT& original) noexcept {
  switch (TagOf(original.Type).kind) {
    case PayloadKind::String:
      return original.Value.string != nullptr;
    case PayloadKind::Sref:
      return original.Value.sref == nullptr;  // others are left to the general path, which examines ref and text
    default:
      return true;
  }
}

// The short path, for a destination that owns nothing and a source that needs no copy of its record, avoids building
// two records. It may reset the destination first: the source is another record, and no owned part of the destination.
static ZRRESULT ChangeScalar(ZRVARIANT& destination, const ZRVARIANT& source, uint16_t target) {
  if (OwnsSomething(destination.Type) || !IsNormalised(source)) return ChangeAndRelease(destination, source, target);
  destination = kResetVariant;
  return ConvertIntoReset(destination, source, target);
}

// One conversion in place. If it does not succeed, by a result code or by an exception, the destructor restores the
// value.
//
// While it runs, `variant_` is the destination and starts empty; `oldValue_` owns the old payload, and `working_`
// borrows it as the source. The members are initialised in the order of their declaration, which is the order of the
// steps: save the record, take over what it owned and reset it, normalise what was saved.
class CConversionInPlace {
 public:
  explicit CConversionInPlace(ZRVARIANT& variant) noexcept
      : variant_(variant),
        original_(variant),
        oldValue_(CVariantHolder::Adopt(variant)),
        working_(Lend(original_, copy_)) {}
  CConversionInPlace(const CConversionInPlace&) = delete;
  CConversionInPlace& operator=(const CConversionInPlace&) = delete;
  ~CConversionInPlace() {
    if (!hasSucceeded_) Restore();
  }

  ZRRESULT Run(uint16_t target) {
    const ZRRESULT result = ConvertScalar(working_, target, variant_.Value);
    if (result == ZR_R_OK) {
      hasSucceeded_ = true;
      variant_.Type = target;
    } else {
      ReleasePayload(TagOf(target).kind, variant_.Value);  // Restore overwrites it, so it would leak
    }
    return result;
  }

 private:
  // Restores the value as ZrVariantCopy would have copied it:
  //
  //     same payload as before   the record owns it again
  //     null string              became the shared empty string, which gets one more reference
  //     SREF without content     became null; `oldValue_` still owns the old SREF and releases it
  void Restore() noexcept {
    variant_ = working_;
    if (working_.Value.address == original_.Value.address) {
      (void)oldValue_.Detach();
    } else if (TagOf(working_.Type).kind == PayloadKind::String) {
      (void)ShareString(working_.Value.string);  // `working_` has no reference of its own
    }
  }

  ZRVARIANT& variant_;
  bool hasSucceeded_ = false;
  const ZRVARIANT original_;
  CVariantHolder oldValue_;
  ZRVARIANT copy_ = kResetVariant;
  const ZRVARIANT& working_;
};

static ZRRESULT ChangeInPlace(ZRVARIANT& variant, uint16_t target) { return CConversionInPlace(variant).Run(target); }

// Converts the elements of a private copy, so that a failure leaves the source and the destination unchanged. A
// conversion that is complete for an array, but with elements that did not convert (result 1), is a failure here.
//
// The destination is reset after the conversion, because it may be the source or own it.
static ZRRESULT ChangeArray(ZRVARIANT& destination, const ZRVARIANT& source, uint32_t flags, uint16_t target) {
  CVariantHolder holder;
  ZRVARIANT& copy = holder.Mutable();
  copy.Type = source.Type;
  (void)CopyArray(source.Value.array, &copy.Value.array);  // null after a failure, which ChangeArrayType refuses
  if (ChangeArrayType(copy.Value.array, flags, target) != ZR_R_OK) return ZR_R_FAILED;
  ResetVariant(destination);
  destination.Type = target | ZR_VT_ARRAY;
  std::swap(destination.Value, copy.Value);
  return ZR_R_OK;
}

// The order of the checks is part of the contract. In particular, equal tags are a success before anything else is
// checked, even if the source is an array, is by reference or has a tag that does not convert.
ZRRESULT ZrVariantChangeType(ZRVARIANT* destination, const ZRVARIANT* source, uint32_t flags, uint16_t target) {
  if (destination == nullptr || source == nullptr) return ZR_R_INVALID_POINTER;
  if ((source->Type & ZR_VT_TYPEMASK) == target) {
    if (destination == source) return ZR_R_OK;
    ResetVariant(*destination);
    (void)CopyIntoReset(*destination, *source);  // an array that cannot be copied is null, and that is not reported
    return ZR_R_OK;
  }
  if (HasFlag(source->Type, ZR_VT_BYREF)) return ZR_R_NOT_SUPPORTED;
  if (HasFlag(source->Type, ZR_VT_ARRAY)) return ChangeArray(*destination, *source, flags, target & ZR_VT_TYPEMASK);
  if (destination == source) return ChangeInPlace(*destination, target);
  return ChangeScalar(*destination, *source, target);
}
