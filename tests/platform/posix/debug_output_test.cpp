// Tests the debug output on POSIX systems, where it is the standard error stream of the process.

#include "platform/debug_output.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <ctime>

#include "tests/support/system.h"
#include "tests/support/text.h"

TEST(PosixDebugOutput, WritesUtf8) {
  Units text = W("a\x00E9\x96EA");
  text += {WCHAR{0xD83E}, WCHAR{0xDE90}, WCHAR{0xD83E}, WCHAR{'.'}, WCHAR{0xDE90}};  // a pair, and two lone surrogates
  EXPECT_EQ(DebugOutputOf([&] { PlatformDebugOutput(text); }),
            "a\xC3\xA9\xE9\x9B\xAA\xF0\x9F\xAA\x90\xEF\xBF\xBD.\xEF\xBF\xBD");
}

TEST(PosixDebugOutput, SurvivesAClosedPipe) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  (void)std::signal(SIGPIPE, SIG_DFL);  // the parent process may have set it to be ignored
  sigset_t held;
  sigemptyset(&held);
  sigaddset(&held, SIGUSR1);
  pthread_sigmask(SIG_SETMASK, &held, nullptr);
  (void)DebugOutputOf([&] {  // restores the stream afterwards
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    PlatformDebugOutput(W("nobody reads this"));
  });
  pthread_sigmask(SIG_BLOCK, nullptr, &held);
  for (int each = 1; each < SIGRTMIN; ++each) EXPECT_EQ(sigismember(&held, each), each == SIGUSR1) << "signal " << each;
}

TEST(PosixDebugOutput, KeepsAPendingSigpipe) {
  sigset_t brokenPipe, before, pending;
  sigemptyset(&brokenPipe);
  sigaddset(&brokenPipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &brokenPipe, &before);
  (void)std::raise(SIGPIPE);
  EXPECT_EQ(DebugOutputOf([] { PlatformDebugOutput(W("line")); }), "line");
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 1);
  const std::timespec now = {};
  EXPECT_EQ(sigtimedwait(&brokenPipe, nullptr, &now), SIGPIPE);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}
