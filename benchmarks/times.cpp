// Date-times and time spans: fields, values and text. Most peers count from 1970 in coarser ticks and write 8-bit text;
// several write at most six digits of a second.

#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

#include "row.h"
#include "zrcore/datetime.h"
#include "zrcore/timespan.h"

#if BENCH_BOOST
#include <boost/date_time/posix_time/posix_time.hpp>
#endif
#if BENCH_QT
#include <QDateTime>
#include <QString>
#include <QTime>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif
#if BENCH_FMT
#include <fmt/compile.h>
#endif
#if BENCH_ABSL
#include <absl/time/time.h>
#endif

static constexpr char kText[] = "2012-03-04 05:06:07.1234567";
static constexpr char kSpanText[] = "   1.02:03:04.0000005";
static constexpr ZRTIMESPAN kSpan = ((26 * 60 + 3) * 60 + 4) * ZR_TICKS_PER_SECOND + 5;
static constexpr int64_t kSecondsTo1970 = 11644473600;

static std::u16string Widened(const char* text) { return {text, text + std::strlen(text)}; }

static std::shared_ptr<WCHAR> Counted(const char* text) {
  return {ZrCreateString(Widened(text).c_str()), ZrDestroyString};
}

static ZRDATETIMESTRUCT Record() {
  ZRDATETIMESTRUCT record;
  Require(ZrDateTimeStringToDateTimeStruct(Counted(kText).get(), &record) == 1, "a date and time is read");
  return record;
}

static ZRDATETIME Value() {
  const ZRDATETIMESTRUCT record = Record();
  ZRDATETIME value = 0;
  ZrDateTimeFromStruct(&record, &value);
  return value;
}

static int64_t SecondsFrom1970() { return Value() / ZR_TICKS_PER_SECOND - kSecondsTo1970; }

// ---- Lower bounds ---------------------------------------------------------------------------------------------------

static ZRDATETIMESTRUCT LowerBoundFields(ZRDATETIME value) {
  const auto days = static_cast<uint32_t>(value / ZR_TICKS_PER_DAY);
  const auto seconds = static_cast<uint32_t>(value % ZR_TICKS_PER_DAY / ZR_TICKS_PER_SECOND);
  const uint32_t n1 = 4 * (days + 306) + 3, century = n1 / 146097, n2 = n1 % 146097 | 3;
  const uint64_t p2 = uint64_t{2939745} * n2;
  const uint32_t dayOfYear = static_cast<uint32_t>(p2) / 2939745 / 4, n3 = 2141 * dayOfYear + 197913;
  const bool next = dayOfYear >= 306;
  ZRDATETIMESTRUCT record{};
  record.year = static_cast<int16_t>(1600 + 100 * century + static_cast<uint32_t>(p2 >> 32) + next);
  record.month = static_cast<int8_t>((n3 >> 16) - (next ? 12 : 0));
  record.day = static_cast<int8_t>((n3 & 0xFFFF) / 2141 + 1);
  record.hour = static_cast<int8_t>(seconds / 3600);
  record.minute = static_cast<int8_t>(seconds / 60 % 60);
  record.second = static_cast<int8_t>(seconds % 60);
  record.fraction = static_cast<int32_t>(value % ZR_TICKS_PER_SECOND);
  return record;
}

static ZRDATETIME LowerBoundValue(const ZRDATETIMESTRUCT& r) {
  static constexpr int kBefore[] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  const int y = r.year - 1601;
  const bool isLeap = r.year % 4 == 0 && (r.year % 100 != 0 || r.year % 400 == 0);
  const int64_t days = 365 * y + y / 4 - y / 100 + y / 400 + kBefore[r.month] + r.day - 1 + (isLeap && r.month > 2);
  return (((days * 24 + r.hour) * 60 + r.minute) * 60 + r.second) * ZR_TICKS_PER_SECOND + r.fraction;
}

static void LowerBoundPair(WCHAR* at, int value) {
  static const std::array<std::array<WCHAR, 2>, 100> kPairs = [] {
    std::array<std::array<WCHAR, 2>, 100> pairs{};
    for (std::size_t i = 0; i < 100; ++i)
      pairs[i] = {static_cast<WCHAR>('0' + i / 10), static_cast<WCHAR>('0' + i % 10)};
    return pairs;
  }();
  std::memcpy(at, kPairs[static_cast<std::size_t>(value)].data(), 4);
}

