// What depends on the clock and the time zone: universal time, a zone with daylight saving, one off by half an hour,
// one in the west. Zones are given by rule, and by name where the system has tables of them. Where it can't follow the
// rule of a zone, that zone is left out.

#include <gtest/gtest.h>

#include <ctime>

#include "tests/support/system.h"
#include "tests/support/text.h"

struct Zone {
  const char *rule, *name;
  int64_t standard, summerFrom = 0, summerUntil = 0;  // in 2012: the offset, and the moments when it changes by an hour
};
static constexpr Zone kUniversal = {"UTC0", "Etc/UTC", 0}, kKolkata = {"IST-5:30", "Asia/Kolkata", 19800};
static constexpr Zone kBerlin = {"CET-1CEST,M3.5.0/2,M10.5.0/3", "Europe/Berlin", 3600, 1332637200, 1351386000};
static constexpr Zone kNewYork = {"EST5EDT,M3.2.0/2,M11.1.0/2", "America/New_York", -18000, 1331449200, 1352008800};

static constexpr int64_t kLastMoment = 32535215999;

struct TimeZoneTest : testing::Test {
  ~TimeZoneTest() override { (void)SetTimeZone(nullptr); }
};

static int64_t Value(int64_t secondsFrom1970) { return (secondsFrom1970 + 11644473600) * ZR_TICKS_PER_SECOND; }

static ZRDATETIME Local(const char* text) {
  ZRDATETIMESTRUCT record;
  EXPECT_EQ(ZrDateTimeStringToDateTimeStruct(Owned(Widened(text)), &record), 1);
  ZRDATETIME value = 0;
  ZrDateTimeFromStruct(&record, &value);
  return value;
}

// The moment; or the code that is answered for a negative value, or raised for any other.
static int64_t Moment(ZRDATETIME value) {
  int64_t timeT = 42;
  ZRRESULT code = ZR_R_OK;
  try {
    code = ZrDateTimeToTimeT(value, &timeT);
    EXPECT_EQ(code, value < 0 ? ZR_R_FAILED : ZR_R_OK);
  } catch (const CZrException& raised) {
    code = raised.code;
  }
  EXPECT_TRUE(code == ZR_R_OK || timeT == 42) << "unchanged";
  return code == ZR_R_OK ? timeT : code;
}

TEST_F(TimeZoneTest, MomentsGoThereAndBackWithinTheirLimits) {
  const struct {
    const Zone& place;
    const char* local;
    int64_t moment;
  } kRows[] = {
      {kUniversal, "1899-12-31 23:59:59.9999999", 0},
      {kUniversal, "1900-01-01", ZR_RAISED_NO_TIME_T},
      {kUniversal, "3000-12-31 23:59:59.999", kLastMoment},
      {kKolkata, "1970-01-01 05:29:59", ZR_RAISED_INVALID_TIME},
      {kKolkata, "1970-01-01 05:30:00", 0},
      {kBerlin, "3001-01-01 00:59:59", kLastMoment},
      {kNewYork, "1969-12-31 19:00:00", ZR_RAISED_NO_TIME_T},
      {kNewYork, "3000-12-31 19:00:00", ZR_RAISED_INVALID_TIME},
  };
  for (const auto way : {&Zone::rule, &Zone::name}) {
    for (const Zone& place : {kUniversal, kBerlin, kKolkata, kNewYork}) {
      SCOPED_TRACE(place.*way);
      if (!SetTimeZone(place.*way)) continue;
      int repeated = 0;
      for (int64_t moment = 1325376000; moment < 1325376000 + 366 * 86400; moment += 900) {
        ZRDATETIME value = 0;
        ASSERT_EQ(ZrDateTimeFromTimeT(moment, &value), ZR_R_OK);
        const int64_t summer = moment >= place.summerFrom && moment < place.summerUntil ? 3600 : 0;
        ASSERT_EQ(value, Value(moment + place.standard + summer)) << moment;
        if (Moment(value) == moment) continue;
        ++repeated;
        ASSERT_EQ(Moment(value), moment + 3600) << "the standard reading of a repeated hour";
      }
      EXPECT_EQ(repeated, place.summerFrom != 0 ? 4 : 0);
      if (place.summerFrom == 0) continue;
      const ZRDATETIME skipped = Value(place.summerFrom + place.standard + 1800);
      EXPECT_EQ(Moment(skipped), place.summerFrom - 1800) << "the daylight reading";
    }
    for (const auto& row : kRows) {
      if (!SetTimeZone(row.place.*way)) continue;
      EXPECT_EQ(Moment(Local(row.local)), row.moment) << row.local;
    }
  }
  // A null comes last.
  EXPECT_EQ(ZrDateTimeFromTimeT(-1, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrDateTimeToTimeT(-1, nullptr), ZR_R_FAILED);
  EXPECT_EQ(ZrDateTimeToTimeT(0, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_THROW((void)ZrDateTimeToTimeT(Value(-1000000), nullptr), CZrException);

  EXPECT_EQ(Moment(-1), ZR_R_FAILED);
  EXPECT_EQ(Moment(INT64_MAX), ZR_RAISED_INVALID_TIME);
  ASSERT_TRUE(SetTimeZone(kUniversal.rule));
  for (int64_t moment : {int64_t{-1}, int64_t{0}, kLastMoment, kLastMoment + 1, INT64_MIN, INT64_MAX}) {
    ZRDATETIME value = 42;
    EXPECT_EQ(ZrDateTimeFromTimeT(moment, &value), ZR_R_OK);
    EXPECT_EQ(value, moment >= 0 && moment <= kLastMoment ? Value(moment) : 0) << moment;
  }
}

TEST(TimeT, RaisesWhatAnotherModuleCatches) {
  void* module = OpenLibrary(TEST_DIRECTORY "/catching" MODULE_SUFFIX);
  const auto catchTimeT = reinterpret_cast<ZRRESULT (*)(ZRDATETIME)>(FindInLibrary(module, "CatchTimeT"));
  ASSERT_NE(catchTimeT, nullptr);
  EXPECT_EQ(catchTimeT(Local("1950-01-01")), ZR_RAISED_NO_TIME_T);
  EXPECT_EQ(catchTimeT(Local("9999-01-01")), ZR_RAISED_INVALID_TIME);
  CloseLibrary(module);
}

TEST_F(TimeZoneTest, NowIsUniversalOrLocal) {
  for (const Zone& place : {kUniversal, kKolkata}) {
    ASSERT_TRUE(SetTimeZone(place.rule));
    const ZRDATETIME offset = LocalClockOffset(place.standard) * ZR_TICKS_PER_SECOND;
    const ZRDATETIME before = Value(std::time(nullptr) - 1);
    const ZRDATETIME universal = ZrGetNow(1), other = ZrGetNow(0xFF), local = ZrGetNow(0);
    const ZRDATETIME after = Value(std::time(nullptr) + 1);
    EXPECT_TRUE(before <= universal && universal <= other && other <= after);
    EXPECT_TRUE(other <= local - offset && local - offset <= after);
    EXPECT_TRUE(universal % 10000 == 0 && local % 10000 == 0) << "to the millisecond";
  }
}
