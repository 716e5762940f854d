// The calendar: values and records of date and time, and the formatter that conversions share.
//
// All arithmetic on what callers hand in is unsigned or narrow enough, so it wraps where it must and is
// undefined nowhere.

#pragma once

#include <array>
#include <cstdint>

#include "zrcore/datetime.h"

inline constexpr uint32_t kFirstYear = 1601;  // day 0 is its first of January, a Monday

constexpr bool IsLeapYear(uint32_t year) noexcept { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

// For months from 0, which is no month and adds nothing.
inline constexpr std::array<uint16_t, 13> kDaysBeforeMonth = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

// The number of a record's day; 0 for a year, a month or a day that is none. The day is not checked against its month.
constexpr uint32_t DayNumber(const ZRDATETIMESTRUCT& record) noexcept {
  const uint32_t year = static_cast<uint16_t>(record.year);
  const uint32_t month = static_cast<uint8_t>(record.month);
  const uint32_t day = static_cast<uint8_t>(record.day);
  if (year < kFirstYear || month > 12 || day > 31) return 0;
  const uint32_t y = year - kFirstYear;
  const uint32_t leapDay = month > 2 && IsLeapYear(year) ? 1 : 0;
  return (day != 0 ? day : 1) + 365 * y + y / 4 - y / 100 + y / 400 + kDaysBeforeMonth[month] - 1 + leapDay;
}

constexpr ZRDATETIME DateTimeOf(const ZRDATETIMESTRUCT& record) noexcept {
  const int32_t timeOfDay = (record.hour * 60 + record.minute) * 60 + record.second;
  const uint64_t seconds = uint64_t{DayNumber(record)} * 86400 + static_cast<uint64_t>(int64_t{timeOfDay});
  return static_cast<ZRDATETIME>(seconds * ZR_TICKS_PER_SECOND + static_cast<uint64_t>(int64_t{record.fraction}));
}

// The day of the week that a parsed record gets: that of its value, whatever its time of day adds. A year behind the
// largest value wraps to a negative number of days, and then to a negative remainder.
constexpr uint8_t DayOfWeekOf(const ZRDATETIMESTRUCT& record) noexcept {
  const int32_t timeOfDay = (record.hour * 60 + record.minute) * 60 + record.second;
  const bool staysOnItsDay = timeOfDay >= 0 && timeOfDay < 86400 && record.fraction >= 0 &&
                             record.fraction < ZR_TICKS_PER_SECOND && record.year >= 0 && record.year < 30000;
  if (staysOnItsDay) return static_cast<uint8_t>((DayNumber(record) + 584389) % 7);
  return static_cast<uint8_t>((DateTimeOf(record) / ZR_TICKS_PER_DAY + 584389) % 7);
}

struct CDate {
  uint32_t year;
  uint32_t month;
  uint32_t day;
};

// The date of any day number. Years are reckoned from March, where the leap day comes last and the lengths of the
// months follow a straight line: so each step is a multiplication, and its low half is what the next one starts from.
constexpr CDate DateOf(uint32_t days) noexcept {
  const uint64_t quarterDays = (uint64_t{days} + 306) * 4 + 3;  // 1600-03-01 is 306 days before day 0
  const auto century = static_cast<uint32_t>(quarterDays / 146097);
  const uint32_t quarterDaysOfCentury = static_cast<uint32_t>(quarterDays % 146097) | 3;
  const uint64_t scaled = uint64_t{quarterDaysOfCentury} * 2939745;  // 2^32 / 1461, so the year is the high half
  const auto yearOfCentury = static_cast<uint32_t>(scaled >> 32);
  const uint32_t dayOfYear = static_cast<uint32_t>(scaled) / 2939745 / 4;
  const uint32_t line = dayOfYear * 2141 + 197913;  // the month, from March = 3, is the high half
  const bool isNextYear = dayOfYear >= 306;
  return {1600 + century * 100 + yearOfCentury + (isNextYear ? 1 : 0), (line >> 16) - (isNextYear ? 12 : 0),
          (line & 0xFFFF) / 2141 + 1};
}

constexpr ZRDATETIMESTRUCT RecordOf(ZRDATETIME value) noexcept {
  // Quotients go towards zero, so all parts of a negative time are negative or zero.
  const auto days = static_cast<uint32_t>(value / ZR_TICKS_PER_DAY);
  const int64_t rest = value % ZR_TICKS_PER_DAY;
  const auto seconds = static_cast<int32_t>(rest / ZR_TICKS_PER_SECOND);
  const auto fraction = static_cast<int32_t>(rest % ZR_TICKS_PER_SECOND);
  const CDate date = DateOf(days);
  ZRDATETIMESTRUCT record{};
  record.year = static_cast<int16_t>(date.year);
  record.month = static_cast<int8_t>(date.month);
  record.dayOfWeek = static_cast<uint8_t>((days + 584389) % 7);
  record.day = static_cast<int8_t>(date.day);
  record.hour = static_cast<int8_t>(seconds / 3600);
  record.minute = static_cast<int8_t>(seconds / 60 % 60);
  record.second = static_cast<int8_t>(seconds % 60);
  record.millisecond = static_cast<int16_t>(fraction / 10000);
  record.microsecond = static_cast<int16_t>(fraction % 10000 / 10);
  record.fraction = fraction;
  return record;
}
