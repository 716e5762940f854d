#include "zrmodule/system.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

bool IsColourTerminal() {
  const char* const off = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && (off == nullptr || *off == 0) && terminal != nullptr &&
         std::string_view(terminal) != "dumb";
}
