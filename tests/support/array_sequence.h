// Any sequence of operations on a few arrays, against arrays of texts: what each element is shown as. Who holds the
// shared string and the object is counted in those texts, too.

#pragma once

#include <algorithm>

#include "tests/support/array_model.h"

class CArraySequence {
 public:
  // Runs what the bytes tell; answers what differed from the model first, or nothing.
  static std::string Run(const uint8_t* data, std::size_t size) {
    CArraySequence sequence(data, size);
    while (sequence.size_ != 0 && sequence.difference_.empty()) sequence.Step();
    return sequence.difference_;
  }

 private:
  struct Shape {
    uint32_t dimensions = 0;
    ZrSafeArrayBound bounds[3] = {};

    uint32_t Count() const {
      uint32_t count = 1;
      for (uint32_t at = 0; at < dimensions; ++at) count *= bounds[at].elementCount;
      return count;
    }
  };

  struct Slot {
    Array array;
    uint16_t tag = 0;
    uint16_t elementTag = 0;  // 0: elements can't have the tag; another if it was changed without elements
    Shape shape;
    std::vector<std::string> elements;
    bool isTaken = false;
  };

  CArraySequence(const uint8_t* data, std::size_t size) : data_(data), size_(size) {
    for (Slot& slot : slots_) Create(slot, slot);
  }

  void Claim(bool claim, const char* what) {
    if (!claim && difference_.empty()) difference_ = what;
  }

  // ---- What the bytes tell ----

  uint32_t Next(uint32_t end) {
    if (size_ == 0) return 0;
    --size_;
    return *data_++ % end;
  }

  // Often what another slot has, so that there is something to compare.
  uint16_t NextTag() {
    constexpr uint16_t kOdd[] = {0, 14, ZR_VT_OPAQUE, 54, 0xFFF};
    const uint32_t way = Next(16);
    if (way > 8) return slots_[way % kSlots].tag;
    return way == 0 ? kOdd[Next(5)] : kElementTags[Next(std::size(kElementTags))];
  }

  Shape NextShape() {
    constexpr int32_t kLower[] = {0, 1, -2, INT32_MAX, INT32_MIN};
    const uint32_t way = Next(16);
    if (way > 8) return slots_[way % kSlots].shape;
    if (way == 0) return {2, {{0x10000, 0}, {0x10000, 0}}};  // the product wraps
    Shape shape = {way == 1 ? 0 : 1 + way % 3, {}};
    for (uint32_t at = 0; at < shape.dimensions; ++at) shape.bounds[at] = {Next(5), kLower[Next(5)]};
    return shape;
  }

  // Indices around the bounds, and the place they stand for.
  uint32_t NextPlace(const Shape& shape, uint32_t* indices) {
    uint32_t place = 0;
    for (uint32_t at = 0; at < shape.dimensions; ++at) {
      const uint32_t offset = Next(7) - 1;
      indices[at] = offset + static_cast<uint32_t>(shape.bounds[at].lowerBound);
      place = place * shape.bounds[at].elementCount + offset;
    }
    return place;
  }

  // ---- The model ----

  static bool CanBeElements(uint16_t tag) {
    return std::find(std::begin(kElementTags), std::end(kElementTags), tag) != std::end(kElementTags);
  }
  static std::vector<std::string> Zeros(uint16_t tag, const Shape& shape) {
    if (tag == 0 || shape.dimensions == 0) return {};
    return std::vector<std::string>(shape.Count(), ShowEach(tag, MakeArray(tag, {{1, 0}}).get())[0]);
  }

  // In a variant that doesn't own it.
  static ZRVARIANT Lent(const Slot& slot) {
    ZRVARIANT variant = ZR_VARIANT_INIT;
    variant.Type = slot.tag | ZR_VT_ARRAY;
    variant.Value.array = slot.array.get();
    return variant;
  }

  // No element holds more than one.
  std::size_t CountOf(const char* word) const {
    std::size_t count = 0;
    for (const Slot& slot : slots_) {
      for (const std::string& shown : slot.elements) count += shown.find(word) != std::string::npos;
    }
    return count;
  }

