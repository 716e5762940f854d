// The clock and the time zone through the C library. localtime_r converts a moment to local time; the reverse direction
// is computed here.

#include "platform/clock.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>

#include "platform/broken_down_time.h"

static_assert(sizeof(std::time_t) == sizeof(int64_t), "moments reach the year 3000");

// Reads the time zone again. localtime_r, unlike localtime, need not notice that the zone has changed.
//
// If TZ names the zone, each call reads it. Otherwise tzset has to look at the system's file of the zone, so it is
// called at most once per second. Two threads that read at the same time do no harm.
static void ReadZone(std::time_t now) noexcept {
  constexpr std::time_t kNever = -1;
  static std::atomic<std::time_t> lastRead{kNever};
  const std::time_t wanted = std::getenv("TZ") == nullptr ? now : kNever;
  if (wanted != kNever && wanted == lastRead.load(std::memory_order_relaxed)) return;
  tzset();
  lastRead.store(wanted, std::memory_order_relaxed);
}

// The current time in the fields that `breakDown` returns.
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

CClockFields PlatformLocalTime(int64_t moment) noexcept {
  if (!IsKnown(moment)) return {};
  ReadZone(std::time(nullptr));
  std::tm time{};
  if (localtime_r(&moment, &time) == nullptr) return {};
  return FieldsOf(time);
}

// ---- From local time to a moment -----------------------------------------------------------------------------------
//
// mktime can't be used. It refuses local times that some zones skip, and if a zone repeats a local time, its choice can
// depend on the call before. So the moment is computed from the zone's offsets from UTC, which localtime_r provides for
// any moment:
//
//     moment = local time as if it were UTC - offset at the moment
//
// The offset depends on the moment that is sought. The offsets well before and well after are the only candidates, so
// both are tried:
//
//     equal              no change of offset nearby: this is the offset
//     one fits           the local time is before or after the change
//     none fits          the zone skips this local time, e.g. when daylight saving begins: the offset after the gap
//     both fit           the zone repeats this local time, e.g. when daylight saving ends: standard time is preferred

// The seconds from 1970-01-01 00:00:00 to these fields, as if they were universal time.
static int64_t SecondsOf(const CClockFields& fields) noexcept {
  using namespace std::chrono;
  const sys_days date =
      year(fields.year) / month(static_cast<unsigned>(fields.month)) / day(static_cast<unsigned>(fields.day));
  return date.time_since_epoch().count() * int64_t{86400} + fields.hour * int64_t{3600} + fields.minute * int64_t{60} +
         fields.second;
}

// What the zone adds to UTC at a moment. In a zone that counts leap seconds, these are part of it.
struct COffset {
  int64_t seconds = 0;
  bool isDaylight = false;
};

static COffset OffsetAt(std::time_t moment) noexcept {
  std::tm time{};
  if (localtime_r(&moment, &time) == nullptr) return {};  // only for years that don't fit an int
  return {SecondsOf(FieldsOf(time)) - moment, time.tm_isdst > 0};
}

bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept {
  // More than any zone differs from UTC, so the moment lies between the two tries. Changes of a zone are further apart
  // than the tries, so at most one change lies there, too.
  constexpr int64_t kReach = int64_t{26} * 3600;
  ReadZone(std::time(nullptr));
  const int64_t wanted = SecondsOf(local);
  const COffset before = OffsetAt(wanted - kReach), after = OffsetAt(wanted + kReach);
  int64_t found = wanted - after.seconds;
  if (before.seconds != after.seconds) {
    // An offset fits if the zone has this offset at the moment that is computed with it. If both fit, the offset after
    // the change yields the later moment. The earlier one is preferred only if it alone is in standard time.
    const int64_t earlier = wanted - before.seconds;
    const COffset atEarlier = OffsetAt(earlier), atLater = OffsetAt(found);
    const bool isEarlier = atEarlier.seconds == before.seconds, isLater = atLater.seconds == after.seconds;
    const bool isEarlierStandard = !atEarlier.isDaylight && atLater.isDaylight;
    if (isEarlier && (!isLater || isEarlierStandard)) found = earlier;
  }
  if (!IsKnown(found)) return false;
  moment = found;
  return true;
}