static void LowerBoundTime(WCHAR* at, int hour, int minute, int second, int ticks) {
  LowerBoundPair(at, hour);
  LowerBoundPair(at + 3, minute);
  LowerBoundPair(at + 6, second);
  at[2] = at[5] = ':';
  at[8] = '.';
  at[9] = static_cast<WCHAR>('0' + ticks / 1000000);
  LowerBoundPair(at + 10, ticks / 10000 % 100);
  LowerBoundPair(at + 12, ticks / 100 % 100);
  LowerBoundPair(at + 14, ticks % 100);
  at[16] = 0;
}

static void LowerBoundText(WCHAR* at, const ZRDATETIMESTRUCT& r) {
  LowerBoundPair(at, r.year / 100);
  LowerBoundPair(at + 2, r.year % 100);
  LowerBoundPair(at + 5, r.month);
  LowerBoundPair(at + 8, r.day);
  at[4] = at[7] = '-';
  at[10] = ' ';
  LowerBoundTime(at + 11, r.hour, r.minute, r.second, r.fraction);
}

template <int width>
static int LowerBoundNumber(const WCHAR* at, bool* isPlain) {
  int value = 0;
  for (int place = 0; place < width; ++place) {
    const int digit = at[place] - '0';
    *isPlain = *isPlain && digit >= 0 && digit <= 9;
    value = value * 10 + digit;
  }
  return value;
}

static bool LowerBoundRead(const WCHAR* at, ZRDATETIMESTRUCT* record) {
  bool isPlain = true;
  *record = {};
  record->year = static_cast<int16_t>(LowerBoundNumber<4>(at, &isPlain));
  record->month = static_cast<int8_t>(LowerBoundNumber<2>(at + 5, &isPlain));
  record->day = static_cast<int8_t>(LowerBoundNumber<2>(at + 8, &isPlain));
  record->hour = static_cast<int8_t>(LowerBoundNumber<2>(at + 11, &isPlain));
  record->minute = static_cast<int8_t>(LowerBoundNumber<2>(at + 14, &isPlain));
  record->second = static_cast<int8_t>(LowerBoundNumber<2>(at + 17, &isPlain));
  record->fraction = LowerBoundNumber<7>(at + 20, &isPlain);
  return isPlain;
}

static void RequireCorrectLowerBounds() {
  const ZRDATETIMESTRUCT record = Record();
  ZRDATETIMESTRUCT fields = LowerBoundFields(Value()), read;
  fields.dayOfWeek = record.dayOfWeek;
  fields.millisecond = record.millisecond;
  Require(std::memcmp(&fields, &record, sizeof record) == 0, "the lower bound finds the same fields");
  Require(LowerBoundValue(record) == Value(), "the lower bound finds the same value");
  std::array<WCHAR, 28> text;
  LowerBoundText(text.data(), record);
  Require(std::u16string(text.data()) == Widened(kText), "the lower bound writes the same text");
  Require(LowerBoundRead(text.data(), &read) && LowerBoundValue(read) == Value(),
          "the lower bound reads the same value");
}

// ---- Fields ---------------------------------------------------------------------------------------------------------

using Ticks = std::chrono::duration<int64_t, std::ratio<1, 10000000>>;

