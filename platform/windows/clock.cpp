#include "platform/clock.h"

#include <windows.h>

#include <algorithm>
#include <ctime>

static CClockFields FieldsOf(const SYSTEMTIME& time) noexcept {
  return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds};
}

static bool IsKnown(int64_t moment) noexcept { return moment >= kFirstMoment && moment <= kLastMoment; }

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

// The runtimes end a few hours apart.
bool PlatformLocalTime(int64_t moment, CClockFields& fields) noexcept {
  std::tm time{};
  if (!IsKnown(moment) || _localtime64_s(&time, &moment) != 0) return false;
  fields = {time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, std::min(time.tm_sec, 59)};
  return true;
}

bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept {
  std::tm time{};
  time.tm_year = local.year - 1900;
  time.tm_mon = local.month - 1;
  time.tm_mday = local.day;
  time.tm_hour = local.hour;
  time.tm_min = local.minute;
  time.tm_sec = local.second;
  time.tm_isdst = -1;
  const int64_t found = _mktime64(&time);
  if (!IsKnown(found)) return false;  // -1, the failure, among them
  moment = found;
  return true;
}
