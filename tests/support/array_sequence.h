// Any sequence of operations on a few arrays, against arrays of texts: what each element is shown as. Who holds the
// shared string and the object is counted in those texts, too.

#pragma once

#include <map>

#include "tests/support/array_model.h"

class CArraySequence {
 public:
  // Runs what the bytes tell; answers what differed from the model first, or nothing.
  static std::string Run(const uint8_t* data, std::size_t size) {
    (void)Values();
    const uint32_t strings = ZrStringRefCount(g_shared), objects = g_object.references;
    std::string difference;
    {
      CArraySequence sequence(data, size);
      while (sequence.size_ != 0 && sequence.difference_.empty()) {
        sequence.Step();
        sequence.Claim(ZrStringRefCount(g_shared) - strings == sequence.CountOf(" shared"), "owners of the string");
        sequence.Claim(g_object.references - objects == sequence.CountOf("object"), "owners of the object");
      }
      difference = sequence.difference_;
    }
    const bool isBalanced = ZrStringRefCount(g_shared) == strings && g_object.references == objects;
    return isBalanced || !difference.empty() ? difference : "owners in the end";
  }

 private:
  using Bounds = std::vector<ZrSafeArrayBound>;

  struct Slot {
    Array array;
    uint16_t tag = 0;
    uint16_t elementTag = 0;    // 0: elements can't have the tag; another if it was changed without elements
    uint32_t elementCount = 0;  // as variants see it
    Bounds bounds;
    std::vector<std::string> elements;
    bool isTaken = false;
  };

  CArraySequence(const uint8_t* data, std::size_t size) : data_(data), size_(size) {
    for (Slot& slot : slots_) Create(slot);
  }

  void Claim(bool claim, const char* what) {
    if (!claim && difference_.empty()) difference_ = what;
  }

  std::size_t CountOf(const std::string& word) const {
    std::size_t count = 0;
    for (const Slot& slot : slots_) {
      for (const std::string& shown : slot.elements) {
        for (std::size_t at = 0; (at = shown.find(word, at)) != std::string::npos; ++at) ++count;
      }
    }
    return count;
  }

  // ---- What the bytes tell ----

  uint32_t Next(uint32_t end) {
    if (size_ == 0) return 0;
    --size_;
    return *data_++ % end;
  }

  uint16_t NextTag() {
    constexpr uint16_t kOdd[] = {0, 14, ZR_VT_OPAQUE, 54, 0xFFF};
    return Next(16) == 0 ? kOdd[Next(5)] : kElementTags[Next(kElementTags.size())];
  }

  Bounds NextBounds() {
    constexpr int32_t kLower[] = {0, 1, -2, INT32_MAX, INT32_MIN};
    const uint32_t way = Next(16);
    if (way == 0) return {{0x10000, 0}, {0x10000, 0}};  // the product wraps
    Bounds bounds(way == 1 ? 0 : 1 + way % 3);
    for (ZrSafeArrayBound& bound : bounds) bound = {Next(5), kLower[Next(5)]};
    return bounds;
  }
  static const ZrSafeArrayBound* DataOf(const Bounds& bounds) {
    static constexpr ZrSafeArrayBound kUnused = {3, 0};
    return bounds.empty() ? &kUnused : bounds.data();
  }

  // Indices around the bounds, and the place they stand for.
  int32_t NextPlace(const Slot& slot, std::vector<uint32_t>& indices) {
    uint32_t place = 0, factor = 1;
    indices.resize(slot.bounds.size() + 1);
    for (std::size_t k = slot.bounds.size(); k-- > 0; factor *= slot.bounds[k].elementCount) {
      const uint32_t offset = Next(7) - 1;
      indices[k] = offset + static_cast<uint32_t>(slot.bounds[k].lowerBound);
      place += offset * factor;
    }
    return static_cast<int32_t>(place);
  }

  // One of the samples, another array in a variant, or a number of the next bytes. Lives until the next one.
  const char* NextValue(uint16_t tag) {
    const Content content = ContentOf(Values().at(tag).get());
    const uint32_t way = Next(4), index = Next(256) + 256 * Next(4);
    const Slot& slot = slots_[index % kSlots];
    if (way == 0 && tag == ZR_VT_VARIANT && slot.tag == slot.elementTag && ShowArray(slot.array.get()).size() < 2000) {
      nested_ = InVariant(slot.tag, CopyOf(slot.array.get()));
      return reinterpret_cast<const char*>(&nested_);
    }
    if (way != 0 || !IsPlain(tag)) return content.data + index % content.count * WidthOf(tag);
    for (char& byte : bytes_) byte = static_cast<char>(Next(256));
    return bytes_;
  }

