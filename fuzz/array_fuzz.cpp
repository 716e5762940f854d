// Any sequence of operations on a few arrays, against arrays of texts: what each element is shown as.

#include <algorithm>

#include "fuzz/fuzz_support.h"
#include "tests/support/array_model.h"

class CArraySequence {
 public:
  CArraySequence(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  void Run() {
    while (size_ != 0) {
      Slot& slot = slots_[Next(kSlots)];
      switch (Next(10)) {
        case 0:
          Create(slot);
          break;
        case 1:
        case 2:
          Put(slot);
          break;
        case 3:
          Get(slot);
          break;
        case 4:
          Copy(slot, slots_[Next(kSlots)]);
          break;
        case 5:
          Redim(slot);
          break;
        case 6:
          ChangeType(slot);
          break;
        case 7:
          Compare(slot, slots_[Next(kSlots)]);
          break;
        case 8:
          Lock(slot);
          break;
        default:
          ChangeInVariant(slot, slots_[Next(kSlots)]);
      }
      Check(slot);
    }
    for (Slot& slot : slots_) slot = Slot();
    FUZZ_CLAIM(g_object.references == 0);
  }

 private:
  static constexpr uint32_t kSlots = 3;

  struct Slot {
    Array array;
    uint16_t tag = 0, elementTag = 0;  // not the same if the type was changed without elements
    std::vector<ZrSafeArrayBound> bounds;
    std::vector<std::string> elements;
    bool isTaken = false;
  };

  uint32_t Next(uint32_t end) {
    if (size_ == 0) return 0;
    --size_;
    return *data_++ % end;
  }

  static uint32_t CountOf(const std::vector<ZrSafeArrayBound>& bounds) {
    uint32_t count = 1;
    for (const ZrSafeArrayBound& bound : bounds) count *= bound.elementCount;
    return count;
  }

  std::vector<ZrSafeArrayBound> NextBounds() {
    std::vector<ZrSafeArrayBound> bounds(1 + Next(3));
    for (ZrSafeArrayBound& bound : bounds) bound = {Next(5), static_cast<int32_t>(Next(5)) - 2};
    return bounds;
  }

  uint16_t NextTag() { return kElementTags[Next(kElementTags.size())]; }

  static std::string Zero(uint16_t tag) { return ShowEach(tag, MakeArray(tag, {{1, 0}}).get())[0]; }

  void Check(const Slot& slot) {
    if (slot.array == nullptr) return;
    uint16_t tag = 0;
    uint32_t dimensions = 0, count = 0;
    const ZrSafeArrayBound* bounds = nullptr;
    FUZZ_CLAIM(ZrSafeArrayGetVartype(slot.array.get(), &tag) == ZR_R_OK && tag == slot.tag);
    FUZZ_CLAIM(ZrSafeArrayGetBounds(slot.array.get(), &dimensions, &bounds) == ZR_R_OK &&
               dimensions == slot.bounds.size());
    FUZZ_CLAIM(std::memcmp(bounds, slot.bounds.data(), dimensions * sizeof *bounds) == 0);
    FUZZ_CLAIM(ZrSafeArrayGetElementCount(slot.array.get(), &count, nullptr) == ZR_R_OK &&
               count == slot.elements.size());
    FUZZ_CLAIM(ShowEach(slot.elementTag, slot.array.get()) == slot.elements);
  }

  void Create(Slot& slot) {
    slot = Slot();
    slot.tag = slot.elementTag = NextTag();
    slot.bounds = NextBounds();
    slot.elements.assign(CountOf(slot.bounds), Zero(slot.tag));
    slot.array = MakeArray(slot.tag, slot.bounds);
  }

  // A value of the input's bytes, in an array that owns it.
  Array NextValue(uint16_t tag) {
    Element element{};
    unsigned char bytes[16] = {};
    const uint32_t length = Next(sizeof bytes + 1);
    for (uint32_t index = 0; index < length; ++index) bytes[index] = static_cast<unsigned char>(Next(256));
    const bool isNull = length == 0;
    switch (tag) {
      case ZR_VT_STR:
        element.value.string = isNull ? nullptr : ZrCreateStringByteLen(reinterpret_cast<char*>(bytes), length & ~1u);
        break;
      case ZR_VT_BLOB:
        element.value.blob = isNull ? nullptr : ZrCreateBlob(length, bytes);
        break;
      case ZR_VT_REF:
      case ZR_VT_SREF: {
        ZRREF* ref = ZrCreateREF();
        std::memcpy(ref, bytes, sizeof bytes);
        element.value.ref = ref;
        if (tag == ZR_VT_REF) break;
        element.value.sref = ZrCreateSREF();
        if (length % 2 == 0) element.value.sref->text = ZrCreateStringByteLen(reinterpret_cast<char*>(bytes), 8);
        element.value.sref->ref = length % 3 == 0 ? (ZrDestroyREF(ref), nullptr) : ref;
        break;
      }
      case ZR_VT_UNKNOWN:
      case ZR_VT_DISPATCH:
        if (isNull) break;
        g_object.AddRef();
        element.value.dispatch = &g_object;
        break;
      case ZR_VT_VARIANT: {
        const uint16_t inner = NextTag();
        (void)ZrVariantInit(&element.variant);
        const Slot& slot = slots_[Next(kSlots)];
        if (inner == ZR_VT_VARIANT || inner == ZR_VT_QWORD) {  // (one conversion takes the latter for an address)
          if (slot.array == nullptr || slot.tag != slot.elementTag || ShowArray(slot.array.get()).size() > 2000) break;
          element.variant.Type = slot.tag | ZR_VT_ARRAY;
          element.variant.Value.array = CopyOf(slot.array.get()).release();
        } else if (inner == ZR_VT_UUID) {
          element.variant.Type = inner;
          element.variant.Value.uuid = ZrCreateUUID();
        } else {
          const Array value = NextValue(inner);
          ZRVARIANT byRef = ZR_VARIANT_INIT;
          byRef.Type = inner | ZR_VT_BYREF;
          byRef.Value.address = ContentOf(value.get()).data;
          (void)ZrVariantCopyInd(&element.variant, &byRef);
        }
        break;
      }
      default:
        std::memcpy(&element, bytes, sizeof bytes);
    }
    return ArrayOf(tag, {element});
  }

  // Indices around the bounds, and the place they stand for.
  int32_t NextPlace(const Slot& slot, std::vector<uint32_t>& indices) {
    uint32_t place = 0, factor = 1;
    indices.resize(slot.bounds.size());
    for (std::size_t k = slot.bounds.size(); k-- > 0; factor *= slot.bounds[k].elementCount) {
      const uint32_t offset = Next(7) - 1;
      indices[k] = offset + static_cast<uint32_t>(slot.bounds[k].lowerBound);
      place += offset * factor;
    }
    return static_cast<int32_t>(place);
  }

  static bool IsPlain(uint16_t tag) { return tag < ZR_VT_BLOB || tag == ZR_VT_CHAR32 || tag == ZR_VT_UUID; }

  void Put(Slot& slot) {
    if (slot.array == nullptr) return;
    std::vector<uint32_t> indices;
    const int32_t place = NextPlace(slot, indices);
    const uint16_t tag = slot.elementTag;
    const Array value = NextValue(tag);
    const bool hasPlace = place >= 0 && static_cast<uint32_t>(place) < slot.elements.size();
    if (!hasPlace && !slot.isTaken && (!IsPlain(tag) || (place >= 0 && !slot.elements.empty())))
      return;  // the caller's part
    const char* data = ContentOf(value.get()).data;
    std::string shown = ShowElement(tag, data);
    const bool isRefused = (tag == ZR_VT_REF && shown == "null") || (tag == ZR_VT_SREF && shown == "neither");
    const ZRRESULT result = ZrSafeArrayPutElement(slot.array.get(), indices.data(), data);
    if (slot.isTaken) {
      FUZZ_CLAIM(result == ZR_R_INVALID_OBJECT_STATE);
    } else if (!hasPlace) {
      FUZZ_CLAIM(result == (place < 0 ? ZR_R_INVALID_ARGUMENTS : 1));
    } else {
      FUZZ_CLAIM((result == ZR_R_OK) == !isRefused);
      slot.elements[static_cast<uint32_t>(place)] = isRefused ? "null" : CopiedAlone(tag, shown);
    }
  }

  void Get(Slot& slot) {
    if (slot.array == nullptr) return;
    std::vector<uint32_t> indices;
    const int32_t place = NextPlace(slot, indices);
    if (place >= 0 && static_cast<uint32_t>(place) >= slot.elements.size() && !slot.elements.empty()) return;
    const Array variable = MakeArray(slot.elementTag, {{1, 0}});
    char* data = ContentOf(variable.get()).data;
    const ZRRESULT result = ZrSafeArrayGetElement(slot.array.get(), indices.data(), data);
    if (slot.isTaken) {
      FUZZ_CLAIM(result == ZR_R_INVALID_OBJECT_STATE);
    } else if (place < 0) {
      FUZZ_CLAIM(result == (slot.elementTag == ZR_VT_VARIANT ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS));
    } else if (slot.elements.empty()) {
      FUZZ_CLAIM(result == 1);
    } else {
      FUZZ_CLAIM(result == ZR_R_OK &&
                 ShowElement(slot.elementTag, data) == slot.elements[static_cast<uint32_t>(place)]);
    }
  }

  void Copy(Slot& to, const Slot& from) {
    if (from.array == nullptr || &to == &from) return;
    ZRSAFEARRAY array = to.array.release();
    FUZZ_CLAIM(ZrSafeArrayCopy(from.array.get(), &array) == ZR_R_OK);
    to = {Array(array), from.tag, from.elementTag, from.bounds, from.elements};
  }

  void Redim(Slot& slot) {
    if (slot.array == nullptr) return;
    slot.bounds = NextBounds();
    FUZZ_CLAIM(ZrSafeArrayRedim(slot.array.get(), static_cast<uint32_t>(slot.bounds.size()), slot.bounds.data()) ==
               ZR_R_OK);
    for (std::string& element : slot.elements) element = CopiedAlone(slot.elementTag, element);
    slot.elements.resize(CountOf(slot.bounds), Zero(slot.elementTag));
  }

  void ChangeType(Slot& slot) {
    if (slot.array == nullptr) return;
    const uint16_t target = NextTag();
    if (slot.elements.empty()) {
      FUZZ_CLAIM(ZrSafeArrayChangeType(slot.array.get(), 0, target) == ZR_R_FAILED);
    } else {
      const auto [converted, all] = ConvertSlowly(slot.elementTag, slot.array.get(), target);
      FUZZ_CLAIM(ZrSafeArrayChangeType(slot.array.get(), 0, target) == (all ? ZR_R_OK : 1));
      slot.elements = ShowEach(target, converted.get());
      slot.tag = target;
    }
    slot.elementTag = target;
  }

  // The same in a variant, by way of copies.
  void ChangeInVariant(Slot& to, const Slot& from) {
    const uint16_t target = NextTag();
    if (from.array == nullptr || from.elements.empty() || from.tag != from.elementTag || from.tag == target) return;
    const auto [converted, all] = ConvertSlowly(from.tag, CopyOf(from.array.get()).get(), target);
    OwnedVariant source = InVariant(from.tag, CopyOf(from.array.get())), result;
    FUZZ_CLAIM(ZrVariantChangeType(&result, &source, 0, target) == (all ? ZR_R_OK : ZR_R_FAILED));
    FUZZ_CLAIM((result.Type == 0) == !all && ShowEach(from.tag, source.Value.array) == from.elements);
    if (!all) return;
    to = {Array(std::exchange(result.Value.array, nullptr)), target, target, from.bounds,
          ShowEach(target, converted.get())};
  }

  void Compare(const Slot& left, const Slot& right) {
    if (left.array == nullptr || right.array == nullptr) return;
    uint8_t equal = 9;
    FUZZ_CLAIM(ZrSafeArrayCompare(left.array.get(), right.array.get(), &equal) == ZR_R_OK);
    const auto key = [](const Slot& slot) {
      return Hex(slot.bounds.data(), slot.bounds.size() * sizeof(ZrSafeArrayBound));
    };
    if (key(left) != key(right)) {
      FUZZ_CLAIM(equal == 9);
    } else if (&left == &right || left.tag != right.tag || left.elementTag != right.elementTag) {
      FUZZ_CLAIM(equal == 1);
    } else if (IsPlain(left.tag)) {
      FUZZ_CLAIM(equal == (left.elements == right.elements));
    }
  }

  void Lock(Slot& slot) {
    if (slot.array == nullptr) return;
    void* data = nullptr;
    const ZRRESULT whenFree = slot.isTaken ? ZR_R_INVALID_OBJECT_STATE : ZR_R_OK;
    const ZRRESULT whenTaken = slot.isTaken ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE;
    switch (Next(3)) {
      case 0:
        FUZZ_CLAIM(ZrSafeArrayLock(slot.array.get()) == whenFree);
        slot.isTaken = true;
        break;
      case 1:
        FUZZ_CLAIM(ZrSafeArrayAccessData(slot.array.get(), &data) == whenFree);
        slot.isTaken = true;
        break;
      default:
        FUZZ_CLAIM(ZrSafeArrayUnlock(slot.array.get()) == whenTaken);
        slot.isTaken = false;
    }
  }

  const uint8_t* data_;
  size_t size_;
  Slot slots_[kSlots];
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CArraySequence(data, size).Run();
  return 0;
}
