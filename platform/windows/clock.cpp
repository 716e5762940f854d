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

// The runtimes end a few hours apart.
bool PlatformLocalTime(int64_t moment, CClockFields& fields) noexcept {
  std::tm time{};
  if (!IsKnown(moment) || _localtime64_s(&time, &moment) != 0) return false;
  fields = FieldsOf(time);
  return true;
}

bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept {
  std::tm time = BrokenDown(local);
  time.tm_isdst = -1;
  const int64_t found = _mktime64(&time);
  if (!IsKnown(found)) return false;  // -1, the failure, among them
  moment = found;
  return true;
}
