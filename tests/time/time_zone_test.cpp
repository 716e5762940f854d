// Tests functions that depend on the clock and the time zone, in UTC, in zones with daylight saving, in one with an
// offset of half an hour and in one west of UTC. A zone whose rule the system does not support is left out.

#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/system.h"
#include "tests/support/text.h"

static constexpr char kUtc[] = "UTC0", kKolkata[] = "IST-5:30", kNewYork[] = "EST5EDT,M3.2.0/2,M11.1.0/2";
static constexpr char kBerlin[] = "CET-1CEST,M3.5.0/2,M10.5.0/3";

// Seconds since 1970. kForward and kBack are the moments when the clock in Berlin goes forward and back in 2012.
static constexpr int64_t kYear1900 = -2208988800, kYear3001 = 32535216000;
static constexpr int64_t kForward = 1332637200, kBack = 1351386000;

struct TimeZoneTest : testing::Test {
  ~TimeZoneTest() override { (void)SetTimeZone(nullptr); }
};

static ZRDATETIME DateTimeOf(int64_t seconds) { return (seconds + 11644473600) * ZR_TICKS_PER_SECOND; }

// Returns the moment, or the code of the exception.
static int64_t Moment(ZRDATETIME value) {
  int64_t timeT = 42;
  try {
    EXPECT_EQ(ZrDateTimeToTimeT(value, &timeT), ZR_R_OK);
  } catch (const CZrException& raised) {
    EXPECT_EQ(timeT, 42) << "an exception must not change the variable";
    return raised.code;
  }
  return timeT;
}

static ZRDATETIME LocalValue(int64_t moment) {
  ZRDATETIME value = 42;
  EXPECT_EQ(ZrDateTimeFromTimeT(moment, &value), ZR_R_OK);
  return value;
}

TEST_F(TimeZoneTest, MomentsRoundTripWithinTheirLimits) {
  const struct {
    const char* zone;
    int64_t local, moment;
    bool roundTrips = true;
  } kRows[] = {
      {kKolkata, 19800, 0},
      {kBerlin, kYear3001 + 3599, kYear3001 - 1},
      {kBerlin, kForward + 3599, kForward - 1},
      {kBerlin, kForward + 3600, kForward - 3600, false},  // a skipped time: the daylight saving offset applies
      {kBerlin, kForward + 7200, kForward},
      {kBerlin, kBack + 3599, kBack - 3601},
      {kBerlin, kBack + 3600, kBack},  // a repeated time: the standard offset applies
      // Local times without a moment.
      {kUtc, kYear1900 - 1, 0, false},
      {kUtc, kYear1900, ZR_RAISED_NO_TIME_T, false},
      {kNewYork, -18000, ZR_RAISED_NO_TIME_T, false},
      {kKolkata, 19799, ZR_RAISED_INVALID_TIME, false},
      {kNewYork, kYear3001 - 18000, ZR_RAISED_INVALID_TIME, false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    if (!SetTimeZone(row.zone)) continue;
    EXPECT_EQ(Moment(DateTimeOf(row.local)), row.moment);
    EXPECT_TRUE(!row.roundTrips || LocalValue(row.moment) == DateTimeOf(row.local));
  }
  for (const int64_t moment : {int64_t{-1}, kYear3001, INT64_MIN, INT64_MAX}) EXPECT_EQ(LocalValue(moment), 0);
  EXPECT_EQ(ZrDateTimeToTimeT(-1, nullptr), ZR_R_FAILED) << "the value must be checked before the pointer";
  EXPECT_THROW((void)ZrDateTimeToTimeT(INT64_MAX, nullptr), CZrException);
  ExpectRejected({ZrDateTimeFromTimeT(-1, nullptr), ZrDateTimeToTimeT(0, nullptr)});
}

TEST(TimeT, ExceptionIsCaughtInAnotherModule) {
  void* module = OpenLibrary(TEST_DIRECTORY "/catching" MODULE_SUFFIX);
  const auto catchTimeT = reinterpret_cast<ZRRESULT (*)(ZRDATETIME)>(FindInLibrary(module, "CatchTimeT"));
  ASSERT_NE(catchTimeT, nullptr);
  EXPECT_EQ(catchTimeT(DateTimeOf(-1)), ZR_RAISED_NO_TIME_T);
  CloseLibrary(module);
}

TEST_F(TimeZoneTest, GetNowReturnsUtcOrLocalTime) {
  for (const bool isFar : {false, true}) {
    ASSERT_TRUE(SetTimeZone(isFar ? kKolkata : kUtc));
    const ZRDATETIME offset = LocalClockOffset(isFar ? 19800 : 0) * ZR_TICKS_PER_SECOND;
    using std::chrono::system_clock;  // as precise as the library's clock; std::time may be late
    const ZRDATETIME before = DateTimeOf(system_clock::to_time_t(system_clock::now()));
    const ZRDATETIME universal = ZrGetNow(1), other = ZrGetNow(0xFF), local = ZrGetNow(0);
    const ZRDATETIME after = DateTimeOf(system_clock::to_time_t(system_clock::now()) + 1);
    EXPECT_TRUE(before <= universal && universal <= other && other <= after);
    EXPECT_TRUE(other <= local - offset && local - offset <= after);
    EXPECT_TRUE(universal % 10000 == 0 && local % 10000 == 0) << "must be whole milliseconds";
  }
}
