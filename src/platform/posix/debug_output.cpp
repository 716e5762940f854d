#include "platform/debug_output.h"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>
#include <string_view>

#include "platform/posix/utf8_text.h"

// Keeps a write to a pipe that nobody reads from ending the process. The signal goes to the thread that writes: it is
// held back, and taken off again if it wasn't pending before.
class CWithoutBrokenPipe {
 public:
  CWithoutBrokenPipe() noexcept {
    sigemptyset(&brokenPipe_);
    sigaddset(&brokenPipe_, SIGPIPE);
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &brokenPipe_, &before_);
  }
  CWithoutBrokenPipe(const CWithoutBrokenPipe&) = delete;
  CWithoutBrokenPipe& operator=(const CWithoutBrokenPipe&) = delete;
  ~CWithoutBrokenPipe() {
    const timespec now = {};
    if (!wasPending_) sigtimedwait(&brokenPipe_, nullptr, &now);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

 private:
  sigset_t brokenPipe_, before_;
  bool wasPending_ = false;
};

void PlatformDebugOutput(std::u16string_view text) noexcept {
  try {
    const std::string bytes = ToUtf8Lossy(text);
    const CWithoutBrokenPipe quiet;
    // In one write, so that lines of several threads don't mix, unless the system takes less at a time.
    for (std::string_view rest = bytes; !rest.empty();) {
      const ssize_t written = write(STDERR_FILENO, rest.data(), rest.size());
      if (written > 0) {
        rest.remove_prefix(static_cast<std::size_t>(written));
      } else if (errno != EINTR) {
        break;
      }
    }
  } catch (...) {
    // Lost, by contract.
  }
}
