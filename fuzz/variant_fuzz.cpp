// Performs any sequence of operations on a few variants. After each step the reference counts of the shared string and
// of the object must match the records that own them. The address sanitizer finds leaks and double releases.

#include <array>

#include "fuzz/fuzz_support.h"
#include "runtime/item_allocator.h"
#include "tests/support/sequence.h"
#include "tests/support/value_snapshot.h"

static constexpr const char* kValues[] = {
    "BOOL 2",
    "I1 -1",
    "I2 -2",
    "I4 77",
    "I8 -9",
    "UI1 1",
    "UI2 2",
    "UI4 4",
    "UI8 8",
    "R4 1.5",
    "R8 -2.5",
    "TIME 5",
    "DATETIME 6",
    "CY 7",
    "BYTE 1",
    "WORD 2",
    "DWORD 4",
    "QWORD 8",
    "OPAQUE 9",
    "CHAR32 65",
    "14 7",
    "60 7",
    "VARIANT 9",
    "UNKNOWN null",
    "BLOB null",
    "BLOB ",
    "BLOB 01020304",
    "UUID null",
    "UUID {00000000-0000-0000-0000-000000000001}",
    "STR null",
    "STR 12",
    "STR 1.2.3.4.5.6",
    "REF null",
    "REF 1.2.3.4.5.6",
    "SREF null",
    "SREF neither",
    "SREF 1.2.3.4.5.6",
    "UNKNOWN object",
    "DISPATCH object",
    "STR shared",
    "SREF text shared",
    "SREF 1.2.3.4.5.6 text shared",
};

static const int64_t g_count = 5;  // a ZR_VT_QWORD may contain its address

class CVariantSequence : public CSequence<CVariantSequence> {
  friend CSequence;

  CVariantSequence(const uint8_t* data, std::size_t size) : CSequence(data, size) {
    for (std::size_t row = 0; row < std::size(kValues); ++row) targets_[row] = Make(row);
  }

  // Makes the value of a row. The text "shared" is always the one shared string.
  OwnedVariant Make(std::size_t row) {
    OwnedVariant made = Value(kValues[row]);
    ZRSTR* text = made.Type == ZR_VT_STR                                     ? &made.Value.string
                  : made.Type == ZR_VT_SREF && made.Value.address != nullptr ? &made.Value.sref->text
                                                                             : nullptr;
    if (text != nullptr && ContentOf(*text) == W("shared")) {
      ZrDestroyString(*text);
      *text = ZrCopyString(shared_);
    }
    return made;
  }

  uint16_t NextTarget() {
    const uint32_t target = NextBelow(256);
    return static_cast<uint16_t>(target % 64 | (target >= 252 ? 0x4000 : 0));
  }

  std::string NameOfSlot(const OwnedVariant& slot) const { return "record " + std::to_string(&slot - slots_.data()); }

  void Step() {
    static constexpr const char* kFunctions[] = {"ZrVariantClear and ZrVariantInit",
                                                 "a new value",
                                                 "a new reference",
                                                 "ZrVariantClear",
                                                 "ZrVariantCopy",
                                                 "ZrVariantCopyInd",
                                                 "ZrVariantCompare",
                                                 "ZrVariantChangeType"};
    OwnedVariant& slot = slots_[NextBelow(4)];
    OwnedVariant& other = slots_[NextBelow(4)];
    const uint32_t operation = std::min(NextBelow(10), 7u);
    const char* function = kFunctions[operation];
    Note([&] {
      const bool hasOther = operation >= 4;
      return function + (" on " + NameOfSlot(slot)) + ": " + Describe(slot) +
             (hasOther ? "\n  and " + NameOfSlot(other) + ": " + Describe(other) : "");
    });
    switch (operation) {
      case 0:
        (void)ZrVariantClear(&slot);
        ClaimResult("ZrVariantInit", ZrVariantInit(&slot), ZR_R_OK);
        break;
      case 1: {
        const uint32_t row = NextBelow(std::size(kValues));
        Note([&] { return std::string("which is ") + kValues[row]; });
        slot = Make(row);
        break;
      }
      case 2: {  // a reference to a value or record that stays, to another reference, or to null
        const uint32_t row = NextBelow(std::size(kValues)), way = NextBelow(4);
        Note([&] { return Format("to %s, way %u", kValues[row], way); });
        (void)ZrVariantClear(&slot);
        references_[row] = ByRef(targets_[row]);
        ZRVARIANT& record = way == 1 ? references_[row] : targets_[row];
        const ZRVARIANT reference = way == 0   ? ByRef(targets_[row])
                                    : way == 3 ? ByRef(targets_[row].Type, nullptr)
                                               : ByRef(ZR_VT_VARIANT, &record);
        static_cast<ZRVARIANT&>(slot) = reference;
        break;
      }
      case 3:
        (void)ZrVariantClear(&slot);
        break;
      case 4:
        (void)ZrVariantCopy(&slot, &other);
        break;
      case 5:
        (void)ZrVariantCopyInd(&slot, &other);
        Claim((slot.Type & ZR_VT_BYREF) == 0, [&] { return "the copy is a reference: " + Describe(slot); });
        break;
      case 6: {
        uint8_t equal = 9;
        const ZRRESULT result = ZrVariantCompare(&slot, &other, &equal);
        Claim(equal == 9 || equal <= 1, [&] { return Format("ZrVariantCompare wrote %u", unsigned{equal}); });
        Claim(slot.Type == other.Type || (equal == 0 && result == ZR_R_OK), [&] {
          return Format("records of two types: ZrVariantCompare wrote %u and returned ", unsigned{equal}) +
                 ResultName(result);
        });
        const uint8_t isEmpty = ZrVariantIsContentEmpty(&slot);
        Claim(isEmpty <= 1, [&] { return Format("ZrVariantIsContentEmpty returned %u", unsigned{isEmpty}); });
        break;
      }
      default:
        Change(slot, other, NextTarget());
    }
    CheckAll();
  }

