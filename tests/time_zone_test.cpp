// What depends on the clock and the time zone: universal time, a zone with daylight saving, one off by half an hour,
// one in the west. Zones are given by rule, and by name where the system has tables of them.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "tests/support/text.h"

struct Zone {
  const char *rule, *name;
  int64_t standard, summerFrom = 0, summerUntil = 0;  // in 2012: the offset, and the moments when it changes by an hour

  int64_t OffsetAt(int64_t moment) const {
    return standard + (moment >= summerFrom && moment < summerUntil ? 3600 : 0);
  }
};
static constexpr Zone kUniversal = {"UTC0", "Etc/UTC", 0}, kKolkata = {"IST-5:30", "Asia/Kolkata", 19800};
static constexpr Zone kBerlin = {"CET-1CEST,M3.5.0/2,M10.5.0/3", "Europe/Berlin", 3600, 1332637200, 1351386000};
static constexpr Zone kNewYork = {"EST5EDT,M3.2.0/2,M11.1.0/2", "America/New_York", -18000, 1331449200, 1352008800};

static constexpr int64_t kLastMoment = 32535215999;
static constexpr int64_t kSecondsTo1970 = 11644473600;

class TimeZone {
 public:
  explicit TimeZone(const char* name) {
    if (const char* old = std::getenv("TZ")) old_ = old;
    Set(name);
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
  ~TimeZone() { Set(old_ ? old_->c_str() : nullptr); }

 private:
  static void Set(const char* name) {
    if (name != nullptr) {
      setenv("TZ", name, 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  std::optional<std::string> old_;
};

static int64_t Value(int64_t secondsFrom1970) { return (secondsFrom1970 + kSecondsTo1970) * ZR_TICKS_PER_SECOND; }

static ZRDATETIME Local(const char* text) {
  ZRDATETIMESTRUCT record;
  EXPECT_EQ(ZrDateTimeStringToDateTimeStruct(Owned(Widened(text)), &record), 1);
  ZRDATETIME value = 0;
  ZrDateTimeFromStruct(&record, &value);
  return value;
}

// "code" if a code is answered or raised, else the moment.
static std::string Moment(ZRDATETIME value) {
  int64_t timeT = 42;
  char code[32];
  try {
    const ZRRESULT result = ZrDateTimeToTimeT(value, &timeT);
    if (result == ZR_R_OK) return std::to_string(timeT);
    std::snprintf(code, sizeof code, "answers %08X", static_cast<unsigned>(result));
  } catch (const CZrException& raised) {
    std::snprintf(code, sizeof code, "raises %08X", static_cast<unsigned>(raised.code));
  }
  EXPECT_EQ(timeT, 42) << "unchanged";
  return code;
}

class TimeT : public testing::TestWithParam<const char * Zone::*> {
  void SetUp() override {
    if (GetParam() == &Zone::name && !std::filesystem::exists("/usr/share/zoneinfo/Europe/Berlin")) {
      GTEST_SKIP() << "needs the package tzdata";
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Zones, TimeT, testing::Values(&Zone::rule, &Zone::name),
                         [](const auto& way) { return way.param == &Zone::rule ? "ByRule" : "ByName"; });

TEST_P(TimeT, EveryQuarterHourOfAYearGoesThereAndBack) {
  for (const Zone& place : {kUniversal, kBerlin, kKolkata, kNewYork}) {
    SCOPED_TRACE(place.name);
    const TimeZone zone(place.*GetParam());
    int repeated = 0;
    for (int64_t moment = 1325376000; moment < 1325376000 + 366 * 86400; moment += 900) {
      ZRDATETIME value = 0;
      ASSERT_EQ(ZrDateTimeFromTimeT(moment, &value), ZR_R_OK);
      ASSERT_EQ(value, Value(moment + place.OffsetAt(moment))) << moment;
      const std::string back = Moment(value);
      if (back == std::to_string(moment)) continue;
      ++repeated;
      ASSERT_EQ(back, std::to_string(moment + 3600)) << "the standard reading of a repeated hour";
    }
    EXPECT_EQ(repeated, place.summerFrom != 0 ? 4 : 0);
  }
}

TEST_P(TimeT, HasItsLimits) {
  struct Row {
    const Zone& place;
    const char *local, *moment;
  };
  const Row kRows[] = {
      {kUniversal, "1601-01-01", "0"},
      {kUniversal, "1899-12-31 23:59:59.9999999", "0"},
      {kUniversal, "1900-01-01", "raises 80004005"},
      {kUniversal, "1950-06-01", "raises 80004005"},
      {kUniversal, "1969-12-31 23:59:59", "raises 80004005"},
      {kUniversal, "1970-01-01 00:00:00", "0"},
      {kUniversal, "3000-12-31 23:59:59.999", "32535215999"},
      {kUniversal, "3001-01-01 00:00:00", "raises 80070057"},
      {kUniversal, "9999-01-01 00:00:00", "raises 80070057"},
      {kBerlin, "1970-01-01 00:59:59", "raises 80070057"},
      {kBerlin, "1970-01-01 01:00:00", "0"},
      {kBerlin, "2012-03-25 02:30:00", "1332635400"},  // skipped: 00:30 universal time
      {kBerlin, "2012-10-28 02:30:00", "1351387800"},  // repeated: 01:30
      {kBerlin, "3001-01-01 00:59:59", "32535215999"},
      {kNewYork, "1969-12-31 19:00:00", "raises 80004005"},
      {kNewYork, "3000-12-31 19:00:00", "raises 80070057"},
  };
  for (const Row& row : kRows) {
    const TimeZone zone(row.place.*GetParam());
    EXPECT_EQ(Moment(Local(row.local)), row.moment) << row.local;
  }
  EXPECT_EQ(Moment(-1), "answers 80000000");
  EXPECT_EQ(Moment(INT64_MIN), "answers 80000000");
  EXPECT_EQ(Moment(INT64_MAX), "raises 80070057");

  const TimeZone zone(kUniversal.rule);
  for (int64_t moment : {int64_t{-1}, kLastMoment + 1, INT64_MIN, INT64_MAX}) {
    ZRDATETIME value = 42;
    EXPECT_EQ(ZrDateTimeFromTimeT(moment, &value), ZR_R_OK);
    EXPECT_EQ(value, 0) << moment;
  }
  for (int64_t moment : {int64_t{0}, kLastMoment}) {
    ZRDATETIME value = 42;
    EXPECT_EQ(ZrDateTimeFromTimeT(moment, &value), ZR_R_OK);
    EXPECT_EQ(value, Value(moment));
  }
}

TEST(TimeTArguments, ANullComesLast) {
  EXPECT_EQ(ZrDateTimeFromTimeT(0, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrDateTimeFromTimeT(-1, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrDateTimeToTimeT(-1, nullptr), ZR_R_FAILED);
  EXPECT_EQ(ZrDateTimeToTimeT(0, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrDateTimeToTimeT(Value(1000000), nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_THROW((void)ZrDateTimeToTimeT(Value(-1000000), nullptr), CZrException);
}

TEST(TimeTArguments, RaisesWhatAnotherModuleCatches) {
  void* module = dlopen(TEST_DIRECTORY "/catching.so", RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << dlerror();
  const auto catchTimeT = reinterpret_cast<ZRRESULT (*)(ZRDATETIME)>(dlsym(module, "CatchTimeT"));
  ASSERT_NE(catchTimeT, nullptr);
  EXPECT_EQ(catchTimeT(Local("1950-01-01")), ZR_RAISED_NO_TIME_T);
  EXPECT_EQ(catchTimeT(Local("9999-01-01")), ZR_RAISED_INVALID_TIME);
  EXPECT_EQ(catchTimeT(-1), ZR_R_FAILED);
  EXPECT_EQ(catchTimeT(Local("2000-01-01")), ZR_R_OK);
  dlclose(module);
}

TEST(Now, IsUniversalOrLocal) {
  for (const Zone& place : {kUniversal, kKolkata}) {
    const TimeZone zone(place.rule);
    const ZRDATETIME offset = place.standard * ZR_TICKS_PER_SECOND;
    const ZRDATETIME before = Value(std::time(nullptr) - 1);
    const ZRDATETIME universal = ZrGetNow(1), other = ZrGetNow(0xFF), local = ZrGetNow(0);
    const ZRDATETIME after = Value(std::time(nullptr) + 1);
    EXPECT_TRUE(before <= universal && universal <= other && other <= after);
    EXPECT_TRUE(other <= local - offset && local - offset <= after);
    EXPECT_EQ(universal % 10000, 0) << "to the millisecond";
    EXPECT_EQ(local % 10000, 0);
  }
}