  void Check(const Slot& slot) {
    ZRSAFEARRAY array = slot.array.get();
    const Shape& shape = slot.shape;
    const bool hasBounds = shape.dimensions != 0, hasAccessor = slot.elementTag != 0;
    uint16_t tag = 77;
    uint32_t dimensions = 77, count = 77;
    uint64_t bytes = 77;
    const ZrSafeArrayBound* bounds = nullptr;
    Claim(ZrSafeArrayGetVartype(array, &tag) == ZR_R_OK && tag == slot.tag, "type");
    Claim(ZrSafeArrayGetBounds(array, &dimensions, &bounds) == ZR_R_OK, "bounds");
    Claim(dimensions == (hasBounds ? shape.dimensions : 77) && (bounds != nullptr) == hasBounds, "dimensions");
    for (uint32_t at = 0; at <= shape.dimensions + 1; ++at) {
      const bool exists = at >= 1 && at <= shape.dimensions;
      const ZrSafeArrayBound bound = exists ? shape.bounds[at - 1] : ZrSafeArrayBound{1, 77};
      const auto lowest = static_cast<uint32_t>(bound.lowerBound);
      uint32_t lower = 77, upper = 77;
      Claim(ZrSafeArrayGetLBound(array, at, &lower) == ZR_R_OK && lower == lowest, "lower bound");
      Claim(ZrSafeArrayGetUBound(array, at, &upper) == ZR_R_OK && upper == lowest + bound.elementCount - 1, "upper");
      Claim(!exists || std::memcmp(&bounds[at - 1], &bound, sizeof bound) == 0, "bound");
    }
    Claim(ZrSafeArrayGetElementCount(array, &count, &bytes) == ZR_R_OK, "count");
    Claim(count == (hasAccessor ? shape.Count() : 77), "count");
    Claim(bytes == (hasAccessor ? uint64_t{count} * WidthOf(slot.elementTag) : 77), "size");
    ZRVARIANT lent = Lent(slot);
    const ZRVARIANT byRef = ByRef(lent);
    Claim(ZrVariantIsContentEmpty(&lent) == ZrVariantIsContentEmpty(&byRef), "emptiness by reference");
    const bool isTold = hasAccessor && hasBounds && slot.tag == slot.elementTag;  // else the first bound's count
    Claim(!isTold || ZrVariantIsContentEmpty(&lent) == slot.elements.empty(), "emptiness");
    Claim((ContentOf(array).data == nullptr) == slot.elements.empty(), "storage");
    if (hasAccessor) Claim(ShowEach(slot.elementTag, array) == slot.elements, "elements");
    Claim(ZrStringRefCount(g_shared) - strings_ == CountOf("common"), "owners of the string");
    Claim(g_object.references - objects_ == CountOf("object"), "owners of the object");
  }

  // ---- The operations ----

  void Step() {
    using Self = CArraySequence;
    static constexpr void (Self::*kOperations[])(Slot&, Slot&) = {&Self::Create,     &Self::Access,  &Self::Access,
                                                                  &Self::Access,     &Self::Copy,    &Self::Redim,
                                                                  &Self::ChangeType, &Self::Compare, &Self::Lock};
    Slot& slot = slots_[Next(kSlots)];
    (this->*kOperations[Next(std::size(kOperations))])(slot, slots_[Next(kSlots)]);
    Check(slot);
  }

  void Create(Slot& slot, Slot& /*other*/) {
    const uint16_t tag = NextTag(), elementTag = CanBeElements(tag) ? tag : 0, flags = Next(2) != 0 ? 0x6000 : 0;
    const Shape shape = NextShape();
    slot = {Array(ZrSafeArrayCreate(tag | flags, shape.dimensions, shape.bounds)), tag, elementTag, shape,
            Zeros(elementTag, shape)};
  }

  // A get, and a put in the same place.
  void Access(Slot& slot, Slot& /*other*/) {
    ZRSAFEARRAY array = slot.array.get();
    const uint16_t tag = slot.elementTag;
    uint32_t indices[3] = {};
    const uint32_t place = NextPlace(slot.shape, indices);
    if (slot.isTaken || slot.shape.dimensions == 0 || tag == 0) {
      const ZRRESULT refusal = slot.isTaken ? ZR_R_INVALID_OBJECT_STATE : ZR_R_FAILED;
      Claim(ZrSafeArrayPutElement(array, indices, this) == refusal, "refused put");
      Claim(ZrSafeArrayGetElement(array, indices, this) == refusal, "refused get");
    } else if (place < slot.elements.size()) {
      const Array before = MakeArray(tag, {{1, 0}}), copy = MakeArray(tag, {{1, 0}});
      const ZRRESULT got = ZrSafeArrayGetElement(array, indices, ContentOf(before.get()).data);
      Claim(got == (slot.elements[place] == "14" ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK), "get");
      Claim(ShowEach(tag, before.get())[0] == slot.elements[place], "element that was got");
      std::vector<OwnedVariant> values = ValuesOf(tag == ZR_VT_VARIANT ? kElementTags[Next(27)] : tag);
      if (tag == ZR_VT_VARIANT) values.push_back(Value("14 0"));  // of which a copy is made, and refused
      const OwnedVariant& value = values[Next(256) % values.size()];
      const void* at = PayloadOf(tag, value);
      const ZRRESULT expected = CopySlowly(tag, static_cast<const char*>(at), ContentOf(copy.get()).data);
      Claim(ZrSafeArrayPutElement(array, indices, at) == expected, "put");
      slot.elements[place] = ShowEach(tag, copy.get())[0];
    }
  }