  // ---- The model ----

  static const std::map<uint16_t, Array>& Values() {
    static Samples samples;
    static const std::map<uint16_t, Array> values = [] {
      std::map<uint16_t, Array> made;
      for (const uint16_t tag : kElementTags) made[tag] = samples.Make(tag);
      return made;
    }();
    return values;
  }

  static bool IsPlain(uint16_t tag) { return tag < ZR_VT_BLOB || tag == ZR_VT_CHAR32 || tag == ZR_VT_UUID; }
  static bool CanBeElements(uint16_t tag) {
    return std::find(kElementTags.begin(), kElementTags.end(), tag) != kElementTags.end();
  }
  static uint32_t CountOf(const Bounds& bounds) {
    uint32_t count = 1;
    for (const ZrSafeArrayBound& bound : bounds) count *= bound.elementCount;
    return count;
  }
  static std::vector<std::string> Zeros(uint16_t tag, uint32_t count) {
    return std::vector<std::string>(count, ShowEach(tag, MakeArray(tag, {{1, 0}}).get())[0]);
  }
  // Copies and gets leave null strings null; others are CopiedAlone. Where elements have only just got a type, a copy
  // has them.
  static std::vector<std::string> Copied(const Slot& slot) {
    if (slot.elements.empty() && slot.elementTag != 0 && !slot.bounds.empty())
      return Zeros(slot.elementTag, CountOf(slot.bounds));
    std::vector<std::string> elements = slot.elements;
    for (std::string& shown : elements)
      shown = slot.elementTag == ZR_VT_STR ? shown : CopiedAlone(slot.elementTag, shown);
    return elements;
  }

  static bool AreEqual(uint16_t tag, const char* leftData, const char* rightData) {
    Element left, right;
    std::memcpy(&left, leftData, WidthOf(tag));
    std::memcpy(&right, rightData, WidthOf(tag));
    int32_t order = 0;
    uint8_t equal = 0;
    switch (tag) {
      case ZR_VT_STR:
        return ZrCompareString(left.value.string, right.value.string, &order) == ZR_R_OK && order == 0;
      case ZR_VT_BLOB:
        return ZrCompareBlob(left.value.blob, right.value.blob, &equal) == ZR_R_OK && equal == 1;
      case ZR_VT_REF:
        return ZrCompareREF(left.value.ref, right.value.ref, &equal) == ZR_R_OK && equal == 1;
      case ZR_VT_SREF:
        return ZrCompareSREF(left.value.sref, right.value.sref, &equal) == ZR_R_OK && equal == 1;
      case ZR_VT_VARIANT:
        return ZrVariantCompare(&left.variant, &right.variant, &equal) == ZR_R_OK && equal == 1;
      default:
        return std::memcmp(leftData, rightData, WidthOf(tag)) == 0;
    }
  }

  // In a variant that doesn't own it.
  static ZRVARIANT Lent(const Slot& slot) {
    ZRVARIANT variant = ZR_VARIANT_INIT;
    variant.Type = slot.tag | ZR_VT_ARRAY;
    variant.Value.array = slot.array.get();
    return variant;
  }

