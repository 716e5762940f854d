// The library's registry provides the name of each code; this file adds what the code means for a user of the demo.

#include "host/result_text.h"

#include <zrcore/error_info.h>

#include <cstdint>
#include <cstdio>

#include "host/utf8.h"

struct Reason {
  ZRRESULT result;
  const char* text;
};

static constexpr Reason kReasons[] = {
    {ZR_R_CLASS_NOT_REGISTERED, " (no discovery lists this class)"},
    {ZR_R_FILE_NOT_FOUND, " (the module can't be loaded)"},
    {ZR_R_INVALID_SYSTEM, " (the file is not a component module)"},
    {ZR_R_NOT_SUPPORTED, " (the module failed to start)"},
    {ZR_R_NO_INTERFACE, " (the object is not a table)"},
};

std::string Describe(ZRRESULT result) {
  ZRSTR name = nullptr;
  if (ZR_FAILED(ZrErrorInfoGetText(static_cast<std::uint32_t>(result), &name))) {
    char text[32];
    (void)std::snprintf(text, sizeof text, "result 0x%08X", static_cast<unsigned>(result));
    return text;
  }
  std::string text = ToUtf8(StringOwner(name).get());
  for (const Reason& reason : kReasons) {
    if (reason.result == result) text += reason.text;
  }
  return text;
}
