// Sequences of operations on a few arrays in variants, compared after each step with a model. The model of an array is
// a vector of snapshots, one per element. The reference counts of the shared string and of the object must match the
// number of snapshots that contain them.

#pragma once

#include <algorithm>

#include "tests/support/array_model.h"
#include "tests/support/sequence.h"
#include "tests/support/value_snapshot.h"

// The values that a put chooses from, in the tests' text form. There is one list per tag.
inline const std::vector<std::vector<std::string>> g_putTexts = [] {
  std::vector<std::vector<std::string>> lists(ZR_VT_TYPEMASK + 1);
  for (const TagName& row : kElementTags) {
    for (const std::string& text : TextsOf(row.tag)) lists[row.tag].push_back(row.name + (" " + text));
  }
  return lists;
}();

class CArraySequence : public CSequence<CArraySequence> {
  friend CSequence;

  using Shape = std::vector<ZrSafeArrayBound>;

  struct Slot {
    OwnedVariant variant = Value("I4 0");
    Shape shape = {{2, 0}};
    std::vector<Snapshot> elements;
    bool isTaken = false;
    uint32_t strings = 0, objects = 0;  // elements that own the shared string, and the object

    uint16_t Tag() const { return variant.Type & ZR_VT_TYPEMASK; }
    ZRSAFEARRAY Array() const { return variant.Value.array; }
  };

  CArraySequence(const uint8_t* data, std::size_t size) : CSequence(data, size) {
    for (Slot& slot : slots_) Create(slot, slot);
    for (Slot& slot : slots_) CountOwners(slot);
  }

  // ---- What the bytes choose ----

  // The tag is often the tag of another slot, so that there are arrays to compare.
  uint16_t NextTag() {
    const uint32_t way = NextBelow(16);
    return way > 8 ? slots_[way % kSlots].Tag() : kElementTags[NextBelow(std::size(kElementTags))].tag;
  }
  Shape NextShape() {
    constexpr int32_t kLower[] = {0, 1, -2, INT32_MAX, INT32_MIN};
    const uint32_t way = NextBelow(16);
    if (way > 8) return slots_[way % kSlots].shape;
    if (way == 0) return {{0x10000, 0}, {0x10000, 0}};  // the product of the counts wraps to 0
    Shape shape(1 + way % 3);
    for (ZrSafeArrayBound& bound : shape) bound = {NextBelow(5), kLower[NextBelow(5)]};
    return shape;
  }

  // ---- As text, for a failure ----

  std::string NameOfSlot(const Slot& slot) const { return "array " + std::to_string(&slot - slots_); }

  static std::string DescribeShape(const Shape& shape) {
    std::string text;
    for (const ZrSafeArrayBound& bound : shape) text += Format("[%u from %d]", bound.elementCount, bound.lowerBound);
    return text;
  }

  std::string DescribeSlot(const Slot& slot) const {
    std::string text = NameOfSlot(slot) + ", " + TagText(slot.Tag()) + " " + DescribeShape(slot.shape);
    if (slot.isTaken) text += ", its flag taken";
    const char* separator = ": ";
    for (const Snapshot& element : slot.elements) text += std::exchange(separator, "; ") + Describe(element);
    return text;
  }

  // Notes the operation and the array that it starts from.
  template <class Text>
  void NoteOperation(const Slot& slot, Text&& text) {
    Note(text);
    Note([&] { return "before: " + DescribeSlot(slot); });
  }

  // ---- The model ----

  static std::vector<Snapshot> Zeros(uint16_t tag, const Shape& shape) {
    static constexpr ZRVARIANT kEmpty = ZR_VARIANT_INIT, kZero = {};
    uint32_t count = 1;
    for (const ZrSafeArrayBound& bound : shape) count *= bound.elementCount;
    const ZRVARIANT& element = tag == ZR_VT_VARIANT ? kEmpty : kZero;
    return std::vector<Snapshot>(count, SnapshotOf(tag, reinterpret_cast<const char*>(&element)));
  }

  static Snapshot SnapshotOf(uint16_t tag, const char* element) { return Snapshot(Lend(tag, element)); }
  static Snapshot FirstElement(uint16_t tag, const Array& array) {
    return SnapshotOf(tag, StorageOf(array.get()).data);
  }

  static void CountOwners(Slot& slot) {
    static constexpr WCHAR kShared[] = W("common");
    const std::string_view shared(reinterpret_cast<const char*>(kShared), sizeof kShared - sizeof(WCHAR));
    slot.strings = slot.objects = 0;
    for (const Snapshot& element : slot.elements) {
      const bool mayBeObject = element.Type() == ZR_VT_UNKNOWN || element.Type() == ZR_VT_DISPATCH;
      slot.strings += element.TextBytes() == shared;  // an element owns at most one string
      slot.objects += mayBeObject && !element.IsNull();
    }
  }

