// The system's clock and its time zone.

#pragma once

#include <cstdint>

// A moment in fields: the year as people write it, months and days from 1.
struct CClockFields {
  int32_t year = 0;
  int32_t month = 0;
  int32_t day = 0;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  int32_t millisecond = 0;
};

// Moments are seconds since 1970-01-01 00:00:00 universal time. On every system local time is known for these only.
inline constexpr int64_t kFirstMoment = 0;
inline constexpr int64_t kLastMoment = 32535215999;  // 3000-12-31 23:59:59

// The present, in universal and in local time. All zeros should the system not know.
[[nodiscard]] CClockFields PlatformUniversalNow() noexcept;
[[nodiscard]] CClockFields PlatformLocalNow() noexcept;

// The local time of a moment. All zeros outside the moments above.
[[nodiscard]] CClockFields PlatformLocalTime(int64_t moment) noexcept;

// Fills `moment` with that of a local time, whose milliseconds are ignored. The result depends on the zone and the
// local time alone, never on earlier calls:
//   - A local time that the zone skips is read with the offset that holds after the gap.
//   - A local time that the zone repeats is read in standard time. If both readings are standard time, or both daylight
//     time, the later one counts.
// (On Windows the C runtime knows one daylight rule per zone and reads by that.)
// Returns false, with `moment` unchanged, if the moment is not one of those above.
[[nodiscard]] bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept;
