// ZrCore: date and time.
//
// A ZRDATETIME is a point in time as one number: ticks of 100 nanoseconds since 1601-01-01 00:00:00, in the calendar of
// today carried backwards. A ZRDATETIMESTRUCT is the same broken down into fields. Nothing here knows a time zone
// except where it says so: a value belongs to whatever clock it was taken from.
//
//     | year (2) | month | dayOfWeek | day | hour | minute | second | millisecond (2) | microsecond (2) |
//     | fraction (4) |
//
// `fraction` alone carries what is below a second into a value; `millisecond` and `microsecond` are views of it.
//
// Nothing is validated: fields out of their range carry on, and texts are read as far as they can be. Any arithmetic
// wraps in 64 bits. The functions that give a string give a new one, which the caller destroys, or null when memory is
// exhausted. Any thread, any time, before ZrInitialize too.

#ifndef ZRCORE_DATETIME_H
#define ZRCORE_DATETIME_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/string.h"

/// ZRDATETIME counts ticks of 100 ns since 1601-01-01 00:00:00.
typedef int64_t ZRDATETIME;

#define ZR_TICKS_PER_SECOND INT64_C(10000000)
#define ZR_TICKS_PER_MINUTE INT64_C(600000000)
#define ZR_TICKS_PER_HOUR INT64_C(36000000000)
#define ZR_TICKS_PER_DAY INT64_C(864000000000)

/// ZRDATETIMESTRUCT is a point in time in fields.
typedef struct tagZRDATETIMESTRUCT {
  int16_t year;       ///< unsigned where the record becomes a value, signed where it becomes text
  int8_t month;       ///< 1 to 12; unsigned and signed likewise
  uint8_t dayOfWeek;  ///< 0 is Sunday, 6 Saturday; written, never read
  int8_t day;         ///< 1 to 31; unsigned and signed like the year
  int8_t hour;
  int8_t minute;
  int8_t second;
  int16_t millisecond;  ///< within the second
  int16_t microsecond;  ///< within the millisecond; written by ZrDateTimeToStruct only, never read
  int32_t fraction;     ///< ticks within the second, 0 to 9999999
} ZRDATETIMESTRUCT;

ZR_STATIC_ASSERT(sizeof(ZRDATETIMESTRUCT) == 16, "a ZRDATETIMESTRUCT is sixteen bytes");
ZR_STATIC_ASSERT(offsetof(ZRDATETIMESTRUCT, day) == 4 && offsetof(ZRDATETIMESTRUCT, millisecond) == 8 &&
                     offsetof(ZRDATETIMESTRUCT, fraction) == 12,
                 "a ZRDATETIMESTRUCT has no gaps");

// ---- Values and records --------------------------------------------------------------------------------------------

/// ZrGetNow is the present moment, to the millisecond.
///
/// @param universal  non-zero for universal time, 0 for local time.
/// @return the value; 0 should the clock stand outside the years 1601 to 30827.
ZR_API ZRDATETIME ZrGetNow(uint8_t universal) ZR_NOEXCEPT;

/// ZrDateTimeFromStruct reckons the value of a record.
///
/// Days are not checked against their month: 31 February is 3 or 2 March. A day of 0 counts as 1, a month of 0 adds no
/// days. A year below 1601, a month above 12 or a day above 31 (all read unsigned) puts the time of day on 1601-01-01.
/// Hours, minutes, seconds and `fraction` are signed and carry, whatever they hold; the other fields are not read.
///
/// @param record  must not be null unless `value` is.
/// @param value   receives the value; if null, nothing happens.
ZR_API void ZrDateTimeFromStruct(const ZRDATETIMESTRUCT* record, ZRDATETIME* value) ZR_NOEXCEPT;