  void CheckAll() {
    for (Slot& slot : slots_) Check(slot);
  }

  void Check(Slot& slot) {
    ZRSAFEARRAY array = slot.Array();
    uint16_t tag = 77;
    uint32_t dimensions = 0, count = 77, at = 0;
    uint64_t bytes = 77;
    const ZrSafeArrayBound* bounds = nullptr;
    ClaimResult("ZrSafeArrayGetVartype", ZrSafeArrayGetVartype(array, &tag), ZR_R_OK);
    Claim(tag == slot.Tag(), [&] { return "the type is " + TagText(tag) + ", expected " + TagText(slot.Tag()); });
    ClaimResult("ZrSafeArrayGetBounds", ZrSafeArrayGetBounds(array, &dimensions, &bounds), ZR_R_OK);
    const bool hasShape = dimensions == slot.shape.size() && bounds != nullptr &&
                          std::memcmp(bounds, slot.shape.data(), dimensions * sizeof *bounds) == 0;
    Claim(hasShape, [&] {
      const Shape found = bounds != nullptr ? Shape(bounds, bounds + dimensions) : Shape();
      return "the bounds are " + DescribeShape(found) + ", the model expects " + DescribeShape(slot.shape);
    });
    for (const ZrSafeArrayBound& bound : slot.shape) {
      const auto lowest = static_cast<uint32_t>(bound.lowerBound);
      uint32_t lower = 77, upper = 77;
      ClaimResult("ZrSafeArrayGetLBound", ZrSafeArrayGetLBound(array, ++at, &lower), ZR_R_OK);
      ClaimResult("ZrSafeArrayGetUBound", ZrSafeArrayGetUBound(array, at, &upper), ZR_R_OK);
      ClaimNumber("a lower bound", lower, lowest);
      ClaimNumber("an upper bound", upper, lowest + bound.elementCount - 1);
    }
    ClaimResult("ZrSafeArrayGetElementCount", ZrSafeArrayGetElementCount(array, &count, &bytes), ZR_R_OK);
    ClaimNumber("the count of elements", count, static_cast<uint32_t>(slot.elements.size()));
    ClaimNumber("the size in bytes", bytes, uint64_t{count} * WidthOf(tag));
    const ZRVARIANT byRef = ByRef(slot.variant);
    const uint8_t isEmpty = slot.elements.empty();
    ClaimNumber("ZrVariantIsContentEmpty of the array", ZrVariantIsContentEmpty(&slot.variant), isEmpty);
    ClaimNumber("ZrVariantIsContentEmpty of a reference to it", ZrVariantIsContentEmpty(&byRef), isEmpty);
    CheckElements(slot);
    CheckOwners(slot);
  }

  void CheckElements(const Slot& slot) {
    const Storage storage = StorageOf(slot.Array());
    Claim((storage.data == nullptr) == slot.elements.empty(), [&] {
      return NameOfSlot(slot) +
             (storage.data == nullptr ? " has elements but no storage" : " has storage but no elements");
    });
    ClaimNumber("the count of elements", storage.count, static_cast<uint32_t>(slot.elements.size()));
    if (storage.data == nullptr || storage.count != slot.elements.size()) return;
    const Lender lend(slot.Tag());
    for (uint32_t index = 0; index < storage.count; ++index) {
      found_.Assign(lend(storage.data + index * lend.Width()));
      Claim(found_ == slot.elements[index], [&] {
        return NameOfSlot(slot) + " has \"" + Describe(found_) + "\" at offset " + std::to_string(index) +
               ", the model expects \"" + Describe(slot.elements[index]) + "\"";
      });
    }
  }

  void CheckOwners(Slot& changed) {
    CountOwners(changed);
    uint32_t strings = 0, objects = 0;
    for (const Slot& slot : slots_) {
      strings += slot.strings;
      objects += slot.objects;
    }
    ClaimNumber("the count of references to the string \"common\"", ZrStringRefCount(g_shared) - strings_, strings);
    ClaimNumber("the count of references to the object", g_object.references - objects_, objects);
  }

  // ---- The operations ----

  void Step() {
    using Self = CArraySequence;
    static constexpr void (Self::*kOperations[])(Slot&, Slot&) = {
        &Self::Create, &Self::Access, &Self::Access, &Self::Copy, &Self::Redim, &Self::ChangeType, &Self::Lock};
    Slot& slot = slots_[NextBelow(kSlots)];
    const uint32_t operation = NextBelow(std::size(kOperations));
    (this->*kOperations[operation])(slot, slots_[NextBelow(kSlots)]);
    Check(slot);
  }

