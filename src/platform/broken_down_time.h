// The fields of a moment as the C library has them, for the systems whose services take and give such.

#pragma once

#include <algorithm>
#include <ctime>

#include "platform/clock.h"

inline CClockFields FieldsOf(const std::tm& time) noexcept {
  // Zones that count leap seconds know a second 60; the fields don't.
  return {time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, std::min(time.tm_sec, 59)};
}

inline bool IsKnown(int64_t moment) noexcept { return moment >= kFirstMoment && moment <= kLastMoment; }