/// ZrDateTimeToStruct breaks a value down; every field is written.
///
/// A value below 0 has no meaningful fields: its days are counted, towards zero, in unsigned 32 bits, the year keeps
/// the low 16 bits of what comes out, and the fields of the time are negative or zero.
///
/// @param record  receives the fields; if null, nothing happens.
ZR_API void ZrDateTimeToStruct(ZRDATETIME value, ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

// ---- Seconds since 1970 --------------------------------------------------------------------------------------------
// Here, and in ZrGetNow, the process's time zone counts: the value is the local time of a moment that `timeT` counts in
// seconds since 1970-01-01 00:00:00 universal time. On every system the moments are those up to 3000-12-31 23:59:59. On
// POSIX systems the zone is read anew, that of TZ each time, the system's own once a second; on Windows the conversions
// keep what the C runtime has read, up to its next _tzset.

/// ZrDateTimeFromTimeT gives the local time of a moment.
///
/// @param value  receives it; 0 if the moment lies outside 1970 to 3000, which is no failure.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `value` is null.
ZR_API ZRRESULT ZrDateTimeFromTimeT(int64_t timeT, ZRDATETIME* value) ZR_NOEXCEPT;

/// ZrDateTimeToTimeT gives the moment of a local time. Some values raise a CZrException instead of answering a code; a
/// caller in C, which can't catch it, keeps to years below 1900 and those from 1971 to 2999.
///
/// Every local time has a moment, and equal calls return equal moments while the time zone stays the same:
///   - A local time that the zone skips, by daylight saving or otherwise, is read with the offset from universal time
///     that holds after the gap. An example is 02:30 in New York on 2012-03-11, when clocks went from 02:00 EST to
///     03:00 EDT. It is read as 02:30 EDT, the moment 06:30 UTC.
///   - A local time that the zone repeats is read in standard time. If both readings are in standard time, or both in
///     daylight time, the later one counts. What is daylight time is what the zone's own rules call so: Dublin calls
///     summer its standard time.
/// On Windows the C runtime's `_mktime64` decides. It knows the zone's present daylight rule and no other change.
///
/// @param timeT  receives the seconds since 1970; 0 for a year below 1900.
/// @return ZR_R_OK; ZR_R_FAILED, with `*timeT` unchanged, for a value below 0; ZR_R_INVALID_ARGUMENTS, after all of the
///         rest, if `timeT` is null.
/// @throws CZrException with ZR_RAISED_NO_TIME_T for the years 1900 to 1969, with ZR_RAISED_INVALID_TIME for a moment
///         before 1970-01-01 00:00:00 or after 3000-12-31 23:59:59 universal time, and on Windows for every local time
///         in 3001, even if its moment is still in 3000 UTC. `*timeT` is unchanged then. See "Exceptions" in base.h.
ZR_API ZRRESULT ZrDateTimeToTimeT(ZRDATETIME value, int64_t* timeT);

#define ZR_RAISED_NO_TIME_T ZR_RESULT_CODE(0x80004005u)
#define ZR_RAISED_INVALID_TIME ZR_RESULT_CODE(0x80070057u)

#ifdef __cplusplus
#if defined(_WIN32)
#define ZR_VISIBLE_TYPE
#else
#define ZR_VISIBLE_TYPE __attribute__((visibility("default")))
#endif

/// CZrException is what the library raises where a function's comment says so: a code and nothing else.
///
/// It needs no symbol of the library: whoever catches it brings the type along, and the runtime knows it by its name.
/// It stays as it is, without a base and without operations, since both sides are built apart.
struct ZR_VISIBLE_TYPE CZrException {
  ZRRESULT code;
};
static_assert(sizeof(CZrException) == sizeof(ZRRESULT), "a CZrException is its code");
#endif

// ---- From text -----------------------------------------------------------------------------------------------------
// Numbers are read at fixed places, cut short where the text ends: white space and a sign may lead, reading stops at
// the first other character, no digit is 0. What stands between the places is never looked at. The text is not trimmed:
// a leading blank moves every field.

/// ZrDateTimeStringToDateTimeStruct reads "2012-03-04 05:06:07.1234567" or "04.03.2012 05:06:07.1234567".
///
/// The year comes first if the first hyphen of the text stands at its index 4; any other text is read day first, with
/// or without a hyphen. From a length of 12, 15, 18 and 22 units an hour, a minute, a second and a sub-second part
/// follow. That part is three digits of milliseconds; from 26 units it is taken for ticks, and has to be seven digits
/// wide to mean its value.
///
/// @param text    a string, or null for an empty one.
/// @param record  receives the fields, `dayOfWeek` among them; `microsecond` is 0.
/// @return 1; 0 if `record` is null, or, with the record cleared, if the text has fewer than 10 units.
ZR_API uint8_t ZrDateTimeStringToDateTimeStruct(ZRSTR text, ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

/// ZrTimeStringToDateTimeStruct reads "05:06:07.1234567". From a length of 4, 8 and 11 units a minute, a second and
/// milliseconds follow; from 15 units the latter are taken for ticks.
///
/// @param text    a string, or null for an empty one.
/// @param record  receives the time; the date stays 0, and `dayOfWeek` is that of the value, 1 for a time below
///                24 hours.
/// @return 1; 0 if `record` is null, or, with the record cleared, if the text has fewer than 2 units.
ZR_API uint8_t ZrTimeStringToDateTimeStruct(ZRSTR text, ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

// ---- To text -------------------------------------------------------------------------------------------------------
// Fields are written as they are, signed; one that needs more digits than its place takes them. A null record gives
// null. One allocation.

/// ZrDateTimeStructToDateString writes such as "2012-03-04". A year below 1000 is padded with blanks.
ZR_API ZRSTR ZrDateTimeStructToDateString(const ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

/// ZrDateTimeStructToDateTimeString writes such as "2012-03-04 05:06:07.1234567". With the fraction, a
/// record that ZrDateTimeToStruct made of a value from 0 to the end of the year 9999 reads back unchanged, except
/// `microsecond`.
///
/// @param withFraction  non-zero for the seven digits of `fraction`, 0 for three of `millisecond`.
ZR_API ZRSTR ZrDateTimeStructToDateTimeString(const ZRDATETIMESTRUCT* record, uint8_t withFraction) ZR_NOEXCEPT;

/// ZrDateTimeStructToTimeString writes such as "05:06:07.1234567", the digits behind the point from `fraction`.
ZR_API ZRSTR ZrDateTimeStructToTimeString(const ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

#endif