  void Create(Slot& slot, Slot& /*other*/) {
    const uint16_t tag = NextTag(), flags = ZR_VT_BYREF | ZR_VT_ARRAY;
    const Shape shape = NextShape();
    NoteOperation(slot, [&] {
      return "ZrSafeArrayCreate(" + TagText(tag) + " | ZR_VT_BYREF | ZR_VT_ARRAY, " + DescribeShape(shape) + ") as " +
             NameOfSlot(slot);
    });
    slot = {InVariant(tag, MakeArray(tag | flags, shape)), shape, Zeros(tag, shape)};
  }

  // Gets and puts the element at one index, which may be just outside the bounds.
  void Access(Slot& slot, Slot& /*other*/) {
    uint32_t indices[3], *index = indices, place = 0;
    for (const ZrSafeArrayBound& bound : slot.shape) {
      const uint32_t offset = NextBelow(7) - 1;
      *index++ = offset + static_cast<uint32_t>(bound.lowerBound);
      place = place * bound.elementCount + offset;
    }
    NoteOperation(slot, [&] {
      std::string text = "get and put in " + NameOfSlot(slot) + " at index";
      for (const uint32_t* each = indices; each != index; ++each) text += Format(" %d", static_cast<int32_t>(*each));
      return text + Format(", offset %d", static_cast<int32_t>(place));
    });
    if (slot.isTaken) return AccessTaken(slot, indices);
    if (place < slot.elements.size()) return AccessElement(slot, indices, slot.elements[place]);
    if (slot.elements.empty() || place > INT32_MAX) AccessMissingElement(slot, indices, place > INT32_MAX);
  }

  void AccessTaken(Slot& slot, const uint32_t* indices) {
    const ZRRESULT rejected = ZR_R_INVALID_OBJECT_STATE;
    void* data = this;
    ClaimResult("ZrSafeArrayPutElement", ZrSafeArrayPutElement(slot.Array(), indices, this), rejected);
    ClaimResult("ZrSafeArrayGetElement", ZrSafeArrayGetElement(slot.Array(), indices, this), rejected);
    ClaimResult("ZrSafeArrayAccessData", ZrSafeArrayAccessData(slot.Array(), &data), rejected);
    Claim(data == this, [] { return "ZrSafeArrayAccessData wrote to its argument while the flag was taken"; });
  }