  void Check(const Slot& slot) {
    ZRSAFEARRAY array = slot.array.get();
    const uint32_t dimensions = static_cast<uint32_t>(slot.bounds.size());
    const bool hasBounds = dimensions != 0, hasAccessor = slot.elementTag != 0;
    uint16_t tag = 77;
    uint32_t number = 77, count = 77;
    uint64_t bytes = 77;
    const ZrSafeArrayBound* bounds = nullptr;
    Claim(ZrSafeArrayGetVartype(array, &tag) == ZR_R_OK && tag == slot.tag, "type");
    Claim(ZrSafeArrayGetBounds(array, &number, &bounds) == ZR_R_OK && number == (hasBounds ? dimensions : 77),
          "bounds");
    Claim(hasBounds ? std::memcmp(bounds, slot.bounds.data(), dimensions * sizeof *bounds) == 0 : bounds == nullptr,
          "bounds");
    for (uint32_t dimension = 0; dimension <= dimensions + 1; ++dimension) {
      const bool exists = dimension >= 1 && dimension <= dimensions;
      const ZrSafeArrayBound bound = exists ? slot.bounds[dimension - 1] : ZrSafeArrayBound{1, 77};
      const auto lowest = static_cast<uint32_t>(bound.lowerBound);
      uint32_t lower = 77, upper = 77;
      Claim(ZrSafeArrayGetLBound(array, dimension, &lower) == ZR_R_OK && lower == lowest, "lower bound");
      Claim(ZrSafeArrayGetUBound(array, dimension, &upper) == ZR_R_OK && upper == lowest + bound.elementCount - 1,
            "upper bound");
    }
    Claim(ZrSafeArrayGetElementCount(array, &count, &bytes) == ZR_R_OK, "count");
    Claim(count == (hasAccessor ? CountOf(slot.bounds) : 77), "count");
    Claim(bytes == (hasAccessor ? uint64_t{count} * WidthOf(slot.elementTag) : 77), "size");
    Claim((ContentOf(array).data == nullptr) == slot.elements.empty(), "storage");
    if (hasAccessor) Claim(ShowEach(slot.elementTag, array) == slot.elements, "elements");
    ZRVARIANT variant = Lent(slot);
    const ZRVARIANT byRef = ByRef(variant);
    Claim(ZrVariantIsContentEmpty(&variant) == (slot.elementCount == 0), "emptiness");
    Claim(ZrVariantIsContentEmpty(&byRef) == (slot.elementCount == 0), "emptiness by reference");
  }

  // ---- The operations ----

  void Step() {
    Slot& slot = slots_[Next(kSlots)];
    Slot& other = slots_[Next(kSlots)];
    switch (Next(11)) {
      case 0:
        Create(slot);
        break;
      case 1:
      case 2:
      case 3:
        Put(slot);
        break;
      case 4:
        Get(slot);
        break;
      case 5:
        Copy(slot, other);
        break;
      case 6:
        Redim(slot);
        break;
      case 7:
        ChangeType(slot);
        break;
      case 8:
        Compare(slot, other);
        break;
      case 9:
        Lock(slot);
        break;
      default:
        ChangeInVariant(slot, other);
    }
    Check(slot);
  }

  void Create(Slot& slot) {
    const uint16_t tag = NextTag();
    Bounds bounds = NextBounds();
    const uint32_t first = DataOf(bounds)->elementCount, count = CountOf(bounds);
    slot = {Array(ZrSafeArrayCreate(tag | (Next(2) != 0 ? 0x6000 : 0), static_cast<uint32_t>(bounds.size()),
                                    DataOf(bounds))),
            tag,
            CanBeElements(tag) ? tag : uint16_t{0},
            first,
            bounds,
            {}};
    if (slot.elementTag == 0 || bounds.empty()) return;
    slot.elementCount = count;
    slot.elements = Zeros(tag, count);
  }

  // What stops a get or put before there is a place.
  static ZRRESULT Refusal(const Slot& slot) {
    if (slot.isTaken) return ZR_R_INVALID_OBJECT_STATE;
    return slot.bounds.empty() || slot.elementTag == 0 ? ZR_R_FAILED : ZR_R_OK;
  }

  void Put(Slot& slot) {
    std::vector<uint32_t> indices;
    const int32_t place = NextPlace(slot, indices);
    const uint16_t tag = slot.elementTag;
    if (const ZRRESULT refusal = Refusal(slot); refusal != ZR_R_OK) {
      return Claim(ZrSafeArrayPutElement(slot.array.get(), indices.data(), this) == refusal, "refused put");
    }
    const bool hasPlace = place >= 0 && static_cast<uint32_t>(place) < slot.elements.size();
    // Too far is the caller's part, and of a pointer without a place a copy stays behind.
    if (!hasPlace && ((place >= 0 && !slot.elements.empty()) || (!IsPlain(tag) && tag != ZR_VT_VARIANT))) return;
    const char* value = NextValue(tag);
    std::string shown = CopiedAlone(tag, ShowElement(tag, value));
    ZRRESULT expected = ZR_R_OK;
    if (!hasPlace) {
      expected = place < 0 ? ZR_R_INVALID_ARGUMENTS : 1;
    } else if (tag == ZR_VT_VARIANT) {
      OwnedVariant copy;
      expected = ZrVariantCopy(&copy, reinterpret_cast<const ZRVARIANT*>(value));
      shown = ShowVariant(copy);
    } else if ((tag == ZR_VT_REF || tag == ZR_VT_SREF) && shown == "null") {
      expected = ShowElement(tag, value) == "null" ? ZR_R_INVALID_ARGUMENTS : 1;
    }
    Claim(ZrSafeArrayPutElement(slot.array.get(), indices.data(), value) == expected, "put");
    if (hasPlace) slot.elements[static_cast<uint32_t>(place)] = shown;
  }

