#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/support/text.h"
#include "tests/support/time_models.h"

static bool operator==(const ZRDATETIMESTRUCT& left, const ZRDATETIMESTRUCT& right) {
  return std::memcmp(&left, &right, sizeof left) == 0;
}

static ZRDATETIME ValueOf(const ZRDATETIMESTRUCT& record) {
  ZRDATETIME value = 0;
  ZrDateTimeFromStruct(&record, &value);
  return value;
}

template <class Field, class Value>
static void Set(Field& field, Value value) {
  field = static_cast<Field>(value);
}

static ZRDATETIMESTRUCT RecordOf(ZRDATETIME value) {
  ZRDATETIMESTRUCT record;
  std::memset(&record, 0xA5, sizeof record);
  ZrDateTimeToStruct(value, &record);
  return record;
}

// The number of a day has 32 bits, and wraps; quotients go towards zero.
TEST(DateTime, FollowsTheCalendarAtAnyValue) {
  std::mt19937_64 random(3);
  std::vector<ZRDATETIME> values = {0, -1, INT64_MAX, INT64_MIN};
  for (int64_t day = -150000; day < 800000; ++day) values.push_back(day * ZR_TICKS_PER_DAY - (day < 0));
  for (int round = 0; round < 100000; ++round) values.push_back(static_cast<ZRDATETIME>(random() >> random() % 40));
  for (ZRDATETIME value : values) {
    const auto days = static_cast<uint32_t>(value / ZR_TICKS_PER_DAY);
    const std::chrono::year_month_day date(kFirstDay + std::chrono::days(days % kDaysOf400Years));
    ZRDATETIMESTRUCT expected = {};
    Set(expected.year, static_cast<int>(date.year()) + int64_t{days / kDaysOf400Years} * 400);
    Set(expected.month, static_cast<unsigned>(date.month()));
    Set(expected.dayOfWeek, (days + 584389) % 7);
    Set(expected.day, static_cast<unsigned>(date.day()));
    Set(expected.hour, value / ZR_TICKS_PER_HOUR % 24);
    Set(expected.minute, value / ZR_TICKS_PER_MINUTE % 60);
    Set(expected.second, value / ZR_TICKS_PER_SECOND % 60);
    Set(expected.millisecond, value / 10000 % 1000);
    Set(expected.microsecond, value / 10 % 1000);
    Set(expected.fraction, value % ZR_TICKS_PER_SECOND);
    ASSERT_EQ(RecordOf(value), expected) << value;
    ASSERT_TRUE(value < 0 || ValueOf(expected) == value) << value;
  }
  ZrDateTimeToStruct(0, nullptr);
}

TEST(DateTime, ReckonsAnyRecord) {
  EXPECT_EQ(ValueOf({1600, 5, 0, 5, 1, 0, 0, 0, 0, 0}), ZR_TICKS_PER_HOUR);
  EXPECT_EQ(ValueOf({2012, 13, 0, 5, -1, 0, 0, 0, 0, 0}), -ZR_TICKS_PER_HOUR);
  EXPECT_EQ(ValueOf({2012, 1, 0, 32, 0, 0, 0, 0, 0, -1}), -1);
  std::mt19937 random(4);
  for (int round = 0; round < 100000; ++round) {
    ZRDATETIMESTRUCT record;
    for (auto& byte : reinterpret_cast<unsigned char(&)[sizeof record]>(record)) byte = static_cast<uint8_t>(random());
    if (round % 2) {  // mostly dates
      Set(record.month, random() % 14);
      Set(record.day, random() % 33);
    }
    ASSERT_EQ(ValueOf(record), ModelValue(record));
  }
  ZrDateTimeFromStruct(nullptr, nullptr);
}

// ---- Text ----------------------------------------------------------------------------------------------------------

template <class... Values>
static std::string Printed(const char* format, Values... values) {
  char text[100];
  return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, format, values...))};
}

