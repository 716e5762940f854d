// Any sequence of operations on a few arrays in variants, against arrays of texts: what each element is shown as. Who
// holds the shared string and the object is counted in those texts, too.

#pragma once

#include <algorithm>

#include "tests/support/array_model.h"
#include "tests/support/sequence.h"

class CArraySequence : public CSequence<CArraySequence> {
  friend CSequence;

  using Shape = std::vector<ZrSafeArrayBound>;

  struct Slot {
    OwnedVariant variant = Value("I4 0");
    Shape shape = {{2, 0}};
    std::vector<std::string> elements;
    bool isTaken = false;

    uint16_t Tag() const { return variant.Type & ZR_VT_TYPEMASK; }
    ZRSAFEARRAY Array() const { return variant.Value.array; }
  };

  CArraySequence(const uint8_t* data, std::size_t size) : CSequence(data, size) {
    for (Slot& slot : slots_) Create(slot, slot);
  }

  // ---- What the bytes tell ----

  // Often what another slot has, so that there is something to compare.
  uint16_t NextTag() {
    const uint32_t way = NextBelow(16);
    return way > 8 ? slots_[way % kSlots].Tag() : kElementTags[NextBelow(std::size(kElementTags))].tag;
  }
  Shape NextShape() {
    constexpr int32_t kLower[] = {0, 1, -2, INT32_MAX, INT32_MIN};
    const uint32_t way = NextBelow(16);
    if (way > 8) return slots_[way % kSlots].shape;
    if (way == 0) return {{0x10000, 0}, {0x10000, 0}};  // the product wraps
    Shape shape(1 + way % 3);
    for (ZrSafeArrayBound& bound : shape) bound = {NextBelow(5), kLower[NextBelow(5)]};
    return shape;
  }

  // ---- The model ----

  static std::vector<std::string> Zeros(uint16_t tag, const Shape& shape) {
    static constexpr ZRVARIANT kEmpty = ZR_VARIANT_INIT, kZero = {};
    uint32_t count = 1;
    for (const ZrSafeArrayBound& bound : shape) count *= bound.elementCount;
    const ZRVARIANT& element = tag == ZR_VT_VARIANT ? kEmpty : kZero;
    return std::vector<std::string>(count, ShowElement(tag, reinterpret_cast<const char*>(&element)));
  }

  void Check(Slot& slot) {
    ZRSAFEARRAY array = slot.Array();
    uint16_t tag = 77;
    uint32_t dimensions = 0, count = 77, at = 0;
    uint64_t bytes = 77;
    const ZrSafeArrayBound* bounds = nullptr;
    Claim(ZrSafeArrayGetVartype(array, &tag) == ZR_R_OK && tag == slot.Tag(), "type");
    Claim(ZrSafeArrayGetBounds(array, &dimensions, &bounds) == ZR_R_OK && dimensions == slot.shape.size(), "shape");
    const std::size_t size = dimensions * sizeof *bounds;
    Claim(bounds != nullptr && std::memcmp(bounds, slot.shape.data(), size) == 0, "bounds");
    for (const ZrSafeArrayBound& bound : slot.shape) {
      const auto lowest = static_cast<uint32_t>(bound.lowerBound);
      uint32_t lower = 77, upper = 77;
      Claim(ZrSafeArrayGetLBound(array, ++at, &lower) == ZR_R_OK && lower == lowest, "lower bound");
      Claim(ZrSafeArrayGetUBound(array, at, &upper) == ZR_R_OK && upper == lowest + bound.elementCount - 1, "upper");
    }
    Claim(ZrSafeArrayGetElementCount(array, &count, &bytes) == ZR_R_OK && count == slot.elements.size(), "count");
    Claim(bytes == uint64_t{count} * WidthOf(tag), "size");
    const ZRVARIANT byRef = ByRef(slot.variant);
    Claim(ZrVariantIsContentEmpty(&slot.variant) == slot.elements.empty(), "emptiness");
    Claim(ZrVariantIsContentEmpty(&byRef) == slot.elements.empty(), "emptiness by reference");
    Claim((ContentOf(array).data == nullptr) == slot.elements.empty(), "storage");
    Claim(ShowEach(tag, array) == slot.elements, "elements");
    uint32_t strings = strings_, objects = objects_;
    for (const Slot& holder : slots_) {
      for (const std::string& shown : holder.elements) {
        strings += shown.find("common") != std::string::npos;  // no element holds more than one
        objects += shown.find("object") != std::string::npos;
      }
    }
    Claim(ZrStringRefCount(g_shared) == strings && g_object.references == objects, "owners");
  }

  // ---- The operations ----

  void Step() {
    using Self = CArraySequence;
    static constexpr void (Self::*kOperations[])(Slot&, Slot&) = {
        &Self::Create, &Self::Access, &Self::Access, &Self::Copy, &Self::Redim, &Self::ChangeType, &Self::Lock};
    Slot& slot = slots_[NextBelow(kSlots)];
    (this->*kOperations[NextBelow(std::size(kOperations))])(slot, slots_[NextBelow(kSlots)]);
    Check(slot);
  }

  void Create(Slot& slot, Slot& /*other*/) {
    const uint16_t tag = NextTag(), flags = ZR_VT_BYREF | ZR_VT_ARRAY;
    const Shape shape = NextShape();
    slot = {InVariant(tag, MakeArray(tag | flags, shape)), shape, Zeros(tag, shape)};
  }

