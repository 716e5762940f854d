// TimeSpan is a distance between two points in time, in ticks of 100 ns (zrcore/timespan.h).
//
//     zr::TimeSpan span = zr::TimeSpan::Hours(2) + zr::TimeSpan::Seconds(30);
//     std::puts(span.ToString().ToUtf8().c_str());
//
// It is a plain value of 64 bits that owns nothing. Arithmetic that does not fit wraps around.

#ifndef ZR_TIME_SPAN_HPP
#define ZR_TIME_SPAN_HPP

#include <cstddef>
#include <cstdint>

#include "zr/result.hpp"
#include "zr/string.hpp"
#include "zrcore/datetime.h"
#include "zrcore/timespan.h"

namespace zr {

namespace detail {

// Sums and differences that do not fit wrap around, as everywhere in the library.
constexpr int64_t AddWrapping(int64_t left, int64_t right) noexcept {
  return static_cast<int64_t>(static_cast<uint64_t>(left) + static_cast<uint64_t>(right));
}
constexpr int64_t SubtractWrapping(int64_t left, int64_t right) noexcept {
  return static_cast<int64_t>(static_cast<uint64_t>(left) - static_cast<uint64_t>(right));
}

inline String NewText(ZRSTR made) {
  if (made == nullptr) OutOfMemory();
  return String::Adopt(made);
}

// A count of ticks with the operators of an ordered value.
template <class Self>
class Ticked {
 public:
  [[nodiscard]] constexpr int64_t Ticks() const noexcept { return ticks_; }
  friend constexpr bool operator==(Self left, Self right) noexcept { return left.Ticks() == right.Ticks(); }
  friend constexpr bool operator!=(Self left, Self right) noexcept { return left.Ticks() != right.Ticks(); }
  friend constexpr bool operator<(Self left, Self right) noexcept { return left.Ticks() < right.Ticks(); }
  friend constexpr bool operator>(Self left, Self right) noexcept { return left.Ticks() > right.Ticks(); }
  friend constexpr bool operator<=(Self left, Self right) noexcept { return left.Ticks() <= right.Ticks(); }
  friend constexpr bool operator>=(Self left, Self right) noexcept { return left.Ticks() >= right.Ticks(); }

 protected:
  constexpr Ticked() noexcept = default;
  constexpr explicit Ticked(int64_t ticks) noexcept : ticks_(ticks) {}
  int64_t ticks_ = 0;
};

}  // namespace detail

/// TimeSpan is a signed number of ticks of 100 ns. It has the operators of an ordered value.
class TimeSpan : public detail::Ticked<TimeSpan> {
 public:
  constexpr TimeSpan() noexcept = default;
  /// Makes a span of this many ticks.
  constexpr explicit TimeSpan(ZRTIMESPAN ticks) noexcept : Ticked(ticks) {}
  /// Milliseconds, Seconds, Minutes, Hours and Days make a span of this many units. A product that does not fit wraps.
  [[nodiscard]] static constexpr TimeSpan Milliseconds(int64_t count) noexcept { return Of(count, 10000); }
  [[nodiscard]] static constexpr TimeSpan Seconds(int64_t count) noexcept { return Of(count, ZR_TICKS_PER_SECOND); }
  [[nodiscard]] static constexpr TimeSpan Minutes(int64_t count) noexcept { return Of(count, ZR_TICKS_PER_MINUTE); }
  [[nodiscard]] static constexpr TimeSpan Hours(int64_t count) noexcept { return Of(count, ZR_TICKS_PER_HOUR); }
  [[nodiscard]] static constexpr TimeSpan Days(int64_t count) noexcept { return Of(count, ZR_TICKS_PER_DAY); }

  /// Parse reads the text of a span. ZR_R_INVALID_ARGUMENTS only for a text with fewer than two units or no
  /// colon.
  static Result<TimeSpan> Parse(const String& text) noexcept {
    ZRTIMESPAN span = 0;
    if (ZrTimeSpanStringToTimeSpan(text.Get(), &span) == 0) return Failure{ZR_R_INVALID_ARGUMENTS};
    return TimeSpan(span);
  }
  /// ParseTimeOfDay reads a time of day such as "05:06:07.1234567" as the span since midnight.
  /// ZR_R_INVALID_ARGUMENTS only for a text with fewer than two units.
  static Result<TimeSpan> ParseTimeOfDay(const String& text) noexcept {
    ZRDATETIMESTRUCT fields{};
    if (ZrTimeStringToDateTimeStruct(text.Get(), &fields) == 0) return Failure{ZR_R_INVALID_ARGUMENTS};
    return Hours(fields.hour) + Minutes(fields.minute) + Seconds(fields.second) + TimeSpan(fields.fraction);
  }
  /// ToString formats the span. The text of a negative span has a minus sign in every part, and Parse reads it as
  /// another value. Throws std::bad_alloc when out of memory.
  [[nodiscard]] String ToString() const { return detail::NewText(ZrTimeSpanToTimeSpanString(Ticks())); }

  friend constexpr TimeSpan operator+(TimeSpan left, TimeSpan right) noexcept {
    return TimeSpan(detail::AddWrapping(left.Ticks(), right.Ticks()));
  }
  friend constexpr TimeSpan operator-(TimeSpan left, TimeSpan right) noexcept {
    return TimeSpan(detail::SubtractWrapping(left.Ticks(), right.Ticks()));
  }

 private:
  static constexpr TimeSpan Of(int64_t count, int64_t ticks) noexcept {
    return TimeSpan(static_cast<int64_t>(static_cast<uint64_t>(count) * static_cast<uint64_t>(ticks)));
  }
};

}  // namespace zr

template <>
struct std::hash<zr::TimeSpan> {
  std::size_t operator()(zr::TimeSpan span) const noexcept { return std::hash<int64_t>()(span.Ticks()); }
};

#endif