TEST(DateTime, WritesAsPrintfDoes) {
  std::mt19937 random(6);
  for (int round = 0; round < 20000; ++round) {
    ZRDATETIMESTRUCT r = {2012, 3, 0, 4, 5, 6, 7, 12, 0, 1234567};
    // Some fields hold anything; near the ends of their places more often than not.
    static const int kEdges[] = {-1, 0, 9, 10, 99, 100, 999, 1000, 9999, 10000, 9999999, 10000000, -1000, -10};
    const auto any = [&] { return random() % 2 ? kEdges[random() % std::size(kEdges)] : static_cast<int>(random()); };
    const auto disturb = [&](auto&... fields) { ((random() % 4 == 0 ? Set(fields, any()) : void()), ...); };
    disturb(r.year, r.month, r.day, r.hour, r.minute, r.second, r.millisecond, r.fraction);
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
  EXPECT_EQ(ContentOf(Owned(ZrTimeSpanToTimeSpanString(-ZR_TICKS_PER_HOUR * 3 / 2))), W("-1:-30:00.0000000"));
  std::mt19937_64 random(8);
  std::vector<ZRTIMESPAN> spans = {0, 1 - ZR_TICKS_PER_DAY, -ZR_TICKS_PER_DAY, INT64_MAX, INT64_MIN};
  for (int64_t days : {1, 9, 10, 99, 100, 999, 1000, 9999, 10000}) spans.push_back(days * ZR_TICKS_PER_DAY);
  while (spans.size() < 20000) spans.push_back(static_cast<ZRTIMESPAN>(random()) >> random() % 64);
  for (ZRTIMESPAN span : spans) {
    const auto days = static_cast<int>(span / ZR_TICKS_PER_DAY);
    const ZRDATETIMESTRUCT record = RecordOf(span);  // whose parts have their signs
    const std::string time = Printed("%02d:%02d:%02d.%07d", record.hour, record.minute, record.second, record.fraction);
    const Owned text(ZrTimeSpanToTimeSpanString(span));
    ASSERT_EQ(ContentOf(text), Widened(days != 0 ? Printed("%4d.", days) + time : time));
    ZRTIMESPAN again = 0;
    ASSERT_EQ(ZrTimeSpanStringToTimeSpan(text, &again), 1);
    ASSERT_TRUE(span < 0 || again == span) << span;
  }
}

// Texts cut at every length, then with any unit anywhere.
TEST(DateTime, ReadsWhatItCan) {
  const std::string kTexts[] = {"2012-03-04 05:06:07.1234567 tail", "04.03.2012 25:66:77.999x", "23:59:59.9999999",
                                "9999999999999999999.01:02:03.500", "-1.12:00:00"};
  static const char kStrange[] = "0123456789 -+.:\t\r?xA/";
  std::mt19937 random(5);
  for (const std::string& text : kTexts) {
    for (int round = 0; round < 6000; ++round) {
      std::string odd = text.substr(0, random() % (text.size() + 1));
      for (unsigned changes = random() % 4; changes > 0 && !odd.empty(); --changes) {
        odd[random() % odd.size()] = kStrange[random() % (sizeof kStrange - 1)];
      }
      SCOPED_TRACE(odd);
      ZRDATETIMESTRUCT record;
      ASSERT_TRUE(ReadsAsModelled(ZrDateTimeStringToDateTimeStruct, ModelReadDateTime, Widened(odd), record));
      ASSERT_TRUE(ReadsAsModelled(ZrTimeStringToDateTimeStruct, ModelReadTime, Widened(odd), record));
      ZRTIMESPAN span = 42, expected = 0;
      ASSERT_EQ(ZrTimeSpanStringToTimeSpan(Owned(Widened(odd)), &span), ModelReadSpan(odd, expected));
      ASSERT_EQ(span, expected);
    }
  }
}

TEST(DateTime, ReadsAtFixedPlaces) {
  const std::pair<const char*, const char*> kRows[] = {
      {"04/03/2012 05:06:07.123", "2012-03-04 05:06:07.1230000"},
      {"04-03-2012", "2012-03-04 00:00:00.0000000"},                  // the first hyphen decides
      {" 2012-03-04", "   3-12-02 00:00:00.0000000"},                 // not trimmed, so day first
      {"2012-03-04 05:06:07.123456", "2012-03-04 05:06:07.0123456"},  // six digits are that many ticks
  };
  ZRDATETIMESTRUCT record;
  for (const auto& [text, written] : kRows) {
    EXPECT_EQ(ZrDateTimeStringToDateTimeStruct(Owned(Widened(text)), &record), 1);
    EXPECT_EQ(ContentOf(Owned(ZrDateTimeStructToDateTimeString(&record, 1))), Widened(written)) << text;
  }
  EXPECT_EQ(record.dayOfWeek, 0) << "a Sunday";
  const Owned text(Units(W("2012-03-04 05:06:07.1234567")));
  for (auto read : {&ZrDateTimeStringToDateTimeStruct, &ZrTimeStringToDateTimeStruct}) {
    record.year = 1;
    EXPECT_TRUE(read(text, nullptr) == 0 && read(nullptr, &record) == 0);
    EXPECT_EQ(record, ZRDATETIMESTRUCT{});
  }
  ZRTIMESPAN span = 42;
  EXPECT_TRUE(ZrTimeSpanStringToTimeSpan(text, nullptr) == 0 && ZrTimeSpanStringToTimeSpan(nullptr, &span) == 0);
  EXPECT_EQ(span, 0);
}
