#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "tests/support/text.h"
#include "tests/support/time_models.h"

static bool operator==(const ZRDATETIMESTRUCT& left, const ZRDATETIMESTRUCT& right) {
  return std::memcmp(&left, &right, sizeof left) == 0;
}

static ZRDATETIMESTRUCT Record(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                               int fraction = 0) {
  ZRDATETIMESTRUCT record = {};
  record.year = static_cast<int16_t>(year);
  record.month = static_cast<int8_t>(month);
  record.day = static_cast<int8_t>(day);
  record.hour = static_cast<int8_t>(hour);
  record.minute = static_cast<int8_t>(minute);
  record.second = static_cast<int8_t>(second);
  record.fraction = fraction;
  return record;
}

static ZRDATETIME ValueOf(const ZRDATETIMESTRUCT& record) {
  ZRDATETIME value = 0;
  ZrDateTimeFromStruct(&record, &value);
  return value;
}

static ZRDATETIMESTRUCT RecordOf(ZRDATETIME value) {
  ZRDATETIMESTRUCT record;
  std::memset(&record, 0xA5, sizeof record);
  ZrDateTimeToStruct(value, &record);
  return record;
}

// The 400 years from 1601 on, walked through day by day; then they repeat.
static std::vector<ZRDATETIMESTRUCT> WalkedCalendar() {
  static const int kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  std::vector<ZRDATETIMESTRUCT> days;
  for (int year = 1601; year <= 2000; ++year) {
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    for (int month = 1; month <= 12; ++month) {
      const int length = kLengths[month - 1] + (month == 2 && isLeap ? 1 : 0);
      for (int day = 1; day <= length; ++day) days.push_back(Record(year, month, day));
    }
  }
  return days;
}

// The number of a day has 32 bits, and wraps; quotients go towards zero.
TEST(DateTime, FollowsTheCalendarAtAnyValue) {
  const std::vector<ZRDATETIMESTRUCT> kCalendar = WalkedCalendar();
  std::mt19937_64 random(3);
  std::vector<ZRDATETIME> values = {0, -1, INT64_MAX, INT64_MIN};
  for (int64_t day = -150000; day < 800000; ++day) values.push_back(day * ZR_TICKS_PER_DAY - (day < 0));
  for (int round = 0; round < 100000; ++round) values.push_back(static_cast<ZRDATETIME>(random() >> random() % 40));
  for (ZRDATETIME value : values) {
    const auto days = static_cast<uint32_t>(value / ZR_TICKS_PER_DAY);
    const auto part = [value](int64_t unit, int64_t most) { return static_cast<int>(value / unit % most); };
    ZRDATETIMESTRUCT expected = kCalendar[days % kCalendar.size()];
    expected.year = static_cast<int16_t>(expected.year + static_cast<int>(days / kCalendar.size()) * 400);
    expected.dayOfWeek = static_cast<uint8_t>((days + 584389) % 7);
    expected.hour = static_cast<int8_t>(part(ZR_TICKS_PER_HOUR, 24));
    expected.minute = static_cast<int8_t>(part(ZR_TICKS_PER_MINUTE, 60));
    expected.second = static_cast<int8_t>(part(ZR_TICKS_PER_SECOND, 60));
    expected.millisecond = static_cast<int16_t>(part(10000, 1000));
    expected.microsecond = static_cast<int16_t>(part(10, 1000));
    expected.fraction = part(1, ZR_TICKS_PER_SECOND);
    ASSERT_EQ(RecordOf(value), expected) << value;
    if (value >= 0) {
      ASSERT_EQ(ValueOf(expected), value);
    }
  }
}

TEST(DateTime, ReckonsAnyRecord) {
  EXPECT_EQ(ValueOf({}), 0);
  EXPECT_EQ(ValueOf(Record(2011, 2, 31)), ValueOf(Record(2011, 3, 3)));
  EXPECT_EQ(ValueOf(Record(1600, 5, 5, 1)), ZR_TICKS_PER_HOUR);
  EXPECT_EQ(ValueOf(Record(2012, 13, 5, -1)), -ZR_TICKS_PER_HOUR);
  std::mt19937 random(4);
  for (int round = 0; round < 100000; ++round) {
    ZRDATETIMESTRUCT record;
    for (auto& byte : reinterpret_cast<unsigned char(&)[sizeof record]>(record)) byte = static_cast<uint8_t>(random());
    if (round % 2) {  // mostly dates
      record.month = static_cast<int8_t>(random() % 14);
      record.day = static_cast<int8_t>(random() % 33);
    }
    ASSERT_EQ(ValueOf(record), ModelValue(record));
  }
  ZrDateTimeFromStruct(nullptr, nullptr);
  ZrDateTimeToStruct(0, nullptr);
}

