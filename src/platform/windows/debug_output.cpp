#include "platform/debug_output.h"

#include <windows.h>

#include <string>

void PlatformDebugOutput(std::wstring_view text) noexcept {
  try {
    OutputDebugStringW(std::wstring(text).c_str());
  } catch (...) {
    // Lost, by contract.
  }
}
