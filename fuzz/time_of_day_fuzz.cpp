// Parses any text as a time of day, compares the record with the model, and formats it.

#include "fuzz/fuzz_support.h"
#include "tests/support/time_models.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ZRDATETIMESTRUCT record;
  FUZZ_CLAIM(ReadsAsModelled(ZrTimeStringToDateTimeStruct, ModelReadTime, FuzzUnits(data, size), record));
  ZRSTR written = ZrDateTimeStructToTimeString(&record);
  FUZZ_CLAIM(ZrStringLen(written) >= 16);
  ZrDestroyString(written);
  return 0;
}