// ---- Text ----------------------------------------------------------------------------------------------------------

static void CheckReadingSpan(const std::string& text) {
  ZRTIMESPAN span = 42, expected = 0;
  ASSERT_EQ(ZrTimeSpanStringToTimeSpan(Owned(Widened(text)), &span), ModelReadSpan(text, expected)) << text;
  ASSERT_EQ(span, expected) << text;
}

TEST(DateTime, ReadsWhatItCan) {
  const struct {
    const char *text, *written;
    int dayOfWeek = 0;
  } kDates[] = {
      {"2012-03-04", "2012-03-04 00:00:00.0000000"},
      {"2012-03-04 05:06:07.1234567", "2012-03-04 05:06:07.1234567"},
      {"04.03.2012 05:06:07.1234567", "2012-03-04 05:06:07.1234567"},
      {"04/03/2012 05:06:07.123", "2012-03-04 05:06:07.1230000"},
      {"04-03-2012", "2012-03-04 00:00:00.0000000"},                  // the first hyphen decides
      {"20AB-03-04", "  20-03-04 00:00:00.0000000", 1},               // a year below 1601 is day 0
      {" 2012-03-04", "   3-12-02 00:00:00.0000000", 1},              // not trimmed, so day first
      {"2012-03-04 05:06:07.123456", "2012-03-04 05:06:07.0123456"},  // six digits are that many ticks
      {"2012-03-04 5", "2012-03-04 05:00:00.0000000"},
  };
  for (const auto& row : kDates) {
    ZRDATETIMESTRUCT record;
    EXPECT_TRUE(ReadsAsModelled(ZrDateTimeStringToDateTimeStruct, ModelReadDateTime, Widened(row.text), record));
    EXPECT_EQ(ContentOf(Owned(ZrDateTimeStructToDateTimeString(&record, 1))), Widened(row.written)) << row.text;
    EXPECT_EQ(record.dayOfWeek, row.dayOfWeek) << row.text;
  }
  for (auto read : {&ZrDateTimeStringToDateTimeStruct, &ZrTimeStringToDateTimeStruct}) {
    ZRDATETIMESTRUCT record = Record(1, 2, 3);
    EXPECT_EQ(read(Owned(Units(W("2012-03-04"))), nullptr), 0);
    EXPECT_EQ(read(nullptr, &record), 0);
    EXPECT_EQ(record, ZRDATETIMESTRUCT{});
  }

  // Texts cut at every length, then with any unit anywhere.
  const std::string kTexts[] = {"2012-03-04 05:06:07.1234567 tail", "04.03.2012 25:66:77.999x", "23:59:59.9999999", ""};
  static const char kStrange[] = "0123456789 -+.:\t\r?xA/";
  std::mt19937 random(5);
  for (const std::string& text : kTexts) {
    for (int round = 0; round < 6000; ++round) {
      std::string odd = text.substr(0, random() % (text.size() + 1));
      for (unsigned changes = random() % 4; changes > 0 && !odd.empty(); --changes) {
        odd[random() % odd.size()] = kStrange[random() % (sizeof kStrange - 1)];
      }
      ZRDATETIMESTRUCT record;
      ASSERT_TRUE(ReadsAsModelled(ZrDateTimeStringToDateTimeStruct, ModelReadDateTime, Widened(odd), record)) << odd;
      ASSERT_TRUE(ReadsAsModelled(ZrTimeStringToDateTimeStruct, ModelReadTime, Widened(odd), record)) << odd;
      CheckReadingSpan(odd);
    }
  }
}

template <class... Values>
static std::string Printed(const char* format, Values... values) {
  char text[100];
  return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, format, values...))};
}

