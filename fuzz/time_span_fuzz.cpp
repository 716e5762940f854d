// Parses any text as a time span and compares it with the model. A span that is not negative must survive a round trip
// through text.

#include "fuzz/fuzz_support.h"
#include "tests/support/time_models.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::basic_string<WCHAR> units = FuzzUnits(data, size);
  ZRSTR text = ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR)));
  ZRTIMESPAN span = 42, model = 0;
  const bool isRead = ZrTimeSpanStringToTimeSpan(text, &span) != 0;
  ZrDestroyString(text);
  FUZZ_CLAIM(isRead == ModelReadSpan(Narrowed(units), model));
  FUZZ_CLAIM(span == model);

  ZRSTR written = ZrTimeSpanToTimeSpanString(span);
  ZRTIMESPAN again = 42;
  FUZZ_CLAIM(ZrTimeSpanStringToTimeSpan(written, &again) == 1);
  FUZZ_CLAIM(span < 0 || again == span);
  ZrDestroyString(written);
  return 0;
}
