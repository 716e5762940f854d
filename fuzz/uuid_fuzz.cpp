// Parses any text as a UUID. An accepted text must survive a round trip. A rejected one leaves the record nil or
// unchanged.

#include "fuzz/fuzz_support.h"
#include "zrcore/zrcore.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const ZRUUID before = {1, 2, 3, {4}}, nil = {};
  ZRUUID value = before;
  if (ZR_FAILED(ZrUUIDFromString(text.c_str(), &value))) {
    const bool isUntouched = std::strlen(text.c_str()) < 36;
    FUZZ_CLAIM(std::memcmp(&value, isUntouched ? &before : &nil, sizeof value) == 0);
    return 0;
  }
  ZRSTR written = nullptr;
  FUZZ_CLAIM(ZrStringFromUUID(&value, &written) == ZR_R_OK && ZrStringLen(written) == 38);
  const std::string narrow(written, written + 38);
  ZrDestroyString(written);
  ZRUUID again = before;
  FUZZ_CLAIM(ZrUUIDFromString(narrow.c_str(), &again) == ZR_R_OK);
  FUZZ_CLAIM(std::memcmp(&again, &value, sizeof value) == 0);
  return 0;
}