  void Change(OwnedVariant& slot, OwnedVariant& other, uint16_t target) {
    Note([&] { return Format("to the tag word 0x%04x", unsigned{target}); });
    if (other.Type == ZR_VT_QWORD && target == ZR_VT_DATETIME) return Dereference(slot);
    // This failure leaks a record.
    if (&slot != &other && other.Type == ZR_VT_REF && other.Value.ref == nullptr && target == ZR_VT_SREF) return;
    before_.Assign(other);
    const ZRRESULT result = ZrVariantChangeType(&slot, &other, 0, target);
    after_.Assign(slot);
    if (&slot != &other) {
      source_.Assign(other);
      Claim(source_ == before_, [&] { return "the source is now " + Describe(source_); });
    }
    if (ZR_SUCCEEDED(result)) {
      Claim((slot.Type & ZR_VT_TYPEMASK) == target,
            [&] { return "ZrVariantChangeType returned " + ResultName(result) + " and made " + Describe(slot); });
    } else if (&slot == &other && !IsNullOrEmpty(before_) && NameOf(slot.Type) != nullptr && slot.Type != ZR_VT_EMPTY) {
      Claim(after_ == before_ || !IsMarked(before_.Record()), [&] {
        return "ZrVariantChangeType in place returned " + ResultName(result) + " and left " + Describe(after_);
      });
    }
  }

  // Whether a value is a null of an owned kind, or an SREF with neither part. A failure in place does not preserve
  // these.
  static bool IsNullOrEmpty(const Snapshot& value) {
    const bool isValue = (value.Type() & (ZR_VT_ARRAY | ZR_VT_BYREF)) == 0;
    const bool isNull = isValue && IsOwned(value.Type() & ZR_VT_TYPEMASK) && value.IsNull();
    return isNull || (value.Type() == ZR_VT_SREF && value.Bytes() == std::string_view("", 1));
  }
  static bool IsMarked(const ZRVARIANT& record) {
    return record.Reserved1 == 0x41 && record.Reserved2 == 0x4D && record.Reserved3 == 0x43;
  }

  void Dereference(OwnedVariant& slot) {
    (void)ZrVariantClear(&slot);
    slot.Type = ZR_VT_QWORD;
    slot.Value.ui8 = reinterpret_cast<uintptr_t>(&g_count);
    ClaimResult("ZrVariantChangeType of an address", ZrVariantChangeType(&slot, &slot, 0, ZR_VT_DATETIME), ZR_R_OK);
    ClaimNumber("the count at the address", slot.Value.dateTime, g_count);
  }

  void CheckAll() {
    uint32_t texts = 1, objects = 0;
    const auto count = [&](const OwnedVariant& variant) {
      const ZRVARIANTVALUE& value = variant.Value;
      if (variant.Type == ZR_VT_STR) texts += value.string == shared_.string;
      if (variant.Type == ZR_VT_SREF && value.sref != nullptr) texts += value.sref->text == shared_.string;
      if (variant.Type == ZR_VT_UNKNOWN || variant.Type == ZR_VT_DISPATCH) objects += value.address != nullptr;
    };
    for (const OwnedVariant& variant : slots_) count(variant);
    for (const OwnedVariant& variant : targets_) count(variant);
    ClaimNumber("the reference count of the shared string", ZrStringRefCount(shared_), texts);
    ClaimNumber("the count of references to the object", g_object.references - objects_, objects);
  }

  const Owned shared_{Units(W("shared"))};
  const uint32_t objects_ = g_object.references;
  Snapshot before_, after_, source_;
  std::array<OwnedVariant, std::size(kValues)> targets_;
  std::array<ZRVARIANT, std::size(kValues)> references_{};
  std::array<OwnedVariant, 4> slots_;
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CItemAllocator::SetDefaultCap(2);
  CItemAllocator::SetEnabled(size % 2 == 0);
  FuzzRequire(CVariantSequence::Run(data, size));
  CItemAllocator::SetEnabled(false);
  FUZZ_CLAIM(g_object.references == 0);
  return 0;
}
