#include "platform/clock.h"

#include <algorithm>
#include <ctime>

static_assert(sizeof(std::time_t) == sizeof(int64_t), "moments reach the year 3000");

static CClockFields FieldsOf(const std::tm& time, int64_t nanoseconds) noexcept {
  // Zones that count leap seconds know a second 60; the fields don't.
  return {time.tm_year + 1900,
          time.tm_mon + 1,
          time.tm_mday,
          time.tm_hour,
          time.tm_min,
          std::min(time.tm_sec, 59),
          static_cast<int32_t>(nanoseconds / 1'000'000)};
}

template <class BreakDown>
static CClockFields Now(BreakDown breakDown) noexcept {
  std::timespec now{};
  std::tm time{};
  if (clock_gettime(CLOCK_REALTIME, &now) != 0 || breakDown(&now.tv_sec, &time) == nullptr) return {};
  return FieldsOf(time, now.tv_nsec);
}

static bool IsKnown(int64_t moment) noexcept { return moment >= kFirstMoment && moment <= kLastMoment; }

CClockFields PlatformUniversalNow() noexcept { return Now(gmtime_r); }

CClockFields PlatformLocalNow() noexcept { return Now(localtime_r); }

bool PlatformLocalTime(int64_t moment, CClockFields& fields) noexcept {
  std::tm time{};
  if (!IsKnown(moment) || localtime_r(&moment, &time) == nullptr) return false;
  fields = FieldsOf(time, 0);
  return true;
}

bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept {
  std::tm wanted{};
  wanted.tm_year = local.year - 1900;
  wanted.tm_mon = local.month - 1;
  wanted.tm_mday = local.day;
  wanted.tm_hour = local.hour;
  wanted.tm_min = local.minute;
  wanted.tm_sec = local.second;
  // Left to choose (tm_isdst -1), the C library answers a repeated or a skipped hour by what it was asked before. So
  // the standard reading is asked for, and the daylight one if that is what holds there.
  std::tm time = wanted;
  time.tm_isdst = 0;
  std::time_t found = std::mktime(&time);
  if (time.tm_isdst > 0) {
    time = wanted;
    time.tm_isdst = 1;
    found = std::mktime(&time);
  }
  if (!IsKnown(found)) return false;  // -1, the failure, among them
  moment = found;
  return true;
}