  void Get(Slot& slot) {
    std::vector<uint32_t> indices;
    const int32_t place = NextPlace(slot, indices);
    const uint16_t tag = slot.elementTag;
    if (const ZRRESULT refusal = Refusal(slot); refusal != ZR_R_OK) {
      return Claim(ZrSafeArrayGetElement(slot.array.get(), indices.data(), this) == refusal, "refused get");
    }
    const auto index = static_cast<uint32_t>(place);
    if (place >= 0 && index >= slot.elements.size() && !slot.elements.empty()) return;
    const Array variable = MakeArray(tag, {{1, 0}});
    char* data = ContentOf(variable.get()).data;
    ZRRESULT expected = place >= 0 ? 1 : tag == ZR_VT_VARIANT ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS;
    std::string shown = Zeros(tag, 1)[0];
    if (place >= 0 && !slot.elements.empty()) {
      OwnedVariant copy;
      const auto* element = reinterpret_cast<const ZRVARIANT*>(ContentOf(slot.array.get()).data) + index;
      expected = tag == ZR_VT_VARIANT ? ZrVariantCopy(&copy, element) : ZR_R_OK;
      shown = Copied(slot)[index];
    }
    Claim(ZrSafeArrayGetElement(slot.array.get(), indices.data(), data) == expected, "get");
    Claim(ShowElement(tag, data) == shown, "element that was got");
  }

  void Copy(Slot& to, const Slot& from) {
    if (&to == &from) return;
    ZRSAFEARRAY array = to.array.release();
    const ZRRESULT result = ZrSafeArrayCopy(from.array.get(), &array);
    if (from.bounds.empty()) {
      Claim(result == ZR_R_INVALID_OBJECT_STATE && array == nullptr, "copy of no dimensions");
      return Create(to);
    }
    Claim(result == ZR_R_OK, "copy");
    to = {Array(array), from.tag, from.elementTag, from.elementCount, from.bounds, Copied(from)};
  }

  void Redim(Slot& slot) {
    const Bounds bounds = NextBounds();
    const ZRRESULT expected = slot.bounds.empty()    ? ZR_R_INVALID_OBJECT_STATE
                              : bounds.empty()       ? ZR_R_INVALID_ARGUMENTS
                              : slot.elementTag == 0 ? ZR_R_FAILED
                                                     : ZR_R_OK;
    const auto dimensions = static_cast<uint32_t>(bounds.size());
    Claim(ZrSafeArrayRedim(slot.array.get(), dimensions, DataOf(bounds)) == expected, "shape");
    if (expected != ZR_R_OK) return;
    for (std::string& shown : slot.elements) shown = CopiedAlone(slot.elementTag, shown);
    slot.bounds = bounds;
    slot.elementCount = CountOf(bounds);
    slot.elements.resize(slot.elementCount, Zeros(slot.elementTag, 1)[0]);
  }

  // The elements as another type, and the code of the conversion.
  static std::pair<std::vector<std::string>, ZRRESULT> Converted(const Slot& slot, uint16_t target) {
    if (slot.elements.empty() || !CanBeElements(target)) return {slot.elements, ZR_R_FAILED};
    const auto [converted, all] = ConvertSlowly(slot.elementTag, slot.array.get(), target);
    return {ShowEach(target, converted.get()), all ? ZR_R_OK : 1};
  }

  void ChangeType(Slot& slot) {
    const uint16_t target = NextTag();
    const auto [elements, expected] = Converted(slot, target);
    Claim(ZrSafeArrayChangeType(slot.array.get(), Next(2), target | (Next(2) != 0 ? 0x6000 : 0)) == expected,
          "conversion");
    if (!slot.bounds.empty() && CanBeElements(target)) slot.elementTag = target;
    if (expected >= 0) slot.tag = target;
    slot.elements = elements;
  }

