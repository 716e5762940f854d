// Parses any text as a date and time and compares the record with the model. A record with a year of four digits must
// survive a round trip through text.

#include "fuzz/fuzz_support.h"
#include "tests/support/time_models.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::basic_string<WCHAR> units = FuzzUnits(data, size);
  ZRDATETIMESTRUCT record;
  FUZZ_CLAIM(ReadsAsModelled(ZrDateTimeStringToDateTimeStruct, ModelReadDateTime, units, record));

  ZRSTR written = ZrDateTimeStructToDateTimeString(&record, 1);
  FUZZ_CLAIM(ZrStringLen(written) >= 27);
  if (units.size() >= 10 && ZrStringLen(written) == 27 && record.year >= 0 && record.fraction >= 0) {
    ZRDATETIMESTRUCT again;
    FUZZ_CLAIM(ZrDateTimeStringToDateTimeStruct(written, &again) == 1);
    again.millisecond = record.millisecond;  // a short fraction sets it from fewer digits
    FUZZ_CLAIM(std::memcmp(&record, &again, sizeof record) == 0);
  }
  ZrDestroyString(written);
  return 0;
}
