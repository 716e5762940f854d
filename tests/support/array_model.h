// The slow rule of conversion: each element through variants, one by one, by the functions that everybody has.

#pragma once

#include "tests/support/array_samples.h"

// The type that a value has to have in the end, by the storage that it shares with others.
inline uint16_t CanonicalTag(uint16_t tag) {
  static constexpr struct {
    uint16_t tag, canonical;
  } kShared[] = {{ZR_VT_BOOL, ZR_VT_UI1},  {ZR_VT_BYTE, ZR_VT_UI1},   {ZR_VT_WORD, ZR_VT_UI2},
                 {ZR_VT_DWORD, ZR_VT_UI4}, {ZR_VT_CHAR32, ZR_VT_UI4}, {ZR_VT_QWORD, ZR_VT_UI8},
                 {ZR_VT_TIME, ZR_VT_I8},   {ZR_VT_DATETIME, ZR_VT_I8}};
  for (const auto& row : kShared) {
    if (row.tag == tag) return row.canonical;
  }
  return tag;
}

inline bool IsTime(uint16_t tag) { return tag == ZR_VT_TIME || tag == ZR_VT_DATETIME; }

inline void MakeTemporary(uint16_t tag, const char* element, ZRVARIANT& temporary) {
  ZRVARIANT lent = ZR_VARIANT_INIT;
  ZRUUID* uuid = nullptr;
  if (tag == ZR_VT_VARIANT) {
    std::memcpy(&lent, element, sizeof lent);
  } else if (tag == ZR_VT_UUID) {
    ZRUUID value;
    std::memcpy(&value, element, sizeof value);
    (void)ZrCopyUUID(&value, &uuid);
    lent.Type = tag;
    lent.Value.uuid = uuid;
  } else {
    lent.Type = IsTime(tag) || CanonicalTag(tag) == tag ? tag : CanonicalTag(tag);
    std::memcpy(&lent.Value, element, WidthOf(tag));
  }
  (void)ZrVariantCopy(&temporary, &lent);
  ZrDestroyUUID(uuid);
  const bool mayBeMissing = tag == ZR_VT_REF || tag == ZR_VT_SREF;
  if (mayBeMissing && temporary.Value.address == nullptr) (void)ZrVariantInit(&temporary);
}

// Moves the value into the element.
inline bool Take(ZRVARIANT& from, uint16_t target, char* element) {
  if (target == ZR_VT_UUID) {
    if (from.Value.uuid != nullptr) std::memcpy(element, from.Value.uuid, sizeof(ZRUUID));
    return true;
  }
  std::memcpy(element, target == ZR_VT_VARIANT ? static_cast<void*>(&from) : &from.Value, WidthOf(target));
  (void)ZrVariantInit(&from);
  return true;
}

inline bool StoreSlowly(ZRVARIANT& temporary, uint16_t target, char* element) {
  if (target == ZR_VT_VARIANT) return Take(temporary, target, element);
  if (target == ZR_VT_UNKNOWN || target == ZR_VT_DISPATCH) {
    const int tag = temporary.Type & ~0x9000;  // bits without a meaning
    const bool isTaken = tag == ZR_VT_DISPATCH || tag == target;
    return isTaken && Take(temporary, target, element);
  }
  const uint16_t canonical = CanonicalTag(target);
  if ((temporary.Type & ZR_VT_ARRAY) != 0) return false;
  OwnedVariant value, converted, last;
  const bool isDirect = CanonicalTag(temporary.Type & ZR_VT_TYPEMASK) == canonical;
  if (ZR_FAILED(ZrVariantCopyInd(&value, &temporary))) return false;
  if (isDirect) return ZrVariantCopy(&last, &value) == ZR_R_OK && Take(last, target, element);
  if (ZrVariantChangeType(&converted, &value, 0, target) != ZR_R_OK) {
    if (target == ZR_VT_SREF) ZrDestroySREF(converted.Value.sref);  // remains that nobody owns
    return false;
  }
  if (converted.Type == canonical) return Take(converted, target, element);
  if ((converted.Type & ZR_VT_ARRAY) != 0) return true;  // a handle is no element
  if (ZrVariantChangeType(&last, &converted, 0, canonical) != ZR_R_OK) return true;
  return Take(last, target, element);
}

inline bool ConvertSlowly(uint16_t source, const char* from, uint16_t target, char* element) {
  if (IsTime(source)) {
    const uint16_t canonical = CanonicalTag(target);
    int64_t count;
    std::memcpy(&count, from, sizeof count);
    const auto real = static_cast<double>(count);
    if (canonical == ZR_VT_I8 || canonical == ZR_VT_UI8 || canonical == ZR_VT_CY)
      return std::memcpy(element, from, 8) != nullptr;
    if (canonical == ZR_VT_R8) return std::memcpy(element, &real, 8) != nullptr;
    if (canonical != ZR_VT_STR && canonical != ZR_VT_VARIANT) return false;
  }
  OwnedVariant temporary;
  MakeTemporary(source, from, temporary);
  return StoreSlowly(temporary, target, element);
}

// The elements of an array as another type; `all` tells whether every one converted.
struct ConvertedElements {
  Array elements;
  bool all = true;
};
inline ConvertedElements ConvertSlowly(uint16_t source, ZRSAFEARRAY array, uint16_t target) {
  const Content content = ContentOf(array);
  Element zero{};
  if (target == ZR_VT_VARIANT) (void)ZrVariantInit(&zero.variant);
  std::vector<Element> elements(content.count, zero);
  ConvertedElements converted;
  for (uint32_t index = 0; index < content.count; ++index) {
    char* to = reinterpret_cast<char*>(&elements[index]);
    converted.all = ConvertSlowly(source, content.data + index * WidthOf(source), target, to) && converted.all;
  }
  converted.elements = ArrayOf(target, elements);
  return converted;
}
