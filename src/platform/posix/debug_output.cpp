// Debug output goes to standard error, as UTF-8.

#include "platform/debug_output.h"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>
#include <string_view>

#include "platform/posix/utf8_text.h"

// Prevents a write to a pipe that nobody reads from terminating the process. The default action of SIGPIPE would do
// that, and the library must not change the process's signal handlers.
//
// The system sends SIGPIPE to the thread that writes. So the signal is blocked in this thread during the write. If the
// write has raised it, sigtimedwait removes it before it is unblocked. A signal that was pending before is not removed:
// it has another cause.
class CBrokenPipeBlocker {
 public:
  CBrokenPipeBlocker() noexcept {
    sigemptyset(&brokenPipe_);
    sigaddset(&brokenPipe_, SIGPIPE);
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &brokenPipe_, &before_);
  }
  CBrokenPipeBlocker(const CBrokenPipeBlocker&) = delete;
  CBrokenPipeBlocker& operator=(const CBrokenPipeBlocker&) = delete;
  ~CBrokenPipeBlocker() {
    const timespec now = {};  // don't wait
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
    const CBrokenPipeBlocker quiet;
    // One write for the whole text, so that the lines of several threads don't mix. The loop is for a system that
    // accepts only a part, and for a signal that interrupts the write.
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