  // A get, and a put in the same place: one around the bounds.
  void Access(Slot& slot, Slot& /*other*/) {
    ZRSAFEARRAY array = slot.Array();
    const uint16_t tag = slot.Tag();
    uint32_t indices[3], *index = indices, place = 0;
    for (const ZrSafeArrayBound& bound : slot.shape) {
      const uint32_t offset = NextBelow(7) - 1;
      *index++ = offset + static_cast<uint32_t>(bound.lowerBound);
      place = place * bound.elementCount + offset;
    }
    if (slot.isTaken) {
      void* data = this;
      Claim(ZrSafeArrayPutElement(array, indices, this) == ZR_R_INVALID_OBJECT_STATE, "refused put");
      Claim(ZrSafeArrayGetElement(array, indices, this) == ZR_R_INVALID_OBJECT_STATE, "refused get");
      Claim(ZrSafeArrayAccessData(array, &data) == ZR_R_INVALID_OBJECT_STATE && data == this, "refused access");
    } else if (place < slot.elements.size()) {
      const Array got = MakeArray(tag, {{1, 0}}), copy = MakeArray(tag, {{1, 0}});
      const ZRRESULT result = ZrSafeArrayGetElement(array, indices, ContentOf(got.get()).data);
      Claim(result == (slot.elements[place] == "14" ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK), "get");
      Claim(ShowEach(tag, got.get())[0] == slot.elements[place], "element that was got");
      std::vector<OwnedVariant> values = ValuesOf(tag == ZR_VT_VARIANT ? kElementTags[NextBelow(27)].tag : tag);
      if (tag == ZR_VT_VARIANT) values.push_back(Value("14 0"));  // of which a copy is made, and refused
      const void* value = PayloadOf(tag, values[NextBelow(256) % values.size()]);
      const ZRRESULT expected = CopySlowly(tag, static_cast<const char*>(value), ContentOf(copy.get()).data);
      Claim(ZrSafeArrayPutElement(array, indices, value) == expected, "put");
      slot.elements[place] = ShowEach(tag, copy.get())[0];
    } else if (slot.elements.empty() || place > INT32_MAX) {
      char nothing[16] = {};  // a copy that a put makes without a place would stay behind
      const bool isBelow = place > INT32_MAX, isRefused = isBelow || IsOfKind(tag, "rg");
      const ZRRESULT noGet = !isBelow ? 1 : tag == ZR_VT_VARIANT ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS;
      Claim(ZrSafeArrayGetElement(array, indices, nothing) == noGet, "get from no place");
      Claim(ZrSafeArrayPutElement(array, indices, nothing) == (isRefused ? ZR_R_INVALID_ARGUMENTS : 1), "put in none");
    }
  }

  // The array itself, in its variant, or behind a reference to it.
  void Copy(Slot& to, Slot& from) {
    if (&to == &from) return;
    const uint32_t way = NextBelow(3);
    const ZRVARIANT byRef = ByRef(from.variant);
    const ZRRESULT result = way == 0   ? ZrSafeArrayCopy(from.Array(), &to.variant.Value.array)
                            : way == 1 ? ZrVariantCopy(&to.variant, &from.variant)
                                       : ZrVariantCopyInd(&to.variant, &byRef);
    Claim(result == ZR_R_OK && (way == 0 || to.variant.Type == from.variant.Type), "copy");
    to.variant.Type = from.variant.Type;
    to = {std::move(to.variant), from.shape, from.elements};
  }

  void Redim(Slot& slot, Slot& /*other*/) {
    slot.shape = NextShape();
    const auto dimensions = static_cast<uint32_t>(slot.shape.size());
    Claim(ZrSafeArrayRedim(slot.Array(), dimensions, slot.shape.data()) == ZR_R_OK, "new shape");
    std::vector<std::string> elements = Zeros(slot.Tag(), slot.shape);
    for (std::size_t at = 0; at < std::min(elements.size(), slot.elements.size()); ++at) {
      elements[at] = slot.elements[at] == "STR null" ? "STR " : slot.elements[at];
    }
    slot.elements = elements;
  }

  void ChangeType(Slot& slot, Slot& /*other*/) {
    if (slot.elements.empty()) return;  // would get elements of another type than it tells
    // The shared text, once it is bytes, comes back as another string that reads alike, and owners couldn't be counted.
    if (ShowArray(slot.Array()).find("63006f006d006d006f006e00") != std::string::npos) return;
    const uint16_t target = NextTag();
    const auto [converted, all] = ConvertSlowly(slot.Tag(), slot.Array(), target);
    Claim(ZrSafeArrayChangeType(slot.Array(), NextBelow(2), target) == (all ? ZR_R_OK : 1), "conversion");
    slot.variant.Type = target | ZR_VT_ARRAY;
    slot.elements = ShowEach(target, converted.get());
  }

  void Lock(Slot& slot, Slot& /*other*/) {
    const bool takes = NextBelow(2) != 0;
    const ZRRESULT result = takes ? ZrSafeArrayLock(slot.Array()) : ZrSafeArrayUnlock(slot.Array());
    Claim(result == (takes != slot.isTaken ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE), "the flag");
    slot.isTaken = takes;
  }

  static constexpr uint32_t kSlots = 3;
  const uint32_t strings_ = ZrStringRefCount(g_shared), objects_ = g_object.references;
  Slot slots_[kSlots];
};