static void ToFieldsRows() {
  const std::string operation = "date-time to fields";
  [[maybe_unused]] const int64_t seconds = SecondsFrom1970();

  Row(operation, "ZrCore", [value = Value()] {
    ZRDATETIME opaque = value;
    benchmark::DoNotOptimize(opaque);
    ZRDATETIMESTRUCT record;
    ZrDateTimeToStruct(opaque, &record);
    Consume(record);
  });
  Row(operation, "std::chrono", [ticks = Ticks(Value() - kSecondsTo1970 * ZR_TICKS_PER_SECOND)] {
    auto opaque = ticks;
    benchmark::DoNotOptimize(opaque);
    const auto days = std::chrono::floor<std::chrono::days>(opaque);
    const std::chrono::year_month_day date{std::chrono::sys_days(days)};
    const std::chrono::hh_mm_ss time(opaque - days);
    Consume(date);
    Consume(time);
  });
  Row(operation, "gmtime_r", [seconds] {
    std::tm fields;
    Consume(gmtime_r(&seconds, &fields));
    Consume(fields);
  });
#if BENCH_QT
  Row(operation, "QDateTime", [moment = QDateTime::fromMSecsSinceEpoch(seconds * 1000 + 123, Qt::UTC)] {
    int year, month, day;
    moment.date().getDate(&year, &month, &day);
    const QTime time = moment.time();
    Consume(year + month + day + time.hour() + time.minute() + time.second() + time.msec());
  });
#endif
#if BENCH_GLIB
  Row(operation, "g_date_time", [seconds] {
    GDateTime* moment = g_date_time_new_from_unix_utc(seconds);
    int year, month, day;
    g_date_time_get_ymd(moment, &year, &month, &day);
    Consume(year + month + day + g_date_time_get_hour(moment) + g_date_time_get_minute(moment) +
            g_date_time_get_second(moment));
    g_date_time_unref(moment);
  });
#endif
#if BENCH_BOOST
  Row(operation, "boost::posix_time", [moment = boost::posix_time::from_time_t(seconds)] {
    const auto date = moment.date().year_month_day();
    const auto time = moment.time_of_day();
    Consume(date);
    Consume(time.hours() + time.minutes() + time.seconds());
  });
#endif
#if BENCH_ABSL
  Row(operation, "absl::Time",
      [moment = absl::FromUnixSeconds(seconds)] { Consume(absl::ToCivilSecond(moment, absl::UTCTimeZone())); });
#endif
  Row(operation, "lower bound", [value = Value()] {
    ZRDATETIME opaque = value;
    benchmark::DoNotOptimize(opaque);
    Consume(LowerBoundFields(opaque));
  });
}

static void FromFieldsRows() {
  const std::string operation = "date-time from fields";

  Row(operation, "ZrCore", [record = Record()] {
    ZRDATETIME value;
    ZrDateTimeFromStruct(&record, &value);
    Consume(value);
  });
  Row(operation, "std::chrono", [record = Record()] {
    auto opaque = record;
    benchmark::DoNotOptimize(opaque);
    using namespace std::chrono;
    const auto date = year_month_day(year(opaque.year), month(static_cast<unsigned>(opaque.month)),
                                     day(static_cast<unsigned>(opaque.day)));
    Consume(sys_days(date) + hours(opaque.hour) + minutes(opaque.minute) + std::chrono::seconds(opaque.second) +
            Ticks(opaque.fraction));
  });
  std::tm fields{};
  const int64_t seconds = SecondsFrom1970();
  gmtime_r(&seconds, &fields);
  Row(operation, "timegm", [fields] {
    std::tm copy = fields;
    Consume(timegm(&copy));
  });
#if BENCH_QT
  Row(operation, "QDateTime", [] { Consume(QDateTime(QDate(2012, 3, 4), QTime(5, 6, 7, 123), Qt::UTC)); });
#endif
#if BENCH_GLIB
  Row(operation, "g_date_time", [] {
    GDateTime* moment = g_date_time_new_utc(2012, 3, 4, 5, 6, 7.1234567);
    Consume(moment);
    g_date_time_unref(moment);
  });
#endif
#if BENCH_BOOST
  Row(operation, "boost::posix_time", [record = Record()] {
    auto opaque = record;
    benchmark::DoNotOptimize(opaque);
    const boost::gregorian::date date(static_cast<unsigned short>(opaque.year),
                                      static_cast<unsigned short>(opaque.month),
                                      static_cast<unsigned short>(opaque.day));
    Consume(
        boost::posix_time::ptime(date, boost::posix_time::time_duration(opaque.hour, opaque.minute, opaque.second)));
  });
#endif
#if BENCH_ABSL
  Row(operation, "absl::Time",
      [] { Consume(absl::FromCivil(absl::CivilSecond(2012, 3, 4, 5, 6, 7), absl::UTCTimeZone())); });
#endif
  Row(operation, "lower bound", [record = Record()] {
    auto opaque = record;
    benchmark::DoNotOptimize(opaque);
    Consume(LowerBoundValue(opaque));
  });
}

// ---- Text -----------------------------------------------------------------------------------------------------------

