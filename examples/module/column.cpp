// Converts a column: one call converts the whole array. Only if that reports that some element failed is each text
// converted again on its own, to find out which elements failed and why.

#include "module/column.h"

#include <new>

#include "code_units.h"

// Returns the result of converting one text. Converting an array reports only that some element failed.
static ZRRESULT ConvertAlone(ZRSTR text, uint16_t type) {
  ZRVARIANT source = ZR_VARIANT_INIT;  // borrows the text: clearing it would release a reference it doesn't own
  source.Type = ZR_VT_STR;
  source.Value.string = text;
  CVariantOwner converted;
  return ZrVariantChangeType(converted.Address(), &source, 0, type);
}

// The library accepts fields that are out of range, such as 31 February, which becomes a day in March, and ignores text
// after the part it can parse. A text counts as valid only if the value, converted back, begins with the same text.
static void RejectInexactTimes(ZRSAFEARRAY texts, ZRSAFEARRAY times, const CElements<int32_t>& codes) {
  const ArrayOwner copy = CopyArray(times);
  if (ZrSafeArrayChangeType(copy.get(), 0, ZR_VT_STR) != ZR_R_OK) throw std::bad_alloc();
  const CElements<ZRSTR> before(texts);
  const CElements<ZRSTR> after(copy.get());
  for (uint32_t i = 0; i < codes.Count(); ++i) {
    const WideView written = Units(before[i]);
    const bool isSame = Units(after[i]).substr(0, written.size()) == written;
    if (codes[i] == ZR_R_OK && !isSame) codes[i] = ZR_R_INVALID_ARGUMENTS;
  }
}

ZRRESULT ReadColumn(ZRSAFEARRAY texts, uint16_t type, TableColumn& column) {
  uint32_t count = 0;
  (void)ZrSafeArrayGetElementCount(texts, &count, nullptr);
  const ZrSafeArrayBound bound = {count, 0};
  ArrayOwner codes(ZrSafeArrayCreate(ZR_VT_I4, 1, &bound));  // zeros, each of them ZR_R_OK

  // Converting an array without elements fails, so an empty column is created with its final type.
  ArrayOwner values = count == 0 ? ArrayOwner(ZrSafeArrayCreate(type, 1, &bound)) : CopyArray(texts);
  const ZRRESULT result = count == 0 ? ZR_R_OK : ZrSafeArrayChangeType(values.get(), 0, type);
  if (ZR_FAILED(result)) return ZR_R_NOT_SUPPORTED;
  {
    const CElements<int32_t> code(codes.get());
    const CElements<ZRSTR> text(texts);
    if (text.Count() != count) return ZR_R_INVALID_OBJECT_STATE;
    for (uint32_t i = 0; i < count; ++i) {
      if (ZrStringLen(text[i]) == 0) {
        code[i] = ZR_R_EMPTY_VALUE;
      } else if (result != ZR_R_OK) {
        code[i] = ConvertAlone(text[i], type);
      }
    }
  }
  if ((type == ZR_VT_DATETIME || type == ZR_VT_TIME) && count > 0) {
    RejectInexactTimes(texts, values.get(), CElements<int32_t>(codes.get()));
  }
  column.type = type;
  column.values = CVariantOwner::OfArray(type, std::move(values));
  column.codes = CVariantOwner::OfArray(ZR_VT_I4, std::move(codes));
  return ZR_R_OK;
}
