// What stands below the seam on POSIX systems only: elsewhere the debugger's channel is no stream of the process.

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <sys/random.h>
#include <sys/types.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <string>

#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/locale_text.h"
#include "platform/module.h"
#include "platform/posix/utf8_text.h"
#include "tests/support/system.h"
#include "tests/support/text.h"

// The linker sends the library's calls of these functions here. Without a wish of a test they are the system's.
static const std::timespec* g_clock = nullptr;  // what the clock shows; a negative fraction makes it fail
static int g_zoneReads = 0, g_randomFailures = 0, g_randomError = 0;
static const char* g_loaderText = nullptr;

extern "C" {
int __real_clock_gettime(clockid_t id, std::timespec* now);
int __wrap_clock_gettime(clockid_t id, std::timespec* now) {
  if (g_clock == nullptr) return __real_clock_gettime(id, now);
  *now = *g_clock;
  return now->tv_nsec < 0 ? -1 : 0;
}

void __real_tzset();
void __wrap_tzset() {
  ++g_zoneReads;
  __real_tzset();
}

char* __real_dlerror();
char* __wrap_dlerror() {
  char* text = __real_dlerror();
  return g_loaderText == nullptr ? text : const_cast<char*>(g_loaderText);
}

ssize_t __real_getrandom(void* bytes, std::size_t size, unsigned flags);
ssize_t __wrap_getrandom(void* bytes, std::size_t size, unsigned flags) {
  if (g_randomFailures == 0) return __real_getrandom(bytes, size, flags);
  --g_randomFailures;
  errno = g_randomError;
  return -1;
}
}

TEST(PosixSeam, DebugOutputIsUtf8) {
  Units text = W("a\x00E9\x96EA");
  text += {WCHAR{0xD83E}, WCHAR{0xDE90}, WCHAR{0xD83E}, WCHAR{'.'}, WCHAR{0xDE90}};  // a pair, and two halves
  EXPECT_EQ(DebugOutputOf([&] { PlatformDebugOutput(text); }),
            "a\xC3\xA9\xE9\x9B\xAA\xF0\x9F\xAA\x90\xEF\xBF\xBD.\xEF\xBF\xBD");
}

// What the loader says of a file that is not there, put in its mouth.
TEST(PosixSeam, TheReasonOfAFailedLoadIsOneLineWithoutThePath) {
  const std::string path = "/nowhere/file", limit(kModuleReasonUnits - 1, 'x');
  const struct {
    std::string said;
    Units reason;
  } kRows[] = {
      {path + ": not there", W("not there")},
      {path + "2: not there", W("/nowhere/file2: not there")},
      {path + " not there", W("/nowhere/file not there")},
      {"/nowhere/: needed by " + path + ": not there", W("/nowhere/: needed by /nowhere/file: not there")},
      {"a\x1F"
       "b\x7F"
       "c\xC2\x85"
       "d\xE2\x80\xA8"
       "e\xE2\x80\xA9"
       "f \xC2\x84",
       W("a b c d e f \x0084")},
      {limit + "yz", Widened(limit + "y")},
      {limit + "\xF0\x9F\xAA\x90", Widened(limit)},  // half a character is no text
  };
  for (const auto& [said, expected] : kRows) {
    g_loaderText = said.c_str();
    Units reason;
    EXPECT_EQ(PlatformLoadModule(Widened(path).c_str(), reason), nullptr);
    EXPECT_EQ(reason, expected) << said;
  }
  g_loaderText = nullptr;
}

TEST(PosixSeam, DebugOutputSurvivesAReaderThatWentAway) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  (void)std::signal(SIGPIPE, SIG_DFL);  // whoever runs the tests may ignore it
  sigset_t held;
  sigemptyset(&held);
  sigaddset(&held, SIGUSR1);
  pthread_sigmask(SIG_SETMASK, &held, nullptr);
  (void)DebugOutputOf([&] {  // which puts the stream back
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    PlatformDebugOutput(W("nobody reads this"));
  });
  pthread_sigmask(SIG_BLOCK, nullptr, &held);
  for (int each = 1; each < SIGRTMIN; ++each) EXPECT_EQ(sigismember(&held, each), each == SIGUSR1) << "signal " << each;
}