TEST(DateTime, WritesAsPrintfDoes) {
  std::mt19937 random(6);
  for (int round = 0; round < 20000; ++round) {
    ZRDATETIMESTRUCT r = Record(2012, 3, 4, 5, 6, 7, 1234567);
    r.millisecond = 12;
    // One field, or all, hold anything; near the ends of their places more often than not.
    int index = 0;
    const auto disturb = [&](auto& field) {
      if (round % 9 != 8 && round % 9 != index++) return;
      static const int kEdges[] = {-1, 0, 9, 10, 99, 100, 999, 1000, 9999, 10000, 9999999, 10000000, -1000, -10};
      const int value = random() % 2 ? kEdges[random() % std::size(kEdges)] : static_cast<int>(random());
      field = static_cast<std::remove_reference_t<decltype(field)>>(value);
    };
    const auto disturbEach = [&](auto&... fields) { (disturb(fields), ...); };
    disturbEach(r.year, r.month, r.day, r.hour, r.minute, r.second, r.millisecond, r.fraction);
    const std::string date = Printed("%4d-%02d-%02d", r.year, r.month, r.day);
    const std::string time = Printed("%02d:%02d:%02d", r.hour, r.minute, r.second);
    const std::string ticks = Printed(".%07d", r.fraction), milliseconds = Printed(".%03d", r.millisecond);
    ASSERT_EQ(ContentOf(Owned(ZrDateTimeStructToDateString(&r))), Widened(date));
    ASSERT_EQ(ContentOf(Owned(ZrDateTimeStructToTimeString(&r))), Widened(time + ticks));
    ASSERT_EQ(ContentOf(Owned(ZrDateTimeStructToDateTimeString(&r, 1))), Widened(date + ' ' + time + ticks));
    ASSERT_EQ(ContentOf(Owned(ZrDateTimeStructToDateTimeString(&r, 0))), Widened(date + ' ' + time + milliseconds));
  }
  EXPECT_EQ(ZrDateTimeStructToDateString(nullptr), nullptr);
  EXPECT_EQ(ZrDateTimeStructToDateTimeString(nullptr, 1), nullptr);
  EXPECT_EQ(ZrDateTimeStructToTimeString(nullptr), nullptr);
}

TEST(TimeSpan, WritesEachPartWithItsOwnSign) {
  const struct {
    ZRTIMESPAN span;
    const char* text;
  } kRows[] = {
      {0, "00:00:00.0000000"},
      {-1, "00:00:00.-000001"},
      {-ZR_TICKS_PER_HOUR * 3 / 2, "-1:-30:00.0000000"},
      {ZR_TICKS_PER_DAY + 2 * ZR_TICKS_PER_HOUR + 3 * ZR_TICKS_PER_MINUTE + 4 * ZR_TICKS_PER_SECOND + 5,
       "   1.02:03:04.0000005"},
      {ZR_TICKS_PER_DAY - 1, "23:59:59.9999999"},
      {1 - ZR_TICKS_PER_DAY, "-23:-59:-59.-9999999"},
      {-ZR_TICKS_PER_DAY, "  -1.00:00:00.0000000"},
      {std::numeric_limits<int64_t>::max(), "10675199.02:48:05.4775807"},
      {std::numeric_limits<int64_t>::min(), "-10675199.-2:-48:-5.-4775808"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(ContentOf(Owned(ZrTimeSpanToTimeSpanString(row.span))), Widened(row.text));
  }
  std::mt19937_64 random(8);
  for (int round = 0; round < 20000; ++round) {
    const auto span = static_cast<ZRTIMESPAN>(random()) >> random() % 64;
    const auto part = [span](int64_t unit, int64_t most) { return static_cast<int>(span / unit % most); };
    const std::string days =
        part(ZR_TICKS_PER_DAY, INT32_MAX) ? Printed("%4d.", part(ZR_TICKS_PER_DAY, INT32_MAX)) : "";
    const Owned text(ZrTimeSpanToTimeSpanString(span));
    ASSERT_EQ(ContentOf(text),
              Widened(days + Printed("%02d:%02d:%02d.%07d", part(ZR_TICKS_PER_HOUR, 24), part(ZR_TICKS_PER_MINUTE, 60),
                                     part(ZR_TICKS_PER_SECOND, 60), part(1, 10000000))));
    ZRTIMESPAN again = 0;
    ASSERT_EQ(ZrTimeSpanStringToTimeSpan(text, &again), 1);
    if (span >= 0) {
      ASSERT_EQ(again, span);
    }
  }
}

TEST(TimeSpan, ReadsWhatItCan) {
  for (const char* text : {"01:02", "01:2", "01:", "00:00:3", "00:00:03.5", "00:00:03.500", "00:00:03.5000000", "7.:",
                           ".01:00:00", "-1.12:00:00", "99999999999999999999.00:00", "", "5", ":", "12345", "1.5"}) {
    CheckReadingSpan(text);
  }
  EXPECT_EQ(ZrTimeSpanStringToTimeSpan(nullptr, nullptr), 0);
  EXPECT_EQ(ZrTimeSpanStringToTimeSpan(Owned(Units(W("01:02"))), nullptr), 0);
  ZRTIMESPAN span = 42;
  EXPECT_EQ(ZrTimeSpanStringToTimeSpan(nullptr, &span), 0);
  EXPECT_EQ(span, 0);
}
