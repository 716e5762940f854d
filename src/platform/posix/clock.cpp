#include "platform/clock.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>

#include "platform/broken_down_time.h"

static_assert(sizeof(std::time_t) == sizeof(int64_t), "moments reach the year 3000");

// localtime_r need not notice that the zone has changed, so tzset reads it again: each time if the environment names
// the zone, and otherwise once a second, because the C library then has to ask the file system.
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

CClockFields PlatformLocalTime(int64_t moment) noexcept {
  if (!IsKnown(moment)) return {};
  ReadZone(std::time(nullptr));
  std::tm time{};
  if (localtime_r(&moment, &time) == nullptr) return {};
  return FieldsOf(time);
}

// ---- From local time to a moment
// -------------------------------------------------------------------------------------
//
// mktime can't be used: it refuses local times that some zones skip, and where a zone repeats a local time its choice
// can depend on the call before. So the moment is found from the offsets of the zone, which localtime_r gives for any
// moment.

// The seconds from 1970-01-01 00:00:00 to these fields, as if they were universal time.
static int64_t SecondsOf(const CClockFields& fields) noexcept {
  using namespace std::chrono;
  const sys_days date =
      year(fields.year) / month(static_cast<unsigned>(fields.month)) / day(static_cast<unsigned>(fields.day));
  return date.time_since_epoch().count() * int64_t{86400} + fields.hour * int64_t{3600} + fields.minute * int64_t{60} +
         fields.second;
}

// What the zone adds to universal time at a moment. In a zone that counts leap seconds those are part of it.
struct COffset {
  int64_t seconds = 0;
  bool isDaylight = false;
};

static COffset OffsetAt(std::time_t moment) noexcept {
  std::tm time{};
  if (localtime_r(&moment, &time) == nullptr) return {};  // only for years that an int doesn't hold
  return {SecondsOf(FieldsOf(time)) - moment, time.tm_isdst > 0};
}

bool PlatformMomentOf(const CClockFields& local, int64_t& moment) noexcept {
  // Further than any zone is off universal time, nearer than two changes of one zone are to each other.
  constexpr int64_t kReach = int64_t{26} * 3600;
  ReadZone(std::time(nullptr));
  const int64_t wanted = SecondsOf(local);
  const COffset before = OffsetAt(wanted - kReach), after = OffsetAt(wanted + kReach);
  int64_t found = wanted - after.seconds;
  if (before.seconds != after.seconds) {
    // The zone changes its offset nearby. The reading by an offset holds if the zone has that offset at the moment that
    // the reading gives. None holds for a local time that the zone skips, and both for one that it repeats.
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
