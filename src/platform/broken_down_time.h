// What the clocks of all systems share: the conversion from the C library's fields of time, and the range of moments.

#pragma once

#include <algorithm>
#include <ctime>

#include "platform/clock.h"

inline CClockFields FieldsOf(const std::tm& time) noexcept {
  // Zones that count leap seconds have a second 60, which a date and time of this library can't represent.
  return {time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, std::min(time.tm_sec, 59)};
}

// Whether local time is known for a moment; see clock.h.
inline bool IsKnown(int64_t moment) noexcept { return moment >= kFirstMoment && moment <= kLastMoment; }
