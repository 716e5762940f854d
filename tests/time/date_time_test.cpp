// Tests dates, times and time spans: calendar, formatting and parsing. The oracles are std::chrono, printf and the
// models of time_models.h.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/support/text.h"
#include "tests/support/time_models.h"

static bool operator==(const ZRDATETIMESTRUCT& left, const ZRDATETIMESTRUCT& right) {
  return std::memcmp(&left, &right, sizeof left) == 0;
}
static std::ostream& operator<<(std::ostream& out, const ZRDATETIMESTRUCT& r) {
  return out << Format("%d-%d-%d (day %d of the week) %d:%d:%d, ms %d, us %d, fraction %d", r.year, r.month, r.day,
                       r.dayOfWeek, r.hour, r.minute, r.second, r.millisecond, r.microsecond, r.fraction);
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
  ZRDATETIMESTRUCT record = {99, 99, 99, 99, 99, 99, 99, 99, 99, 99};
  ZrDateTimeToStruct(value, &record);
  return record;
}

// The day number has 32 bits and wraps. Division truncates towards zero.
TEST(DateTime, BreaksDownAnyValueByTheCalendar) {
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
    if (value >= 0) {
      ASSERT_EQ(ValueOf(expected), value) << expected;
    }
  }
  ZrDateTimeToStruct(0, nullptr);
  ZrDateTimeFromStruct(nullptr, nullptr);
}

TEST(DateTime, FormatsLikePrintfAndComposesAnyRecord) {
  std::mt19937 random(6);
  for (int round = 0; round < 20000; ++round) {
    ZRDATETIMESTRUCT r = {2012, 3, 0, 4, 5, 6, 7, 12, 0, 1234567};
    // Some fields get random values, half of them near the limits of their digits.
    static const int kEdges[] = {-1, 0, 9, 10, 99, 100, 999, 1000, 9999, 10000, 9999999, 10000000, -1000, -10};
    const auto any = [&] { return random() % 2 ? kEdges[random() % std::size(kEdges)] : static_cast<int>(random()); };
    const auto disturb = [&](auto&... fields) { ((random() % 4 == 0 ? Set(fields, any()) : void()), ...); };
    disturb(r.year, r.month, r.day, r.hour, r.minute, r.second, r.millisecond, r.fraction);
    ASSERT_EQ(ValueOf(r), ModelValue(r)) << r;
    const std::string date = Format("%4d-%02d-%02d", r.year, r.month, r.day);
    const std::string time = Format("%02d:%02d:%02d", r.hour, r.minute, r.second);
    const std::string ticks = Format(".%07d", r.fraction), milliseconds = Format(".%03d", r.millisecond);
    ASSERT_EQ(ContentOf(Owned(ZrDateTimeStructToDateString(&r))), Widened(date));
    ASSERT_EQ(ContentOf(Owned(ZrDateTimeStructToTimeString(&r))), Widened(time + ticks));
    ASSERT_EQ(ContentOf(Owned(ZrDateTimeStructToDateTimeString(&r, 1))), Widened(date + ' ' + time + ticks));
    ASSERT_EQ(ContentOf(Owned(ZrDateTimeStructToDateTimeString(&r, 0))), Widened(date + ' ' + time + milliseconds));
  }
  EXPECT_EQ(ZrDateTimeStructToDateString(nullptr), nullptr);
  EXPECT_EQ(ZrDateTimeStructToDateTimeString(nullptr, 1), nullptr);
  EXPECT_EQ(ZrDateTimeStructToTimeString(nullptr), nullptr);
}

// Each part has the sign of the span.
static std::string FormattedSpan(ZRTIMESPAN span) {
  const ZRDATETIMESTRUCT parts = RecordOf(span);
  const auto days = static_cast<int>(span / ZR_TICKS_PER_DAY);
  return (days != 0 ? Format("%4d.", days) : "") +
         Format("%02d:%02d:%02d.%07d", parts.hour, parts.minute, parts.second, parts.fraction);
}

// Parses a text into `result` and expects the same from the model.
template <class Record>
static void CheckParser(uint8_t (*parse)(ZRSTR, Record*), bool (*model)(const std::string&, Record&),
                        const std::string& text, Record& result) {
  if (ReadsAsModelled(parse, model, Widened(text), result)) return;
  Record expected;
  const bool isRead = model(text, expected);
  FAIL() << testing::PrintToString(text) << "\n  parsed as " << result << "\n  expected  " << expected
         << (isRead ? "" : ", and 0 returned");
}

// Texts are truncated to a random length, and some of their characters are replaced.
TEST(DateTime, ParsesPartialTextsAndFormatsSpans) {
  const std::string kTexts[] = {"2012-03-04 05:06:07.1234567 tail",
                                "04-03-2012 25:66:77.999x",
                                "23:59:59.9999999",
                                "9999999999999999999.01:02:03.500",
                                "-1.12:00:00",
                                "10000.00:00:00"};
  static const char kStrange[] = "0123456789 -+.:\t\r?xA/";
  std::mt19937 random(5);
  ZRDATETIMESTRUCT record;
  ZRTIMESPAN span;
  for (std::size_t round = 0; round < 30000; ++round) {
    std::string odd = kTexts[round % std::size(kTexts)];
    odd.resize(random() % (odd.size() + 1));
    for (unsigned changes = random() % 4; changes > 0 && !odd.empty(); --changes) {
      odd[random() % odd.size()] = kStrange[random() % (sizeof kStrange - 1)];
    }
    ASSERT_NO_FATAL_FAILURE(CheckParser(ZrDateTimeStringToDateTimeStruct, ModelReadDateTime, odd, record));
    ASSERT_NO_FATAL_FAILURE(CheckParser(ZrTimeStringToDateTimeStruct, ModelReadTime, odd, record));
    ASSERT_NO_FATAL_FAILURE(CheckParser(ZrTimeSpanStringToTimeSpan, ModelReadSpan, odd, span));
    ASSERT_EQ(ContentOf(Owned(ZrTimeSpanToTimeSpanString(span))), Widened(FormattedSpan(span))) << odd;
  }
  const Owned text(Units(W("2012-03-04 05:06:07.1234567")));
  for (auto read : {&ZrDateTimeStringToDateTimeStruct, &ZrTimeStringToDateTimeStruct}) {
    EXPECT_EQ(read(text, &record), 1);
    EXPECT_EQ(read(text, nullptr), 0);
    EXPECT_EQ(read(nullptr, &record), 0);
    EXPECT_EQ(record.minute, 0) << "a null text must clear the record";
  }
  EXPECT_EQ(ZrTimeSpanStringToTimeSpan(text, &span), 1);
  EXPECT_EQ(ZrTimeSpanStringToTimeSpan(text, nullptr), 0);
  EXPECT_EQ(ZrTimeSpanStringToTimeSpan(nullptr, &span), 0);
  EXPECT_EQ(span, 0) << "a null text must clear the span";
}
