// Tests the clock and the time zone on POSIX systems, with a clock that the tests set.

#include "platform/clock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "tests/support/system.h"
#include "tests/support/text.h"

// The linker redirects the library's calls of clock_gettime and tzset to these wrappers.
static const std::timespec* g_clock = nullptr;  // the clock's time if not null; negative nanoseconds make the call fail
static int g_zoneReads = 0;

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
}

// The system's records end with the year 30827, and ZRDATETIME a little later.
TEST(PosixClock, ConvertsAnySystemTime) {
  const struct {
    std::timespec clock;
    const char* date;
  } kRows[] = {
      {{-11644473600 - 1, 0}, "1601-01-01 0"},  // 1600 is not a valid date and becomes 0
      {{-11644473600, 0}, "1601-01-01 0"},
      {{-11644473600, 5'999'999}, "1601-01-01 50000"},
      {{951827696, 0}, "2000-02-29 0"},
      {{983318400, 0}, "2001-02-28 0"},
      {{978307199, 999'999'999}, "2000-12-31 9990000"},
      {{910670515199, 0}, "30827-12-31 0"},
      {{910670515200, 0}, "1601-01-01 0"},
      {{INT64_MAX, 0}, "1601-01-01 0"},  // the C library cannot store this year
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

// Without TZ, reading the zone needs the file system, so the library reads it at most once per second.
TEST(PosixClock, RereadsAnUnnamedZoneOncePerSecond) {
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
  EXPECT_EQ(readsFor(1), 1) << "the zone must be read again after TZ was set in between";
  g_clock = nullptr;
  if (set != nullptr) setenv("TZ", before.c_str(), 1);
}
