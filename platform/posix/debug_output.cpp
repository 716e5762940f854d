#include "platform/debug_output.h"

#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/posix/utf8_text.h"

void PlatformDebugOutput(std::u16string_view text) noexcept {
  try {
    const std::string bytes = ToUtf8Lossy(text);
    // One write, so that lines of several threads don't mix.
    while (write(STDERR_FILENO, bytes.data(), bytes.size()) < 0 && errno == EINTR) {
    }
  } catch (...) {
    // Lost, by contract.
  }
}
