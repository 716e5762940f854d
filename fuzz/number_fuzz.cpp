// Converts any text to a number of every type, and any number to text. The C library is the oracle.

#include <vector>

#include "fuzz/fuzz_support.h"
#include "tests/support/number_model.h"
#include "zrcore/zrcore.h"

static void CheckText(const std::basic_string<WCHAR>& units) {
  static constexpr uint16_t kTargets[] = {ZR_VT_BOOL, ZR_VT_I1,  ZR_VT_I2,  ZR_VT_I4, ZR_VT_I8, ZR_VT_UI1,
                                          ZR_VT_UI2,  ZR_VT_UI4, ZR_VT_UI8, ZR_VT_R4, ZR_VT_R8};
  ZRVARIANT text = ZR_VARIANT_INIT;
  text.Type = ZR_VT_STR;
  text.Value.string = ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR)));
  ZRVARIANT number = ZR_VARIANT_INIT;
  for (const uint16_t target : kTargets) {
    const ModelNumber expected = ModelOfText(units, target);
    FUZZ_CLAIM(ZrVariantChangeType(&number, &text, 0, target) == expected.result);
    FUZZ_CLAIM(number.Value.ui8 == expected.word);
  }
  char* end = nullptr;
  const std::string narrow = Narrowed(units);
  const long long count = std::strtoll(narrow.c_str(), &end, 10);
  const bool isWhole = *end == 0 || *end == 'd' || *end == 'D';
  FUZZ_CLAIM(ZrVariantChangeType(&number, &text, 0, ZR_VT_CY) == (isWhole ? ZR_R_OK : ZR_R_FAILED));
  FUZZ_CLAIM(number.Value.cy == count);
  (void)ZrVariantClear(&text);
}

static void CheckReal(double real) {
  const std::string printed = PrintedReal(real);
  ZRVARIANT number = ZR_VARIANT_INIT, text = ZR_VARIANT_INIT;
  number.Type = ZR_VT_R8;
  number.Value.r8 = real;
  FUZZ_CLAIM(ZrVariantChangeType(&text, &number, 0, ZR_VT_STR) == ZR_R_OK);
  FUZZ_CLAIM(ZrStringLen(text.Value.string) == printed.size());
  FUZZ_CLAIM(std::equal(printed.begin(), printed.end(), text.Value.string));
  (void)ZrVariantClear(&text);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CheckText({data, data + size});  // mostly ASCII
  CheckText(FuzzUnits(data, size));
  for (; size >= sizeof(double); data += sizeof(double), size -= sizeof(double)) {
    double real;
    std::memcpy(&real, data, sizeof real);
    CheckReal(real);
    CheckReal(static_cast<double>(static_cast<float>(real)));
    if (real > -0x1p62 && real < 0x1p62)
      CheckReal(static_cast<double>(static_cast<int64_t>(real)) / 128);  // ties in rounding
  }
  return 0;
}
