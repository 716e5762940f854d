#include "module/column.h"

#include <new>

#include "code_units.h"

// What the library answers for one text alone. An array tells only that some of its elements didn't convert.
static ZRRESULT ConvertAlone(ZRSTR text, uint16_t type) {
  ZRVARIANT source = ZR_VARIANT_INIT;  // borrows the text, so it is never cleared
  source.Type = ZR_VT_STR;
  source.Value.string = text;
  CVariantOwner converted;
  return ZrVariantChangeType(converted.Address(), &source, 0, type);
}

// The library reads a date or time as far as it can and reckons with any field: 31 February is a day in March.
static void RefuseOtherMoments(ZRSAFEARRAY texts, ZRSAFEARRAY moments, const CElements<int32_t>& codes) {
  const ArrayOwner copy = CopyArray(moments);
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

  // Without elements there is nothing to convert, which would be a failure.
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
    RefuseOtherMoments(texts, values.get(), CElements<int32_t>(codes.get()));
  }
  column.type = type;
  column.values = CVariantOwner::OfArray(type, std::move(values));
  column.codes = CVariantOwner::OfArray(ZR_VT_I4, std::move(codes));
  return ZR_R_OK;
}
