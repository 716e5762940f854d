// Any text as a time of day: read as the slow model reads it, and written without harm.

#include "fuzz/fuzz_support.h"
#include "tests/support/time_models.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::basic_string<WCHAR> units = FuzzUnits(data, size);
  ZRSTR text = ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR)));
  ZRDATETIMESTRUCT record, model;
  std::memset(&record, 0xA5, sizeof record);
  const bool isRead = ZrTimeStringToDateTimeStruct(text, &record) != 0;
  ZrDestroyString(text);
  FUZZ_CLAIM(isRead == ModelReadTime(ModelBytes(units), model));
  FUZZ_CLAIM(std::memcmp(&record, &model, sizeof record) == 0);
  ZRSTR written = ZrDateTimeStructToTimeString(&record);
  FUZZ_CLAIM(ZrStringLen(written) >= 16);
  ZrDestroyString(written);
  return 0;
}