static void ToTextRows() {
  const std::string operation = "date-time to text+destroy";
  [[maybe_unused]] const int64_t seconds = SecondsFrom1970();

  Row(operation, "ZrCore", [record = Record()] {
    ZRSTR text = ZrDateTimeStructToDateTimeString(&record, 1);
    Consume(text);
    ZrDestroyString(text);
  });
#if BENCH_FMT
  Row(operation, "fmt compiled (char, no heap)", [r = Record()] {
    char text[32];
    Consume(fmt::format_to(text, FMT_COMPILE("{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:07}"), int{r.year}, int{r.month},
                           int{r.day}, int{r.hour}, int{r.minute}, int{r.second}, r.fraction));
    Consume(text);
  });
#endif
  Row(operation, "snprintf (char, no heap)", [r = Record()] {
    char text[32];
    Consume(std::snprintf(text, sizeof text, "%4d-%02d-%02d %02d:%02d:%02d.%07d", r.year, r.month, r.day, r.hour,
                          r.minute, r.second, r.fraction));
    Consume(text);
  });
#if BENCH_ABSL
  Row(operation, "absl::FormatTime", [moment = absl::FromUnixSeconds(seconds)] {
    Consume(absl::FormatTime("%Y-%m-%d %H:%M:%E7S", moment, absl::UTCTimeZone()));
  });
#endif
#if BENCH_GLIB
  const std::shared_ptr<GDateTime> moment(g_date_time_new_from_unix_utc(seconds), g_date_time_unref);
  Row(operation, "g_date_time (6 digits)", [moment] {
    char* text = g_date_time_format(moment.get(), "%Y-%m-%d %H:%M:%S.%f");
    Consume(text);
    g_free(text);
  });
#endif
#if BENCH_QT
  Row(operation, "QDateTime (3 digits)", [moment = QDateTime::fromMSecsSinceEpoch(seconds * 1000 + 123, Qt::UTC)] {
    Consume(moment.toString(Qt::ISODateWithMs));
  });
#endif
#if BENCH_BOOST
  Row(operation, "boost::posix_time (6 digits)", [moment = boost::posix_time::from_time_t(seconds)] {
    Consume(boost::posix_time::to_iso_extended_string(moment));
  });
#endif
  Row(operation, "lower bound", [record = Record()] {
    std::array<WCHAR, 28> text;
    LowerBoundText(text.data(), record);
    Consume(text);
  });
  Row(operation, "lower bound by contract", [record = Record()] {
    char* block = static_cast<char*>(std::malloc(8 + 28 * sizeof(WCHAR)));
    LowerBoundText(reinterpret_cast<WCHAR*>(block + 8), record);
    Consume(block);
    std::free(block);
  });
}

static void FromTextRows() {
  const std::string operation = "date-time from text";
  const std::string text = kText;

  Row(operation, "ZrCore", [string = Counted(kText)] {
    ZRDATETIMESTRUCT record;
    Consume(ZrDateTimeStringToDateTimeStruct(string.get(), &record));
    Consume(record);
  });
#if BENCH_GLIB
  Row(operation, "g_date_time", [text] {
    static GTimeZone* const universal = g_time_zone_new_utc();
    GDateTime* moment = g_date_time_new_from_iso8601(text.c_str(), universal);
    Consume(moment);
    g_date_time_unref(moment);
  });
#endif
  Row(operation, "strptime (no fraction)", [text] {
    std::tm fields{};
    Consume(strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &fields));
    Consume(fields);
  });
  Row(operation, "sscanf (char)", [text] {
    int fields[7];
    Consume(std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d.%d", fields, fields + 1, fields + 2, fields + 3, fields + 4,
                        fields + 5, fields + 6));
    Consume(fields);
  });
#if BENCH_ABSL
  Row(operation, "absl::Time (char)", [text] {
    absl::Time moment;
    std::string error;
    Consume(absl::ParseTime("%Y-%m-%d %H:%M:%E*S", text, &moment, &error));
    Consume(moment);
  });
#endif
#if BENCH_QT
  Row(operation, "QDateTime (3 digits)", [string = QString::fromLatin1("2012-03-04T05:06:07.123")] {
    Consume(QDateTime::fromString(string, Qt::ISODateWithMs));
  });
#endif
#if BENCH_BOOST
  Row(operation, "boost::posix_time (char)", [text] { Consume(boost::posix_time::time_from_string(text)); });
#endif
  Row(operation, "lower bound", [string = Widened(kText)] {
    ZRDATETIMESTRUCT record;
    Consume(LowerBoundRead(string.c_str(), &record));
    Consume(record);
  });
}

