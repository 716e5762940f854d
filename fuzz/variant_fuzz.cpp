// Sequences of operations on a few records. After each step every shared thing has as many owners as records hold it;
// the address sanitizer looks for what is lost or released twice.

#include <array>

#include "frame/item_allocator.h"
#include "fuzz/fuzz_support.h"
#include "tests/support/variant_text.h"

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

static const int64_t g_count = 5;  // what a ZR_VT_QWORD may be taken for the address of

class CVariantSequence {
 public:
  CVariantSequence(const uint8_t* data, std::size_t size) : at_(data), end_(data + size) {
    for (std::size_t row = 0; row < std::size(kValues); ++row) behind_[row] = Make(row);
  }

  void Run() {
    while (at_ != end_) {
      Step();
      Check();
    }
  }

 private:
  unsigned Next() { return at_ != end_ ? *at_++ : 0; }

  // A value, with the one shared text where it says so.
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

  uint16_t Target() {
    const unsigned target = Next();
    return static_cast<uint16_t>(target % 64 | (target >= 252 ? 0x4000 : 0));
  }

  void Step() {
    OwnedVariant& slot = slots_[Next() % slots_.size()];
    OwnedVariant& other = slots_[Next() % slots_.size()];
    switch (Next() % 10) {
      case 0:
        (void)ZrVariantClear(&slot);
        FUZZ_CLAIM(ZrVariantInit(&slot) == ZR_R_OK);
        break;
      case 1:
        slot = Make(Next() % std::size(kValues));
        break;
      case 2: {  // a reference to what stays, or to such a reference, or to nothing
        const std::size_t row = Next() % std::size(kValues);
        const unsigned way = Next() % 4;
        (void)ZrVariantClear(&slot);
        references_[row] = ByRef(behind_[row]);
        ZRVARIANT& record = way == 1 ? references_[row] : behind_[row];
        const ZRVARIANT reference = way == 0   ? ByRef(behind_[row])
                                    : way == 3 ? ByRef(behind_[row].Type, nullptr)
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
        FUZZ_CLAIM((slot.Type & ZR_VT_BYREF) == 0);
        break;
      case 6: {
        uint8_t equal = 9;
        const ZRRESULT result = ZrVariantCompare(&slot, &other, &equal);
        FUZZ_CLAIM(equal == 9 || equal <= 1);
        FUZZ_CLAIM(slot.Type == other.Type || (equal == 0 && result == ZR_R_OK));
        FUZZ_CLAIM(ZrVariantIsContentEmpty(&slot) <= 1);
        break;
      }
      default:
        Change(slot, other, Target());
    }
  }

  void Change(OwnedVariant& slot, OwnedVariant& other, uint16_t target) {
    if (other.Type == ZR_VT_QWORD && target == ZR_VT_DATETIME) return Dereference(slot);
    // The record that this failure leaves behind would be nobody's.
    if (&slot != &other && other.Type == ZR_VT_REF && other.Value.ref == nullptr && target == ZR_VT_SREF) return;
    const std::string before = Describe(other);
    const ZRRESULT result = ZrVariantChangeType(&slot, &other, 0, target);
    FUZZ_CLAIM(&slot == &other || Describe(other) == before);
    if (ZR_SUCCEEDED(result)) {
      FUZZ_CLAIM((slot.Type & ZR_VT_TYPEMASK) == target);
    } else if (&slot == &other && before.find("null") == std::string::npos && before != "SREF neither" &&
               NameOf(slot.Type) != nullptr && slot.Type != ZR_VT_EMPTY) {
      FUZZ_CLAIM(Describe(slot) == before || before.find('~') != std::string::npos);
    }
  }

  static void Dereference(OwnedVariant& slot) {
    (void)ZrVariantClear(&slot);
    slot.Type = ZR_VT_QWORD;
    slot.Value.ui8 = reinterpret_cast<uintptr_t>(&g_count);
    FUZZ_CLAIM(ZrVariantChangeType(&slot, &slot, 0, ZR_VT_DATETIME) == ZR_R_OK && slot.Value.dateTime == g_count);
  }

  void Check() const {
    uint32_t texts = 1, objects = 0;
    const auto count = [&](const OwnedVariant& variant) {
      const ZRVARIANTVALUE& value = variant.Value;
      if (variant.Type == ZR_VT_STR) texts += value.string == shared_.string;
      if (variant.Type == ZR_VT_SREF && value.sref != nullptr) texts += value.sref->text == shared_.string;
      if (variant.Type == ZR_VT_UNKNOWN || variant.Type == ZR_VT_DISPATCH) objects += value.address != nullptr;
    };
    for (const OwnedVariant& variant : slots_) count(variant);
    for (const OwnedVariant& variant : behind_) count(variant);
    FUZZ_CLAIM(ZrStringRefCount(shared_) == texts);
    FUZZ_CLAIM(g_object.references == objects);
  }

  const uint8_t* at_;
  const uint8_t* end_;
  const Owned shared_{Units(W("shared"))};
  std::array<OwnedVariant, std::size(kValues)> behind_;
  std::array<ZRVARIANT, std::size(kValues)> references_{};
  std::array<OwnedVariant, 4> slots_;
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CItemAllocator::SetDefaultCap(2);
  CItemAllocator::SetEnabled(size % 2 == 0);
  CVariantSequence(data, size).Run();
  CItemAllocator::SetEnabled(false);
  FUZZ_CLAIM(g_object.references == 0);
  return 0;
}
