// The system's clock and its time zone.
//
// A moment is a number of seconds since 1970-01-01 00:00:00 UTC. Fields are a local or universal time as people write
// it. The conversions accept the same moments on every system, although the C libraries differ in their limits.

#pragma once

#include <cstdint>

// A date and time in fields: the year as people write it, months and days from 1.
struct CClockFields {
  int32_t year = 0;
  int32_t month = 0;
  int32_t day = 0;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  int32_t millisecond = 0;
};

// The first and the last moment for which local time is known.
inline constexpr int64_t kFirstMoment = 0;
inline constexpr int64_t kLastMoment = 32535215999;  // 3000-12-31 23:59:59

// Return the current time, in UTC and in local time. All fields are zero if the system fails.
[[nodiscard]] CClockFields PlatformUniversalNow() noexcept;
[[nodiscard]] CClockFields PlatformLocalNow() noexcept;

// Returns the local time of a moment. All fields are zero for a moment outside the range above.
[[nodiscard]] CClockFields PlatformLocalTime(int64_t moment) noexcept;

// Stores the moment of a local time; the milliseconds are ignored. The result depends only on the zone and the local
// time, never on earlier calls:
//   - A local time that the zone skips is read with the offset from UTC that is valid after the gap.
//   - A local time that the zone repeats is read in standard time. If both readings are in standard time, or both in
//     daylight time, the later one counts.
// On Windows the C runtime decides instead. It knows one daylight rule per zone.
//
// Returns false, and leaves `moment` unchanged, if the moment is outside the range above.
[[nodiscard]] bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept;