  // Itself, in a variant, or behind a reference to it; so does the comparison.
  void Copy(Slot& to, Slot& from) {
    if (&to == &from) return;
    ZRVARIANT lent = Lent(from), copy = Lent(to);
    const ZRVARIANT byRef = ByRef(lent);
    (void)to.array.release();
    const uint32_t way = Next(3);
    const ZRRESULT result = way == 0   ? ZrSafeArrayCopy(lent.Value.array, &copy.Value.array)
                            : way == 1 ? ZrVariantCopy(&copy, &lent)
                                       : ZrVariantCopyInd(&copy, &byRef);
    const bool isCopied = from.shape.dimensions != 0;
    Claim(result == (isCopied ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE), "copy");
    Claim((copy.Value.array != nullptr) == isCopied && (way == 0 || copy.Type == lent.Type), "what is copied");
    to = {Array(copy.Value.array), from.tag, from.elementTag, from.shape, from.elements};
    if (to.elements.empty()) to.elements = Zeros(to.elementTag, to.shape);  // where they have only just got a type
    if (!isCopied) Create(to, to);
  }

  void Redim(Slot& slot, Slot& /*other*/) {
    const Shape shape = NextShape();
    const ZRRESULT expected = slot.shape.dimensions == 0 ? ZR_R_INVALID_OBJECT_STATE
                              : shape.dimensions == 0    ? ZR_R_INVALID_ARGUMENTS
                              : slot.elementTag == 0     ? ZR_R_FAILED
                                                         : ZR_R_OK;
    Claim(ZrSafeArrayRedim(slot.array.get(), shape.dimensions, shape.bounds) == expected, "shape");
    if (expected != ZR_R_OK) return;
    std::vector<std::string> elements = Zeros(slot.elementTag, shape);
    for (std::size_t at = 0; at < std::min(elements.size(), slot.elements.size()); ++at) {
      elements[at] = slot.elements[at] == "STR null" ? "STR " : slot.elements[at];
    }
    slot.shape = shape;
    slot.elements = elements;
  }

  void ChangeType(Slot& slot, Slot& /*other*/) {
    const uint16_t target = NextTag(), flags = Next(2) != 0 ? 0x6000 : 0;
    ZRRESULT expected = ZR_R_FAILED;
    if (!slot.elements.empty() && CanBeElements(target)) {
      const auto [converted, all] = ConvertSlowly(slot.elementTag, slot.array.get(), target);
      expected = all ? ZR_R_OK : 1;
      slot.elements = ShowEach(target, converted.get());
      slot.tag = target;
    }
    Claim(ZrSafeArrayChangeType(slot.array.get(), Next(2), target | flags) == expected, "conversion");
    if (slot.shape.dimensions != 0 && CanBeElements(target)) slot.elementTag = target;
  }

  void Compare(Slot& left, Slot& right) {
    uint8_t equal = 9, expected = 1;
    if (left.shape.dimensions != 0 && std::memcmp(&left.shape, &right.shape, sizeof(Shape)) != 0) {
      expected = 9;  // and nothing is written
    } else if (&left != &right && left.tag == right.tag && left.elementTag == right.elementTag &&
               left.elements.size() == right.elements.size()) {
      const char *from = ContentOf(left.array.get()).data, *to = ContentOf(right.array.get()).data;
      for (std::size_t at = 0, width = WidthOf(left.elementTag); at < left.elements.size() * width; at += width) {
        if (!AreEqual(left.elementTag, from + at, to + at)) expected = 0;
      }
    }
    ZRVARIANT leftLent = Lent(left), rightLent = Lent(right);
    rightLent.Type = leftLent.Type;
    const ZRVARIANT leftRef = ByRef(leftLent), rightRef = ByRef(rightLent);
    const uint32_t way = Next(3);
    const ZRRESULT result = way == 0   ? ZrSafeArrayCompare(left.array.get(), right.array.get(), &equal)
                            : way == 1 ? ZrVariantCompare(&leftLent, &rightLent, &equal)
                                       : ZrVariantCompare(&leftRef, &rightRef, &equal);
    Claim(result == ZR_R_OK && equal == expected, "comparison");
  }

  void Lock(Slot& slot, Slot& /*other*/) {
    ZRSAFEARRAY array = slot.array.get();
    void* data = nullptr;
    const uint32_t way = Next(4);
    const ZRRESULT result = way == 0   ? ZrSafeArrayLock(array)
                            : way == 1 ? ZrSafeArrayAccessData(array, &data)
                            : way == 2 ? ZrSafeArrayUnlock(array)
                                       : ZrSafeArrayUnaccessData(array);
    const bool takes = way < 2, succeeds = takes != slot.isTaken;
    Claim(result == (succeeds ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE), "the flag");
    Claim((data != nullptr) == (way == 1 && succeeds && !slot.elements.empty()), "data");
    slot.isTaken = takes;
  }

  static constexpr uint32_t kSlots = 3;
  const uint32_t strings_ = ZrStringRefCount(g_shared), objects_ = g_object.references;
  const uint8_t* data_;
  std::size_t size_;
  Slot slots_[kSlots];
  std::string difference_;
};
