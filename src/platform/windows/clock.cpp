// The clock from the system, the time zone from the C runtime.

#include "platform/clock.h"

#include <windows.h>

#include <ctime>

#include "platform/broken_down_time.h"

static CClockFields FieldsOf(const SYSTEMTIME& time) noexcept {
  return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds};
}

CClockFields PlatformUniversalNow() noexcept {
  SYSTEMTIME now;
  GetSystemTime(&now);
  return FieldsOf(now);
}

CClockFields PlatformLocalNow() noexcept {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return FieldsOf(now);
}

// The moment is checked first, because the C runtimes of Windows differ by a few hours in the last moment that they
// accept.
CClockFields PlatformLocalTime(int64_t moment) noexcept {
  std::tm time{};
  if (!IsKnown(moment) || _localtime64_s(&time, &moment) != 0) return {};
  return FieldsOf(time);
}

// tm_isdst is -1: the runtime decides whether daylight saving applies.
static std::tm BrokenDown(const CClockFields& fields) noexcept {
  std::tm time{};
  time.tm_year = fields.year - 1900;
  time.tm_mon = fields.month - 1;
  time.tm_mday = fields.day;
  time.tm_hour = fields.hour;
  time.tm_min = fields.minute;
  time.tm_sec = fields.second;
  time.tm_isdst = -1;
  return time;
}

bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept {
  std::tm time = BrokenDown(local);
  const int64_t found = _mktime64(&time);
  if (!IsKnown(found)) return false;  // also for -1, which reports a failure
  moment = found;
  return true;
}
