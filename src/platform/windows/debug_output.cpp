// Debug output goes to the debugger. The copy adds the terminator that the system needs.

#include "platform/debug_output.h"

#include <windows.h>

#include <string>

void PlatformDebugOutput(std::wstring_view text) noexcept {
  try {
    OutputDebugStringW(std::wstring(text).c_str());
  } catch (...) {
    // Out of memory: the text is lost, by contract.
  }
}