  // The same in a variant, in place or apart, by way of copies: all or nothing. To the own type it is a copy.
  void ChangeInVariant(Slot& to, const Slot& from) {
    const uint16_t target = Next(4) == 0 ? from.tag : NextTag();
    OwnedVariant source, apart = Value("I4 5");
    ZRVARIANT lent = Lent(from);
    const ZRVARIANT byRef = ByRef(lent);
    const ZRRESULT copied = from.bounds.empty() ? ZR_R_INVALID_OBJECT_STATE : ZR_R_OK;
    Claim(ZrVariantCopy(&source, &lent) == copied && source.Type == lent.Type, "copy in a variant");
    Claim(ZrVariantCopyInd(&source, &byRef) == copied && source.Type == lent.Type, "copy behind a reference");
    Claim((source.Value.array == nullptr) == from.bounds.empty(), "array in a variant");
    if (from.bounds.empty()) return;
    Slot model = {Array(source.Value.array), from.tag, from.elementTag, from.elementCount, from.bounds, Copied(from)};
    auto [elements, converted] = Converted(model, target);
    (void)model.array.release();
    const bool isSame = target == from.tag, isOk = isSame || converted == ZR_R_OK;
    OwnedVariant& result = Next(2) == 0 ? source : apart;
    Claim(ZrVariantChangeType(&result, &source, 0, target) == (isOk ? ZR_R_OK : ZR_R_FAILED),
          "conversion in a variant");
    if (!isOk) {
      Claim(Describe(apart) == "I4 5" && source.Type == lent.Type, "what is converted in a variant");
      Claim(ShowEach(from.elementTag, source.Value.array) == model.elements, "elements in a variant");
      return;
    }
    Claim(result.Type == (target | ZR_VT_ARRAY), "type in a variant");
    to = {Array(std::exchange(result.Value.array, nullptr)),
          target,
          isSame ? from.elementTag : target,
          model.elementCount,
          model.bounds,
          isSame ? model.elements : elements};
  }

  void Compare(const Slot& left, const Slot& right) {
    uint8_t equal = 9, inVariants = 9;
    const auto key = [](const Slot& slot) {
      return Hex(slot.bounds.data(), slot.bounds.size() * sizeof(ZrSafeArrayBound));
    };
    uint8_t expected = 1;
    if (!left.bounds.empty() && key(left) != key(right)) {
      expected = 9;  // and nothing is written
    } else if (&left != &right && left.tag == right.tag && left.elementTag == right.elementTag &&
               left.elements.size() == right.elements.size()) {
      const char *from = ContentOf(left.array.get()).data, *to = ContentOf(right.array.get()).data;
      for (std::size_t at = 0, width = WidthOf(left.elementTag); at < left.elements.size() * width; at += width) {
        if (!AreEqual(left.elementTag, from + at, to + at)) expected = 0;
      }
    }
    Claim(ZrSafeArrayCompare(left.array.get(), right.array.get(), &equal) == ZR_R_OK && equal == expected,
          "comparison");
    ZRVARIANT leftVariant = Lent(left), rightVariant = Lent(right);
    rightVariant.Type = leftVariant.Type;
    const ZRVARIANT leftRef = ByRef(leftVariant), rightRef = ByRef(rightVariant);
    Claim(ZrVariantCompare(&leftVariant, &rightVariant, &inVariants) == ZR_R_OK && inVariants == expected,
          "comparison in variants");
    inVariants = 9;
    Claim(ZrVariantCompare(&leftRef, &rightRef, &inVariants) == ZR_R_OK && inVariants == expected,
          "comparison behind references");
  }

  void Lock(Slot& slot) {
    void* data = nullptr;
    const ZRRESULT whenFree = slot.isTaken ? ZR_R_INVALID_OBJECT_STATE : ZR_R_OK;
    const ZRRESULT whenTaken = slot.isTaken ? ZR_R_OK : ZR_R_INVALID_OBJECT_STATE;
    const uint32_t way = Next(4);
    if (way == 0) Claim(ZrSafeArrayLock(slot.array.get()) == whenFree, "lock");
    if (way == 1) {
      Claim(ZrSafeArrayAccessData(slot.array.get(), &data) == whenFree, "access");
      Claim((data != nullptr) == (!slot.isTaken && !slot.elements.empty()), "data");
    }
    if (way == 2) Claim(ZrSafeArrayUnlock(slot.array.get()) == whenTaken, "unlock");
    if (way == 3) Claim(ZrSafeArrayUnaccessData(slot.array.get()) == whenTaken, "end of access");
    slot.isTaken = way < 2;
  }

  static constexpr uint32_t kSlots = 3;
  const uint8_t* data_;
  std::size_t size_;
  char bytes_[16] = {};
  OwnedVariant nested_;
  Slot slots_[kSlots];
  std::string difference_;
};
