#include "platform/clock.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "platform/broken_down_time.h"

static_assert(sizeof(std::time_t) == sizeof(int64_t), "moments reach the year 3000");

// The C library reads the zone for localtime_r when it pleases, for mktime each time. So it is told to, but where the
// environment names no zone once a second: then it has to ask the file system.
static void ReadZone(std::time_t now) noexcept {
  constexpr std::time_t kNever = -1;
  static std::atomic<std::time_t> lastRead{kNever};
  const std::time_t wanted = std::getenv("TZ") == nullptr ? now : kNever;
  if (wanted != kNever && wanted == lastRead.load(std::memory_order_relaxed)) return;
  tzset();
  lastRead.store(wanted, std::memory_order_relaxed);
}

template <class BreakDown>
static CClockFields Now(BreakDown breakDown) noexcept {
  std::timespec now{};
  std::tm time{};
  if (clock_gettime(CLOCK_REALTIME, &now) != 0 || breakDown(&now.tv_sec, &time) == nullptr) return {};
  CClockFields fields = FieldsOf(time);
  fields.millisecond = static_cast<int32_t>(now.tv_nsec / 1'000'000);
  return fields;
}

CClockFields PlatformUniversalNow() noexcept { return Now(gmtime_r); }

CClockFields PlatformLocalNow() noexcept {
  return Now([](const std::time_t* now, std::tm* time) noexcept {
    ReadZone(*now);
    return localtime_r(now, time);
  });
}

bool PlatformLocalTime(int64_t moment, CClockFields& fields) noexcept {
  if (!IsKnown(moment)) return false;
  ReadZone(std::time(nullptr));
  std::tm time{};
  if (localtime_r(&moment, &time) == nullptr) return false;
  fields = FieldsOf(time);
  return true;
}

bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept {
  const std::tm wanted = BrokenDown(local);
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
