// DateTime is a point in time, in ticks of 100 ns since 1601 (zrcore/datetime.h).
//
//     zr::DateTime start = zr::DateTime::Parse(u"2012-03-04 05:06:07.0000000").Value();
//     zr::DateTime end = start + zr::TimeSpan::Hours(2);
//
// It is a plain value of 64 bits that owns nothing. It has no time zone: only the program knows whether it is local
// time or UTC. Arithmetic that does not fit wraps around.

#ifndef ZR_DATE_TIME_HPP
#define ZR_DATE_TIME_HPP

#include <cstddef>
#include <cstdint>

#include "zr/result.hpp"
#include "zr/string.hpp"
#include "zr/time_span.hpp"
#include "zrcore/datetime.h"

namespace zr {

/// DateTime is a number of ticks of 100 ns since 1601. It has the operators of an ordered value.
class DateTime : public detail::Ticked<DateTime> {
 public:
  /// Makes 1601-01-01, which is 0.
  constexpr DateTime() noexcept = default;
  /// Makes a point in time of this many ticks since 1601-01-01.
  constexpr explicit DateTime(ZRDATETIME value) noexcept : Ticked(value) {}
  /// Makes a value of the fields. Fields out of range carry.
  explicit DateTime(const ZRDATETIMESTRUCT& fields) noexcept { ZrDateTimeFromStruct(&fields, &ticks_); }

  /// Now returns the local time, UtcNow the time in UTC.
  [[nodiscard]] static DateTime Now() noexcept { return DateTime(ZrGetNow(0)); }
  [[nodiscard]] static DateTime UtcNow() noexcept { return DateTime(ZrGetNow(1)); }

  /// FromTimeT converts seconds since 1970 in UTC to local time.
  [[nodiscard]] static DateTime FromTimeT(int64_t seconds) noexcept {
    DateTime made;
    (void)ZrDateTimeFromTimeT(seconds, &made.ticks_);
    return made;
  }
  /// ToTimeT converts local time to seconds since 1970 in UTC; for the years 1601 to 1899 the result is 0.
  ///
  /// @return
  ///   - ZR_R_OK                 the time was converted.
  ///   - ZR_R_FAILED             the time is before 1601.
  ///   - ZR_RAISED_NO_TIME_T     the year is 1900 to 1969.
  ///   - ZR_RAISED_INVALID_TIME  the moment is not within 1970 to 3000.
  ///
  /// The last two are codes of an exception that the export throws. Without exceptions they terminate the process.
  [[nodiscard]] Result<int64_t> ToTimeT() const noexcept {
    int64_t seconds = 0;
    const ZRRESULT result = Guard([&] { return ZrDateTimeToTimeT(Ticks(), &seconds); });
    if (Failed(result)) return Failure{result};
    return seconds;
  }

  /// Parse reads a date, or a date and a time. Only the length is checked: ZR_R_INVALID_ARGUMENTS for a text that is
  /// too short. A number that is missing is 0, and a number out of range carries.
  static Result<DateTime> Parse(const String& text) noexcept {
    ZRDATETIMESTRUCT fields{};
    if (ZrDateTimeStringToDateTimeStruct(text.Get(), &fields) == 0) return Failure{ZR_R_INVALID_ARGUMENTS};
    return DateTime(fields);
  }

  /// Fields returns the year, month, day, hour, minute, second and fraction.
  [[nodiscard]] ZRDATETIMESTRUCT Fields() const noexcept {
    ZRDATETIMESTRUCT fields{};
    ZrDateTimeToStruct(Ticks(), &fields);
    return fields;
  }
  /// ToString formats date and time with seven digits of ticks; ToDateString and ToTimeString format a part. They throw
  /// std::bad_alloc when out of memory.
  [[nodiscard]] String ToString() const {
    const ZRDATETIMESTRUCT fields = Fields();
    return detail::NewText(ZrDateTimeStructToDateTimeString(&fields, 1));
  }
  [[nodiscard]] String ToDateString() const {
    const ZRDATETIMESTRUCT fields = Fields();
    return detail::NewText(ZrDateTimeStructToDateString(&fields));
  }
  [[nodiscard]] String ToTimeString() const {
    const ZRDATETIMESTRUCT fields = Fields();
    return detail::NewText(ZrDateTimeStructToTimeString(&fields));
  }

  friend constexpr DateTime operator+(DateTime left, TimeSpan right) noexcept {
    return DateTime(detail::AddWrapping(left.Ticks(), right.Ticks()));
  }
  friend constexpr DateTime operator-(DateTime left, TimeSpan right) noexcept {
    return DateTime(detail::SubtractWrapping(left.Ticks(), right.Ticks()));
  }
  friend constexpr TimeSpan operator-(DateTime left, DateTime right) noexcept {
    return TimeSpan(detail::SubtractWrapping(left.Ticks(), right.Ticks()));
  }
};

}  // namespace zr

template <>
struct std::hash<zr::DateTime> {
  std::size_t operator()(zr::DateTime time) const noexcept { return std::hash<int64_t>()(time.Ticks()); }
};

#endif
