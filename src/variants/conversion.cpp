// The frame that every conversion goes through: its order of steps, and what becomes of the destination.

#include "variants/conversion.h"

#include "text/counted_string.h"
#include "variants/array_payload.h"
#include "variants/numeric_targets.h"
#include "variants/structured_targets.h"
#include "variants/text_target.h"
#include "variants/variant_record.h"

// ---- Dispatch ------------------------------------------------------------------------------------------------------

struct CTarget {
  TargetFunction* convert = nullptr;
  Column column = kColumnCount;
  ZRRESULT refusal = ZR_R_INVALID_ARGUMENTS;  // where there is no function
};

struct CTargetRow {
  uint16_t tag;
  CTarget what;
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

static constexpr auto kTargets = [] {
  std::array<CTarget, kTagCount> targets{};
  for (const CTargetRow& row : kTargetRows) targets[row.tag] = row.what;
  return targets;
}();

ZRRESULT ConvertScalar(const ZRVARIANT& source, uint16_t target, ZRVARIANTVALUE& value) {
  const CTarget& to = kTargets[target <= ZR_VT_LAST ? target : ZR_VT_LAST + 1];  // flags make it greater
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

// ---- The frame -----------------------------------------------------------------------------------------------------

// A scalar as ZrVariantCopy would give it, but with the payload of the original and without an owner: the original
// itself, or `copy` where a copy is not the same 16 bytes.
static const ZRVARIANT& Lend(const ZRVARIANT& original, ZRVARIANT& copy) noexcept {
  const PayloadKind kind = TagOf(original.Type).kind;
  if (IsInline(kind)) return original;
  copy = kResetVariant;
  copy.Type = original.Type;
  if (!IsOwned(kind)) return copy;
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

static ZRRESULT ConvertIntoReset(ZRVARIANT& destination, const ZRVARIANT& source, uint16_t target) {
  const ZRRESULT result = ConvertScalar(source, target, destination.Value);
  if (result == ZR_R_OK) destination.Type = target;
  return result;
}

// What the destination held lives until the end: the source may lie within it.
static ZRRESULT ChangeAndRelease(ZRVARIANT& destination, const ZRVARIANT& source, uint16_t target) {
  const CVariantHolder before = CVariantHolder::Adopt(destination);
  ZRVARIANT copy;
  return ConvertIntoReset(destination, Lend(source, copy), target);
}

// Whether the original does as well as its copy: the marker words differ at most, which no conversion reads.
static bool IsLentAsItIs(const ZRVARIANT& original) noexcept {
  switch (TagOf(original.Type).kind) {
    case PayloadKind::String:
      return original.Value.string != nullptr;
    case PayloadKind::Sref:
      return original.Value.sref == nullptr;
    default:
      return true;
  }
}

static ZRRESULT ChangeScalar(ZRVARIANT& destination, const ZRVARIANT& source, uint16_t target) {
  if (OwnsSomething(destination.Type) || !IsLentAsItIs(source)) return ChangeAndRelease(destination, source, target);
  destination = kResetVariant;
  return ConvertIntoReset(destination, source, target);
}

// A conversion in place at work. One that doesn't succeed, by a code or an exception, puts back what the record held.
class CConversionInPlace {
 public:
  explicit CConversionInPlace(ZRVARIANT& variant) noexcept
      : variant_(variant),
        original_(variant),
        before_(CVariantHolder::Adopt(variant)),
        working_(Lend(original_, copy_)) {}
  CConversionInPlace(const CConversionInPlace&) = delete;
  CConversionInPlace& operator=(const CConversionInPlace&) = delete;
  ~CConversionInPlace() {
    if (!hasSucceeded_) PutBack();
  }

  ZRRESULT Run(uint16_t target) {
    const ZRRESULT result = ConvertScalar(working_, target, variant_.Value);
    if (result == ZR_R_OK) {
      hasSucceeded_ = true;
      variant_.Type = target;
    } else {
      ReleasePayload(TagOf(target).kind, variant_.Value);  // nobody else could ever find it again
    }
    return result;
  }

 private:
  // As a copy would be, which is the value itself but where a copy differs.
  void PutBack() noexcept {
    variant_ = working_;
    if (working_.Value.address == original_.Value.address) {
      (void)before_.Detach();
    } else if (TagOf(working_.Type).kind == PayloadKind::String) {
      (void)ShareString(working_.Value.string);  // the empty one was lent
    }
  }

  ZRVARIANT& variant_;
  bool hasSucceeded_ = false;
  const ZRVARIANT original_;
  CVariantHolder before_;
  ZRVARIANT copy_ = kResetVariant;
  const ZRVARIANT& working_;
};

static ZRRESULT ChangeInPlace(ZRVARIANT& variant, uint16_t target) { return CConversionInPlace(variant).Run(target); }

// By way of a private array, so that a failure leaves the destination alone.
static ZRRESULT ChangeArray(ZRVARIANT& destination, const ZRVARIANT& source, uint32_t flags, uint16_t target) {
  CVariantHolder holder;
  ZRVARIANT& copy = holder.Mutable();
  copy.Type = source.Type;
  (void)CopyArray(source.Value.array, &copy.Value.array);  // what has no copy has no elements to convert either
  if (ChangeArrayType(copy.Value.array, flags, target) != ZR_R_OK) return ZR_R_FAILED;
  ResetVariant(destination);
  destination.Type = target | ZR_VT_ARRAY;
  std::swap(destination.Value, copy.Value);
  return ZR_R_OK;
}

ZRRESULT ZrVariantChangeType(ZRVARIANT* destination, const ZRVARIANT* source, uint32_t flags, uint16_t target) {
  if (destination == nullptr || source == nullptr) return ZR_R_INVALID_POINTER;
  if ((source->Type & ZR_VT_TYPEMASK) == target) {
    if (destination == source) return ZR_R_OK;
    ResetVariant(*destination);
    (void)CopyIntoReset(*destination, *source);  // an array that isn't copied is not told, by contract
    return ZR_R_OK;
  }
  if (HasFlag(source->Type, ZR_VT_BYREF)) return ZR_R_NOT_SUPPORTED;
  if (HasFlag(source->Type, ZR_VT_ARRAY)) return ChangeArray(*destination, *source, flags, target & ZR_VT_TYPEMASK);
  if (destination == source) return ChangeInPlace(*destination, target);
  return ChangeScalar(*destination, *source, target);
}