  void AccessElement(Slot& slot, const uint32_t* indices, Snapshot& element) {
    const uint16_t tag = slot.Tag();
    const Array got = MakeArray(tag, {{1, 0}}), copy = MakeArray(tag, {{1, 0}});
    ClaimResult("ZrSafeArrayGetElement", ZrSafeArrayGetElement(slot.Array(), indices, StorageOf(got.get()).data),
                element.Type() == 14 ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
    found_ = FirstElement(tag, got);
    Claim(found_ == element, [&] {
      return "ZrSafeArrayGetElement returned \"" + Describe(found_) + "\", the model expects \"" + Describe(element) +
             "\"";
    });
    const bool isVariant = tag == ZR_VT_VARIANT;
    const auto& texts = g_putTexts[isVariant ? kElementTags[NextBelow(27)].tag : tag];
    const std::size_t chosen = NextBelow(256) % (texts.size() + (isVariant ? 1 : 0));
    const std::string& text = chosen < texts.size() ? texts[chosen] : kRejectedText;
    Note([&] { return "puts " + text; });
    const OwnedVariant variant = Value(text);
    const void* value = PayloadOf(tag, variant);
    const ZRRESULT expected = ModelCopy(tag, static_cast<const char*>(value), StorageOf(copy.get()).data);
    ClaimResult("ZrSafeArrayPutElement", ZrSafeArrayPutElement(slot.Array(), indices, value), expected);
    element = FirstElement(tag, copy);
  }

  // Accesses an index without an element. A put makes a copy of its value and leaks it, so the value is null here.
  void AccessMissingElement(Slot& slot, const uint32_t* indices, bool isBelow) {
    const uint16_t tag = slot.Tag();
    char nothing[16] = {};
    const bool isRejected = isBelow || IsOfKind(tag, "rg");
    const ZRRESULT getResult = !isBelow ? 1 : tag == ZR_VT_VARIANT ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS;
    ClaimResult("ZrSafeArrayGetElement", ZrSafeArrayGetElement(slot.Array(), indices, nothing), getResult);
    ClaimResult("ZrSafeArrayPutElement", ZrSafeArrayPutElement(slot.Array(), indices, nothing),
                isRejected ? ZR_R_INVALID_ARGUMENTS : 1);
  }

  // Copies the array itself, the variant that holds it, or a reference to that variant.
  void Copy(Slot& to, Slot& from) {
    if (&to == &from) return;
    static constexpr const char* kFunctions[] = {"ZrSafeArrayCopy", "ZrVariantCopy", "ZrVariantCopyInd"};
    const uint32_t way = NextBelow(3);
    const ZRVARIANT byRef = ByRef(from.variant);
    NoteOperation(to, [&] { return kFunctions[way] + (" from " + NameOfSlot(from) + " to " + NameOfSlot(to)); });
    Note([&] { return "        " + DescribeSlot(from); });
    const ZRRESULT result = way == 0   ? ZrSafeArrayCopy(from.Array(), &to.variant.Value.array)
                            : way == 1 ? ZrVariantCopy(&to.variant, &from.variant)
                                       : ZrVariantCopyInd(&to.variant, &byRef);
    ClaimResult(kFunctions[way], result, ZR_R_OK);
    Claim(way == 0 || to.variant.Type == from.variant.Type, [&] {
      return Format("the copy has the tag word 0x%04X, expected 0x%04X", to.variant.Type, from.variant.Type);
    });
    to.variant.Type = from.variant.Type;
    to = {std::move(to.variant), from.shape, from.elements};
  }

  void Redim(Slot& slot, Slot& /*other*/) {
    const Shape shape = NextShape();
    NoteOperation(slot, [&] { return "ZrSafeArrayRedim(" + NameOfSlot(slot) + ", " + DescribeShape(shape) + ")"; });
    const auto dimensions = static_cast<uint32_t>(shape.size());
    ClaimResult("ZrSafeArrayRedim", ZrSafeArrayRedim(slot.Array(), dimensions, shape.data()), ZR_R_OK);
    std::vector<Snapshot> elements = Zeros(slot.Tag(), shape);
    for (std::size_t at = 0; at < std::min(elements.size(), slot.elements.size()); ++at) {
      const bool isNullString = slot.elements[at].Type() == ZR_VT_STR && slot.elements[at].IsNull();
      elements[at] = isNullString ? Snapshot(Value("STR ")) : std::move(slot.elements[at]);
    }
    slot.shape = shape;
    slot.elements = std::move(elements);
  }

  void ChangeType(Slot& slot, Slot& /*other*/) {
    if (slot.elements.empty()) return;  // later elements would have another type than the array's tag
    // The shared text in a blob would convert to a second string with equal text, and owners could not be counted.
    static constexpr std::string_view kSharedBytes("c\0o\0m\0m\0o\0n\0", 12);
    for (const Snapshot& element : slot.elements) {
      if (element.Type() == ZR_VT_BLOB && element.Bytes().find(kSharedBytes) != std::string_view::npos) return;
    }
    const uint16_t target = NextTag();
    const uint32_t flags = NextBelow(2);
    NoteOperation(slot, [&] {
      return "ZrSafeArrayChangeType(" + NameOfSlot(slot) + ", " + std::to_string(flags) + ", " + TagText(target) + ")";
    });
    const auto [converted, all] = ModelConvert(slot.Tag(), slot.Array(), target);
    ClaimResult("ZrSafeArrayChangeType", ZrSafeArrayChangeType(slot.Array(), flags, target), all ? ZR_R_OK : 1);
    slot.variant.Type = target | ZR_VT_ARRAY;
    const char* element = StorageOf(converted.get()).data;
    const Lender lend(target);
    for (Snapshot& expected : slot.elements) {
      expected.Assign(lend(element));
      element += lend.Width();
    }
  }

  void Lock(Slot& slot, Slot& /*other*/) {
    const bool takes = NextBelow(2) != 0;
    const char* function = takes ? "ZrSafeArrayLock" : "ZrSafeArrayUnlock";
    NoteOperation(slot, [&] { return function + ("(" + NameOfSlot(slot) + ")"); });
    const ZRRESULT result = takes ? ZrSafeArrayLock(slot.Array()) : ZrSafeArrayUnlock(slot.Array());
    ClaimResult(function, result, takes != slot.isTaken ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE);
    slot.isTaken = takes;
  }

  inline static const std::string kRejectedText = "14 0";  // a variant that ZrVariantCopy rejects
  static constexpr uint32_t kSlots = 3;
  const uint32_t strings_ = ZrStringRefCount(g_shared), objects_ = g_object.references;  // before any array exists
  Snapshot found_;
  Slot slots_[kSlots];
};
