// Slow, obvious readings of the texts of date and time, over bytes and the C library. Tests and fuzz targets hold the
// library's against them.

#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zrcore/zrcore.h"

// A character that stands for any unit that means nothing to a reader of numbers.
inline char ModelByte(WCHAR unit) { return unit > 0 && unit < 0x80 ? static_cast<char>(unit) : '?'; }

inline int64_t ModelNumber(const std::string& text, std::size_t at, std::size_t width, int64_t least, int64_t most) {
  const long long value = at <= text.size() ? std::strtoll(text.substr(at, width).c_str(), nullptr, 10) : 0;
  return std::clamp<int64_t>(value, least, most);
}

inline int8_t ModelByteAt(const std::string& text, std::size_t at) {
  return static_cast<int8_t>(ModelNumber(text, at, 2, INT8_MIN, INT8_MAX));
}

// A remainder of 64 bits either way, so in 128 nothing wraps before the end.
inline ZRDATETIME ModelValue(const ZRDATETIMESTRUCT& record) {
  static const int kBefore[] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  const int year = static_cast<uint16_t>(record.year), month = static_cast<uint8_t>(record.month);
  const int day = static_cast<uint8_t>(record.day), y = year - 1601;
  __extension__ typedef __int128 Wide;
  Wide days = 0;
  if (year >= 1601 && month <= 12 && day <= 31) {
    days = (day == 0 ? 1 : day) + 365 * y + y / 4 - y / 100 + y / 400 + kBefore[month] - 1;
    if (((year % 4 == 0 && year % 100 != 0) || year % 400 == 0) && month > 2) ++days;
  }
  const Wide ticks =
      (((days * 24 + record.hour) * 60 + record.minute) * 60 + record.second) * 10000000 + record.fraction;
  return static_cast<ZRDATETIME>(static_cast<uint64_t>(ticks));
}

inline void ModelSubSecond(const std::string& text, std::size_t at, std::size_t fromLength, ZRDATETIMESTRUCT& record) {
  if (text.size() >= fromLength) {
    record.millisecond = static_cast<int16_t>(ModelNumber(text, at, 3, INT16_MIN, INT16_MAX));
  }
  record.fraction = text.size() >= fromLength + 4 ? static_cast<int32_t>(ModelNumber(text, at, 7, INT32_MIN, INT32_MAX))
                                                  : record.millisecond * 10000;
  record.dayOfWeek = static_cast<uint8_t>((ModelValue(record) / 864000000000 + 584389) % 7);
}

inline bool ModelReadDateTime(const std::string& text, ZRDATETIMESTRUCT& record) {
  record = ZRDATETIMESTRUCT{};
  const std::size_t length = text.size();
  if (length < 10) return false;
  const bool isYearFirst = text.find('-') == 4;
  record.year = static_cast<int16_t>(ModelNumber(text, isYearFirst ? 0 : 6, 4, INT16_MIN, INT16_MAX));
  record.month = ModelByteAt(text, isYearFirst ? 5 : 3);
  record.day = ModelByteAt(text, isYearFirst ? 8 : 0);
  if (length >= 12) record.hour = ModelByteAt(text, 11);
  if (length >= 15) record.minute = ModelByteAt(text, 14);
  if (length >= 18) record.second = ModelByteAt(text, 17);
  ModelSubSecond(text, 20, 22, record);
  return true;
}

inline bool ModelReadTime(const std::string& text, ZRDATETIMESTRUCT& record) {
  record = ZRDATETIMESTRUCT{};
  const std::size_t length = text.size();
  if (length < 2) return false;
  record.hour = ModelByteAt(text, 0);
  if (length >= 4) record.minute = ModelByteAt(text, 3);
  if (length >= 8) record.second = ModelByteAt(text, 6);
  ModelSubSecond(text, 9, 11, record);
  return true;
}

inline bool ModelReadSpan(const std::string& text, ZRTIMESPAN& span) {
  span = 0;
  const std::size_t colon = text.find(':');
  if (text.size() < 2 || colon == std::string::npos) return false;
  const std::size_t dot = text.find('.');
  const bool hasDays = dot < colon;
  const std::size_t p = hasDays ? dot + 1 : 0, left = text.size() - p;
  const auto number = [&](std::size_t at, std::size_t width) {
    return ModelNumber(text, at, width, INT64_MIN, INT64_MAX);
  };
  __extension__ typedef __int128 Wide;
  Wide sum = hasDays ? number(0, dot) : 0;
  sum = sum * 24 + number(p, 2);
  sum = sum * 60 + (left >= 4 ? number(p + 3, 2) : 0);
  sum = sum * 60 + (left >= 8 ? number(p + 6, 2) : 0);
  sum = sum * 10000000 + (left >= 15 ? number(p + 9, 7) : left >= 11 ? number(p + 9, 3) * 10000 : 0);
  span = static_cast<ZRTIMESPAN>(static_cast<uint64_t>(sum));
  return true;
}

// The bytes of a text that the models read, unit for unit.
inline std::string ModelBytes(const std::basic_string<WCHAR>& units) {
  std::string bytes;
  for (WCHAR unit : units) bytes += ModelByte(unit);
  return bytes;
}

// Whether the library reads a text as date and time, or as time, the way that its model does. `record` is what it read.
inline bool ReadsAsModelled(uint8_t (*read)(ZRSTR, ZRDATETIMESTRUCT*),
                            bool (*model)(const std::string&, ZRDATETIMESTRUCT&), const std::basic_string<WCHAR>& units,
                            ZRDATETIMESTRUCT& record) {
  ZRSTR text = ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR)));
  ZRDATETIMESTRUCT expected;
  std::memset(&record, 0xA5, sizeof record);
  const bool isRead = read(text, &record) != 0;
  ZrDestroyString(text);
  return isRead == model(ModelBytes(units), expected) && std::memcmp(&record, &expected, sizeof record) == 0;
}
