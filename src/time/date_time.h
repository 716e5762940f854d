// The calendar: conversion between a ZRDATETIME (a number of ticks) and a ZRDATETIMESTRUCT (fields).
//
//     ticks since 1601-01-01  <->  day number, ticks of the day  <->  year, month, day; hour, minute, ... fraction
//
// Callers may pass any fields and any value. Nothing is refused, and results that don't fit wrap. So the arithmetic is
// done in unsigned numbers, where wrapping is defined, or in numbers too small to overflow.

#pragma once

#include <array>
#include <cstdint>

#include "zrcore/datetime.h"

inline constexpr uint32_t kFirstYear = 1601;  // day 0 is its first of January, a Monday

constexpr bool IsLeapYear(uint32_t year) noexcept { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

// In a common year, by month from 1 to 12. Month 0, which callers may pass, adds no days.
inline constexpr std::array<uint16_t, 13> kDaysBeforeMonth = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

// Returns the number of the record's day, counted from 1601-01-01. Three rules that callers rely on:
//
//   - The fields are read as unsigned, so a negative year is a large year.
//   - A year below 1601, a month above 12 or a day above 31 makes the date day 0 instead of an error.
//   - A day isn't checked against its month: 31 February is a day in March. A day of 0 counts as 1.
//
// Each of the y years before this one has 365 days. y / 4 - y / 100 + y / 400 of them are leap years, because 1601 is
// the first year of a 400-year period. kDaysBeforeMonth ignores this year's leap day.
constexpr uint32_t DayNumber(const ZRDATETIMESTRUCT& record) noexcept {
  const uint32_t year = static_cast<uint16_t>(record.year);
  const uint32_t month = static_cast<uint8_t>(record.month);
  const uint32_t day = static_cast<uint8_t>(record.day);
  if (year < kFirstYear || month > 12 || day > 31) return 0;
  const uint32_t y = year - kFirstYear;
  const uint32_t leapDay = month > 2 && IsLeapYear(year) ? 1 : 0;
  return (day != 0 ? day : 1) + 365 * y + y / 4 - y / 100 + y / 400 + kDaysBeforeMonth[month] - 1 + leapDay;
}

// Returns the value of a record. Hours, minutes, seconds and the fraction are signed and carry over into the day. Sums
// and products are taken modulo 2^64.
constexpr ZRDATETIME DateTimeOf(const ZRDATETIMESTRUCT& record) noexcept {
  const int32_t timeOfDay = (record.hour * 60 + record.minute) * 60 + record.second;
  const uint64_t seconds = uint64_t{DayNumber(record)} * 86400 + static_cast<uint64_t>(int64_t{timeOfDay});
  return static_cast<ZRDATETIME>(seconds * ZR_TICKS_PER_SECOND + static_cast<uint64_t>(int64_t{record.fraction}));
}

// Returns the day of the week that a parsed record gets, 0 for Sunday. It is the day of the record's value, which its
// time of day may move to another date. A year that is too large for a value wraps to a negative number of days, and
// the negative remainder is stored as an unsigned byte.
//
// The first return avoids two divisions of 64 bits for the usual record, whose time of day stays within the day.
//
// Day 0 is a Monday: 584389 = 4 * 146097 + 1, and 146097 days are 400 years or 20871 weeks, so the remainder of 584389
// by 7 is 1. Adding just 1 would change the remainder of a negative sum, which callers see.
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

// Returns the date of any day number.
//
// Years begin in March here. The leap day then is the last day of the year, and the month follows from the day of the
// year by a straight line: months of 31, 30, 31, 30 and 31 days repeat, 30.6 on average.
//
//   1. Centuries: quarterDays counts quarters of a day from 1600-03-01, so that an average century has a whole number
//   of
//      them, 146097, and so does an average year of 365.25 days, 1461. `+ 3` and `| 3` take the last quarter of the
//      day, which puts the leap day at the end of each fourth year.
//   2. Years: division by 1461 is multiplication by 2939745 / 2^32. The upper half of the product is the year of the
//      century. The lower half is the rest of the year, in units of 1 / 2939745 quarter of a day.
//   3. Months: (dayOfYear * 2141 + 197913) / 2^16 is the month, with March as 3: 2141 / 2^16 is about 1 / 30.6, and
//      197913 / 2^16 is about 3.02. The lower half is the rest of the month, in units of 1 / 2141 day. January and
//      February come out as 13 and 14 and belong to the next year.
constexpr CDate DateOf(uint32_t days) noexcept {
  const uint64_t quarterDays = (uint64_t{days} + 306) * 4 + 3;  // 1600-03-01 is 306 days before day 0
  const auto century = static_cast<uint32_t>(quarterDays / 146097);
  const uint32_t quarterDaysOfCentury = static_cast<uint32_t>(quarterDays % 146097) | 3;
  const uint64_t scaled = uint64_t{quarterDaysOfCentury} * 2939745;
  const auto yearOfCentury = static_cast<uint32_t>(scaled >> 32);
  const uint32_t dayOfYear = static_cast<uint32_t>(scaled) / 2939745 / 4;
  const uint32_t line = dayOfYear * 2141 + 197913;
  const bool isNextYear = dayOfYear >= 306;  // March to December have 306 days
  return {1600 + century * 100 + yearOfCentury + (isNextYear ? 1 : 0), (line >> 16) - (isNextYear ? 12 : 0),
          (line & 0xFFFF) / 2141 + 1};
}

// Returns the fields of a value. A negative value has no meaningful fields, but the same ones on every system: its
// number of days, rounded towards zero, is read as an unsigned number of 32 bits, and every part of the time is
// negative or zero.
constexpr ZRDATETIMESTRUCT RecordOf(ZRDATETIME value) noexcept {
  const auto days = static_cast<uint32_t>(value / ZR_TICKS_PER_DAY);
  const int64_t rest = value % ZR_TICKS_PER_DAY;
  const auto seconds = static_cast<int32_t>(rest / ZR_TICKS_PER_SECOND);
  const auto fraction = static_cast<int32_t>(rest % ZR_TICKS_PER_SECOND);
  const CDate date = DateOf(days);
  ZRDATETIMESTRUCT record{};
  record.year = static_cast<int16_t>(date.year);
  record.month = static_cast<int8_t>(date.month);
  record.dayOfWeek = static_cast<uint8_t>((days + 584389) % 7);  // as in DayOfWeekOf, but modulo 2^32
  record.day = static_cast<int8_t>(date.day);
  record.hour = static_cast<int8_t>(seconds / 3600);
  record.minute = static_cast<int8_t>(seconds / 60 % 60);
  record.second = static_cast<int8_t>(seconds % 60);
  record.millisecond = static_cast<int16_t>(fraction / 10000);
  record.microsecond = static_cast<int16_t>(fraction % 10000 / 10);
  record.fraction = fraction;
  return record;
}