TEST(PosixSeam, DebugOutputLeavesASignalThatWasPending) {
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

TEST(PosixSeam, Utf8IsReadWhateverItHolds) {
  const struct {
    std::string bytes;
    std::u16string text;
  } kRows[] = {
      {"a\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"a\x0080\x07FF\x0800\xFFFF"},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", {0xD800, 0xDC00, 0xDBFF, 0xDFFF}},
      {"\x80.\xC1\xBF", u"\xFFFD.\xFFFD\xFFFD"},                  // no byte that may come first
      {"\xF5\x80", u"\xFFFD\xFFFD"},                              // above every code point
      {"\xE0\x9F\xBF", u"\xFFFD\xFFFD\xFFFD"},                    // longer than needed
      {"\xF0\x8F\xBF\xBF", u"\xFFFD\xFFFD\xFFFD\xFFFD"},          // the same with four bytes
      {"\xED\x9F\xBF\xED\xA0\x80", u"\xD7FF\xFFFD\xFFFD\xFFFD"},  // the first surrogate
      {"\xED\xBF\xBF\xEE\x80\x80", u"\xFFFD\xFFFD\xFFFD\xE000"},  // the last one
      {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"},          // above the last code point
      {"\xE2\x82.\xE2\x82", u"\xFFFD\xFFFD.\xFFFD\xFFFD"},        // cut short, in the middle and at the end
  };
  for (const auto& [bytes, text] : kRows) EXPECT_EQ(FromUtf8Lossy(bytes), text) << &bytes - &kRows[0].bytes;
}

TEST(PosixSeam, Utf8OfALoneHalfAtTheEndIsAReplacement) {
  EXPECT_EQ(ToUtf8Lossy(u"\xFF01\xD83E"), "\xEF\xBC\x81\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf8Lossy(u"\xD83E\xE000"), "\xEF\xBF\xBD\xEE\x80\x80");
  EXPECT_EQ(ToUtf8(u"\xD83E"), std::nullopt);
}

TEST(PosixSeam, AnUnknownLocaleHasTheCaseOfAscii) {
  const char* const set = std::getenv("LC_ALL");
  const std::string before = set != nullptr ? set : "";
  setenv("LC_ALL", "no such locale", 1);
  const CharacterLocale locale = PlatformOpenCharacterLocale();
  EXPECT_NE(locale, nullptr);
  EXPECT_EQ(PlatformToUpper(locale, 'z'), 'Z');
  EXPECT_EQ(PlatformToUpper(locale, 0xE9), 0xE9);
  PlatformCloseCharacterLocale(locale);
  set != nullptr ? setenv("LC_ALL", before.c_str(), 1) : unsetenv("LC_ALL");
}

// The system's own records reach to the year 30827, values a little further.
TEST(PosixSeam, TheClockMayShowAnyTime) {
  const struct {
    std::timespec clock;
    const char* date;
  } kRows[] = {
      {{-11644473600 - 1, 0}, "1601-01-01 0"},  // 1600: no date, which is 0
      {{-11644473600, 0}, "1601-01-01 0"},
      {{-11644473600, 5'999'999}, "1601-01-01 50000"},
      {{951827696, 0}, "2000-02-29 0"},
      {{983318400, 0}, "2001-02-28 0"},
      {{978307199, 999'999'999}, "2000-12-31 9990000"},
      {{910670515199, 0}, "30827-12-31 0"},
      {{910670515200, 0}, "1601-01-01 0"},
      {{INT64_MAX, 0}, "1601-01-01 0"},  // whose year the C library can't store
      {{951827696, -1}, "1601-01-01 0"},
  };
  for (const auto& row : kRows) {
    g_clock = &row.clock;
    ZRDATETIMESTRUCT record{};
    ZrDateTimeToStruct(ZrGetNow(1), &record);
    EXPECT_EQ(Format("%04d-%02d-%02d %d", record.year, record.month, record.day, record.fraction), row.date)
        << row.clock.tv_sec;
  }
  g_clock = nullptr;
}

// Where the environment names no zone, reading it asks the file system.
TEST(PosixSeam, TheZoneIsReadOnceASecondUnlessItIsNamed) {
  SetTimeZone(nullptr);
  const char* const set = std::getenv("TZ");
  const std::string before = set != nullptr ? set : "";
  std::timespec clock = {1'000'000'000, 0};
  g_clock = &clock;
  const auto readsFor = [](int calls) {
    g_zoneReads = 0;
    while (calls-- > 0) (void)ZrGetNow(0);
    return g_zoneReads;
  };
  unsetenv("TZ");
  EXPECT_EQ(readsFor(3), 1);
  ++clock.tv_sec;
  EXPECT_EQ(readsFor(2), 1);
  setenv("TZ", "UTC0", 1);
  EXPECT_EQ(readsFor(3), 3);
  unsetenv("TZ");
  EXPECT_EQ(readsFor(1), 1) << "the time of the last reading is forgotten";
  g_clock = nullptr;
  if (set != nullptr) setenv("TZ", before.c_str(), 1);
}

TEST(PosixSeam, UuidsAreRandomWithoutTheSystemCall) {
  for (const int error : {EINTR, ENOSYS}) {
    g_randomFailures = 1;
    g_randomError = error;
    ZRUUID *first = ZrGenerateUUID(), *second = ZrGenerateUUID(), nil = {};
    EXPECT_EQ(g_randomFailures, 0);
    EXPECT_FALSE(*first == nil || *first == *second) << *first;
    EXPECT_TRUE(first->data3 >> 12 == 4 && first->data4[0] >> 6 == 2) << *first;
    ZrDestroyUUID(first);
    ZrDestroyUUID(second);
  }
}
