// The slow rules of copying and conversion: each element through variants, one by one, by the functions that everybody
// has.

#pragma once

#include "tests/support/array_samples.h"

// As a put does it.
inline ZRRESULT CopySlowly(uint16_t tag, const char* from, char* element) {
  const ZRVARIANT lent = Lend(tag, from);
  OwnedVariant copy;
  const ZRRESULT result = ZrVariantCopy(&copy, &lent);
  const bool isMissing = IsOfKind(tag, "rg") && copy.Value.address == nullptr;
  (void)Take(copy, tag, element);
  return !isMissing ? result : lent.Value.address == nullptr ? ZR_R_INVALID_ARGUMENTS : 1;
}

inline bool ConvertSlowly(uint16_t source, const char* from, uint16_t target, char* element) {
  const uint16_t canonical = CanonicalTag(target);
  ZRVARIANT lent = Lend(source, from);
  if (IsOfKind(source, "t") && target != ZR_VT_STR && target != ZR_VT_VARIANT) {
    if (!IsOfKind(target, "qtyd")) return false;
    lent.Type = canonical == ZR_VT_UI8 ? ZR_VT_UI8 : ZR_VT_I8;  // bit by bit
  }
  OwnedVariant temporary, value, converted;
  (void)ZrVariantCopy(&temporary, &lent);
  if (IsOfKind(source, "rg") && temporary.Value.address == nullptr) (void)ZrVariantInit(&temporary);
  if (target == ZR_VT_VARIANT) return Take(temporary, target, element);
  if (IsOfKind(target, "i")) {
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

// The elements of an array as another type, and whether every one converted.
inline std::pair<Array, bool> ConvertSlowly(uint16_t source, ZRSAFEARRAY array, uint16_t target) {
  const Content content = ContentOf(array);
  Array converted = MakeArray(target, {{content.count, -5}});
  char* to = ContentOf(converted.get()).data;
  bool all = true;
  for (uint32_t index = 0; index < content.count; ++index, to += WidthOf(target)) {
    all = ConvertSlowly(source, content.data + index * WidthOf(source), target, to) && all;
  }
  return {std::move(converted), all};
}
