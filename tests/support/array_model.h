// A slow model of copying and converting array elements. It puts each element into a variant and uses only exported
// functions of variants. Tests and fuzz targets compare the library's arrays with this model.

#pragma once

#include "tests/support/array_samples.h"

// Copies one element and returns what ZrSafeArrayPutElement must return for it.
inline ZRRESULT ModelCopy(uint16_t tag, const char* from, char* element) {
  const ZRVARIANT lent = Lend(tag, from);
  OwnedVariant copy;
  const ZRRESULT result = ZrVariantCopy(&copy, &lent);
  const bool isMissing = IsOfKind(tag, "rg") && copy.Value.address == nullptr;
  (void)MoveIntoElement(copy, tag, element);
  return !isMissing ? result : lent.Value.address == nullptr ? ZR_R_INVALID_ARGUMENTS : 1;
}

// Converts one element. Returns whether it converted.
inline bool ModelConvert(uint16_t source, const char* from, uint16_t target, char* element) {
  const uint16_t canonical = CanonicalTag(target);
  ZRVARIANT lent = Lend(source, from);
  if (IsOfKind(source, "t") && target != ZR_VT_STR && target != ZR_VT_VARIANT) {
    if (!IsOfKind(target, "qtyd")) return false;
    lent.Type = canonical == ZR_VT_UI8 ? ZR_VT_UI8 : ZR_VT_I8;  // the bits, unchanged
  }
  OwnedVariant temporary, value, converted;
  (void)ZrVariantCopy(&temporary, &lent);
  if (IsOfKind(source, "rg") && temporary.Value.address == nullptr) (void)ZrVariantInit(&temporary);
  if (target == ZR_VT_VARIANT) return MoveIntoElement(temporary, target, element);
  if (IsOfKind(target, "i")) {
    const int tag = temporary.Type & ~0x9000;  // these bits have no meaning
    return (tag == ZR_VT_DISPATCH || tag == target) && MoveIntoElement(temporary, target, element);
  }
  if ((temporary.Type & ZR_VT_ARRAY) != 0 || ZR_FAILED(ZrVariantCopyInd(&value, &temporary))) return false;
  if (CanonicalTag(temporary.Type & ZR_VT_TYPEMASK) == canonical)
    return ZrVariantCopy(&converted, &value) == ZR_R_OK && MoveIntoElement(converted, target, element);
  if (ZrVariantChangeType(&converted, &value, 0, target) != ZR_R_OK) {
    if (target == ZR_VT_SREF) ZrDestroySREF(converted.Value.sref);  // this failure would leak it
    return false;
  }
  if ((converted.Type & ZR_VT_ARRAY) != 0) return true;  // an array is never an element
  return (converted.Type & ZR_VT_TYPEMASK) == target && MoveIntoElement(converted, target, element);
}

// Returns the elements of an array converted to another type, and whether all of them converted.
inline std::pair<Array, bool> ModelConvert(uint16_t source, ZRSAFEARRAY array, uint16_t target) {
  const Storage storage = StorageOf(array);
  Array converted = MakeArray(target, {{storage.count, -5}});
  char* to = StorageOf(converted.get()).data;
  bool all = true;
  for (uint32_t index = 0; index < storage.count; ++index, to += WidthOf(target)) {
    all = ModelConvert(source, storage.data + index * WidthOf(source), target, to) && all;
  }
  return {std::move(converted), all};
}
