// Slow and obvious models of parsing dates, times and time spans, made of the standard library. Tests and fuzz targets
// compare the library with them.

#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/support/units.h"
#include "zrcore/zrcore.h"

inline constexpr int kDaysOf400Years = 146097;
inline constexpr std::chrono::sys_days kFirstDay{std::chrono::year{1601} / 1 / 1};

// The standard calendar ends with the year 32767, so the year is replaced by the equivalent one of the first 400 years.
inline ZRDATETIME ModelValue(const ZRDATETIMESTRUCT& record) {
  const int year = static_cast<uint16_t>(record.year), month = static_cast<uint8_t>(record.month);
  const int day = static_cast<uint8_t>(record.day);
  int64_t sum = 0;
  if (year >= 1601 && month <= 12 && day <= 31) {
    const std::chrono::year equivalent{1601 + (year - 1601) % 400};
    const std::chrono::sys_days date(equivalent / std::max(month, 1) / std::max(day, 1));
    sum = (date - kFirstDay).count() + (year - 1601) / 400 * kDaysOf400Years;
  }
  sum = ((sum * 24 + record.hour) * 60 + record.minute) * 60 + record.second;
  return static_cast<ZRDATETIME>(static_cast<uint64_t>(sum) * 10000000 +
                                 static_cast<uint64_t>(int64_t{record.fraction}));
}

// Parses the number in up to `width` bytes at `at`. Every caller's field can hold it.
template <class Field>
inline void ModelField(Field& field, const std::string& text, std::size_t at, std::size_t width) {
  field = static_cast<Field>(at < text.size() ? std::strtoll(text.substr(at, width).c_str(), nullptr, 10) : 0);
}

// Parses a time of day. A text shorter than `secondFrom` has no seconds; date and time and time alone differ in this
// length.
inline void ModelReadClock(const std::string& text, std::size_t secondFrom, ZRDATETIMESTRUCT& record) {
  const std::size_t length = text.size();
  ModelField(record.hour, text, 0, 2);
  if (length >= 4) ModelField(record.minute, text, 3, 2);
  if (length >= secondFrom) ModelField(record.second, text, 6, 2);
  if (length >= 11) ModelField(record.millisecond, text, 9, 3);
  record.fraction = record.millisecond * 10000;
  if (length >= 15) ModelField(record.fraction, text, 9, 7);
  record.dayOfWeek = static_cast<uint8_t>((ModelValue(record) / 864000000000 + 584389) % 7);
}

inline bool ModelReadDateTime(const std::string& text, ZRDATETIMESTRUCT& record) {
  record = ZRDATETIMESTRUCT{};
  if (text.size() < 10) return false;
  const bool isYearFirst = text.find('-') == 4;
  ModelField(record.year, text, isYearFirst ? 0 : 6, 4);
  ModelField(record.month, text, isYearFirst ? 5 : 3, 2);
  ModelField(record.day, text, isYearFirst ? 8 : 0, 2);
  ModelReadClock(text.size() > 11 ? text.substr(11) : "", 7, record);
  return true;
}

inline bool ModelReadTime(const std::string& text, ZRDATETIMESTRUCT& record) {
  record = ZRDATETIMESTRUCT{};
  if (text.size() >= 2) ModelReadClock(text, 8, record);
  return text.size() >= 2;
}

inline bool ModelReadSpan(const std::string& text, ZRTIMESPAN& span) {
  span = 0;
  const std::size_t colon = text.find(':'), dot = text.find('.');
  if (text.size() < 2 || colon == std::string::npos) return false;
  uint64_t days = 0;
  if (dot < colon) ModelField(days, text, 0, dot);
  ZRDATETIMESTRUCT clock{};
  ModelReadClock(dot < colon ? text.substr(dot + 1) : text, 8, clock);
  span = static_cast<ZRTIMESPAN>(days * 864000000000 + static_cast<uint64_t>(ModelValue(clock)));
  return true;
}

// Whether the library parses a text as its model does: a date and time, a time, or a span. Stores what the library
// parsed in `result`.
template <class Result>
bool ReadsAsModelled(uint8_t (*read)(ZRSTR, Result*), bool (*model)(const std::string&, Result&), const Units& units,
                     Result& result) {
  Result expected;
  std::memset(&result, 0xA5, sizeof result);
  const uint8_t isRead = read(Owned(units), &result);  // exactly 1 or 0
  return isRead == model(Narrowed(units), expected) && std::memcmp(&result, &expected, sizeof result) == 0;
}