static void SpanRows() {
  std::string operation = "time span to text+destroy";
  Row(operation, "ZrCore", [span = kSpan] {
    ZRTIMESPAN opaque = span;
    benchmark::DoNotOptimize(opaque);
    ZRSTR text = ZrTimeSpanToTimeSpanString(opaque);
    Consume(text);
    ZrDestroyString(text);
  });
#if BENCH_FMT
  Row(operation, "fmt compiled (char, no heap)", [span = kSpan] {
    ZRTIMESPAN s = span;
    benchmark::DoNotOptimize(s);
    char text[32];
    Consume(fmt::format_to(text, FMT_COMPILE("{:4}.{:02}:{:02}:{:02}.{:07}"), s / ZR_TICKS_PER_DAY,
                           s / ZR_TICKS_PER_HOUR % 24, s / ZR_TICKS_PER_MINUTE % 60, s / ZR_TICKS_PER_SECOND % 60,
                           s % ZR_TICKS_PER_SECOND));
    Consume(text);
  });
#endif
  Row(operation, "snprintf (char, no heap)", [span = kSpan] {
    int days = static_cast<int>(span / ZR_TICKS_PER_DAY);
    benchmark::DoNotOptimize(days);
    char text[32];
    Consume(std::snprintf(text, sizeof text, "%4d.%02d:%02d:%02d.%07d", days, 2, 3, 4, 5));
    Consume(text);
  });
#if BENCH_ABSL
  Row(operation, "absl::Duration (26h3m4.0000005s)",
      [duration = absl::Nanoseconds(kSpan * 100)] { Consume(absl::FormatDuration(duration)); });
#endif
#if BENCH_BOOST
  Row(operation, "boost::time_duration", [duration = boost::posix_time::time_duration(26, 3, 4, 5)] {
    Consume(boost::posix_time::to_simple_string(duration));
  });
#endif
  Row(operation, "lower bound by contract", [span = kSpan] {
    ZRTIMESPAN s = span;
    benchmark::DoNotOptimize(s);
    char* block = static_cast<char*>(std::malloc(8 + 22 * sizeof(WCHAR)));
    auto* at = reinterpret_cast<WCHAR*>(block + 8);
    at[0] = at[1] = at[2] = ' ';
    at[3] = static_cast<WCHAR>('0' + s / ZR_TICKS_PER_DAY);
    at[4] = '.';
    const int seconds = static_cast<int>(s % ZR_TICKS_PER_DAY / ZR_TICKS_PER_SECOND);
    LowerBoundTime(at + 5, seconds / 3600, seconds / 60 % 60, seconds % 60, static_cast<int>(s % ZR_TICKS_PER_SECOND));
    Consume(block);
    std::free(block);
  });

  operation = "time span from text";
  Row(operation, "ZrCore", [string = Counted(kSpanText)] {
    ZRTIMESPAN span;
    Consume(ZrTimeSpanStringToTimeSpan(string.get(), &span));
    Consume(span);
  });
#if BENCH_ABSL
  Row(operation, "absl::Duration", [text = std::string("26h3m4.0000005s")] {
    absl::Duration duration;
    Consume(absl::ParseDuration(text, &duration));
    Consume(duration);
  });
#endif
#if BENCH_QT
  Row(operation, "QTime (no days, 3 digits)",
      [string = QString::fromLatin1("02:03:04.000")] { Consume(QTime::fromString(string, Qt::ISODateWithMs)); });
#endif
  Row(operation, "sscanf (char)", [text = std::string(kSpanText)] {
    int parts[5];
    Consume(std::sscanf(text.c_str(), "%d.%d:%d:%d.%d", parts, parts + 1, parts + 2, parts + 3, parts + 4));
    Consume(parts);
  });
#if BENCH_BOOST
  Row(operation, "boost::time_duration",
      [text = std::string("26:03:04.000000")] { Consume(boost::posix_time::duration_from_string(text)); });
#endif
  Row(operation, "lower bound", [string = Widened(kSpanText)] {
    bool isPlain = true;
    const WCHAR* at = string.c_str();
    const int64_t days = LowerBoundNumber<1>(at + 3, &isPlain);
    const int hours = LowerBoundNumber<2>(at + 5, &isPlain), minutes = LowerBoundNumber<2>(at + 8, &isPlain),
              seconds = LowerBoundNumber<2>(at + 11, &isPlain), ticks = LowerBoundNumber<7>(at + 14, &isPlain);
    Consume(isPlain);
    Consume((((days * 24 + hours) * 60 + minutes) * 60 + seconds) * ZR_TICKS_PER_SECOND + ticks);
  });
}

void TimeRows() {
  RequireCorrectLowerBounds();
  ToFieldsRows();
  FromFieldsRows();
  ToTextRows();
  FromTextRows();
  SpanRows();
}
