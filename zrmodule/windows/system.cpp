#include "zrmodule/system.h"

#include <windows.h>

#include <cstdlib>

bool IsColourTerminal() {
  const char* const off = std::getenv("NO_COLOR");
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return (off == nullptr || *off == 0) && GetConsoleMode(output, &mode) != 0 &&
         SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}
