// The slow rules of conversion and comparison: each element through variants, one by one, by the functions that
// everybody has.

#pragma once

#include "tests/support/array_samples.h"

inline bool AreEqual(uint16_t tag, const char* left, const char* right) {
  const bool isByBytes = tag == ZR_VT_R4 || tag == ZR_VT_R8 || tag == ZR_VT_UNKNOWN || tag == ZR_VT_DISPATCH;
  if (isByBytes) return std::memcmp(left, right, WidthOf(tag)) == 0;
  const ZRVARIANT leftLent = Lend(tag, left), rightLent = Lend(tag, right);
  uint8_t equal = 0;
  return ZrVariantCompare(&leftLent, &rightLent, &equal) == ZR_R_OK && equal == 1;
}

// As a put does it.
inline ZRRESULT CopySlowly(uint16_t tag, const char* from, char* element) {
  const ZRVARIANT lent = Lend(tag, from);
  OwnedVariant copy;
  const ZRRESULT result = ZrVariantCopy(&copy, &lent);
  const bool isMissing = (tag == ZR_VT_REF || tag == ZR_VT_SREF) && copy.Value.address == nullptr;
  (void)Take(copy, tag, element);
  return !isMissing ? result : lent.Value.address == nullptr ? ZR_R_INVALID_ARGUMENTS : 1;
}

inline bool ConvertSlowly(uint16_t source, const char* from, uint16_t target, char* element) {
  const uint16_t canonical = CanonicalTag(target);
  if (IsTime(source)) {
    int64_t count;
    std::memcpy(&count, from, sizeof count);
    const auto real = static_cast<double>(count);
    if (canonical == ZR_VT_I8 || canonical == ZR_VT_UI8 || canonical == ZR_VT_CY)
      return std::memcpy(element, from, 8) != nullptr;
    if (canonical == ZR_VT_R8) return std::memcpy(element, &real, 8) != nullptr;
    if (canonical != ZR_VT_STR && canonical != ZR_VT_VARIANT) return false;
  }
  const ZRVARIANT lent = Lend(source, from);
  OwnedVariant temporary, value, converted;
  (void)ZrVariantCopy(&temporary, &lent);
  const bool mayBeMissing = source == ZR_VT_REF || source == ZR_VT_SREF;
  if (mayBeMissing && temporary.Value.address == nullptr) (void)ZrVariantInit(&temporary);
  if (target == ZR_VT_VARIANT) return Take(temporary, target, element);
  if (target == ZR_VT_UNKNOWN || target == ZR_VT_DISPATCH) {
    const int tag = temporary.Type & ~0x9000;  // bits without a meaning
    return (tag == ZR_VT_DISPATCH || tag == target) && Take(temporary, target, element);
  }
  if ((temporary.Type & ZR_VT_ARRAY) != 0 || ZR_FAILED(ZrVariantCopyInd(&value, &temporary))) return false;
  if (CanonicalTag(temporary.Type & ZR_VT_TYPEMASK) == canonical)
    return ZrVariantCopy(&converted, &value) == ZR_R_OK && Take(converted, target, element);
  if (ZrVariantChangeType(&converted, &value, 0, target) != ZR_R_OK) {
    if (target == ZR_VT_SREF) ZrDestroySREF(converted.Value.sref);  // remains that nobody owns
    return false;
  }
  if ((converted.Type & ZR_VT_ARRAY) != 0) return true;  // a handle is no element
  return (converted.Type & ZR_VT_TYPEMASK) == target && Take(converted, target, element);
}

// The elements of an array as another type; `all` tells whether every one converted.
struct ConvertedElements {
  Array elements;
  bool all = true;
};
inline ConvertedElements ConvertSlowly(uint16_t source, ZRSAFEARRAY array, uint16_t target) {
  const Content content = ContentOf(array);
  ConvertedElements converted{MakeArray(target, {{content.count, -5}})};
  char* to = ContentOf(converted.elements.get()).data;
  for (uint32_t index = 0; index < content.count; ++index, to += WidthOf(target)) {
    converted.all = ConvertSlowly(source, content.data + index * WidthOf(source), target, to) && converted.all;
  }
  return converted;
}
