// ZrCore: date and time.
//
// A ZRDATETIME is a point in time as one number: ticks of 100 nanoseconds since 1601-01-01 00:00:00, in the Gregorian
// calendar. A ZRDATETIMESTRUCT is the same point in time in fields:
//
//     | year (2) | month | dayOfWeek | day | hour | minute | second | millisecond (2) | microsecond (2) |
//     | fraction (4) |
//
// Only `fraction` carries the part below a second into a value. `millisecond` and `microsecond` repeat its digits.
//
// A value has no time zone: it is UTC or local time, depending on where it comes from. Only ZrGetNow and the functions
// under "Seconds since 1970" know the time zone.
//
//     ZRDATETIMESTRUCT fields;
//     ZrDateTimeToStruct(ZrGetNow(1), &fields);                      // UTC
//     ZRSTR text = ZrDateTimeStructToDateTimeString(&fields, 1);     // "2012-03-04 05:06:07.1230000"
//     ZrDestroyString(text);
//
// Nothing is validated: fields out of their range carry over, and texts are parsed as far as possible. All arithmetic
// wraps in 64 bits. Each function says what it does with a null argument. The functions that give a string give a new
// one (ZrDestroyString), or null when out of memory. Only ZrDateTimeToTimeT throws (see "Exceptions" in base.h).
//
// Any thread, any time, before ZrInitialize too. Records have no lock: a call that writes a record while another call
// uses it is a data race.

#ifndef ZRCORE_DATETIME_H
#define ZRCORE_DATETIME_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/string.h"

/// ZRDATETIME is a number of ticks of 100 ns since 1601-01-01 00:00:00.
typedef int64_t ZRDATETIME;

#define ZR_TICKS_PER_SECOND INT64_C(10000000)
#define ZR_TICKS_PER_MINUTE INT64_C(600000000)
#define ZR_TICKS_PER_HOUR INT64_C(36000000000)
#define ZR_TICKS_PER_DAY INT64_C(864000000000)

/// ZRDATETIMESTRUCT is a point in time in fields.
typedef struct tagZRDATETIMESTRUCT {
  int16_t year;       ///< read as unsigned when converted to a value, as signed when written as text
  int8_t month;       ///< 1 to 12; read as unsigned and signed like the year
  uint8_t dayOfWeek;  ///< 0 is Sunday, 6 is Saturday; written, never read
  int8_t day;         ///< 1 to 31; read as unsigned and signed like the year
  int8_t hour;
  int8_t minute;
  int8_t second;
  int16_t millisecond;  ///< within the second
  int16_t microsecond;  ///< within the millisecond; written only by ZrDateTimeToStruct, never read
  int32_t fraction;     ///< ticks within the second, 0 to 9999999
} ZRDATETIMESTRUCT;

ZR_STATIC_ASSERT(sizeof(ZRDATETIMESTRUCT) == 16, "a ZRDATETIMESTRUCT is sixteen bytes");
ZR_STATIC_ASSERT(offsetof(ZRDATETIMESTRUCT, year) == 0 && offsetof(ZRDATETIMESTRUCT, month) == 2 &&
                     offsetof(ZRDATETIMESTRUCT, dayOfWeek) == 3 && offsetof(ZRDATETIMESTRUCT, day) == 4 &&
                     offsetof(ZRDATETIMESTRUCT, hour) == 5 && offsetof(ZRDATETIMESTRUCT, minute) == 6 &&
                     offsetof(ZRDATETIMESTRUCT, second) == 7 && offsetof(ZRDATETIMESTRUCT, millisecond) == 8 &&
                     offsetof(ZRDATETIMESTRUCT, microsecond) == 10 && offsetof(ZRDATETIMESTRUCT, fraction) == 12,
                 "a ZRDATETIMESTRUCT has no gaps");

// ---- Values and records --------------------------------------------------------------------------------------------

/// ZrGetNow returns the current time, to the millisecond.
///
/// @param universal  non-zero for UTC, 0 for local time.
/// @return the value; 0 if the clock is outside the years 1601 to 30827.
ZR_API ZRDATETIME ZrGetNow(uint8_t universal) ZR_NOEXCEPT;

/// ZrDateTimeFromStruct converts a record to a value.
///
/// The fields are not validated:
///   - A day is not checked against its month: 31 February is 3 March, or 2 March in a leap year.
///   - A day of 0 counts as 1. A month of 0 counts as January.
///   - A year below 1601, a month above 12 or a day above 31 (all read as unsigned) makes the date 1601-01-01. The time
///     of day is added to it.
///   - Hours, minutes, seconds and `fraction` are signed and carry over, whatever they are.
///   - The other fields are not read.
///
/// @param record  must not be null unless `value` is null.
/// @param value   receives the value; if it is null, nothing happens.
ZR_API void ZrDateTimeFromStruct(const ZRDATETIMESTRUCT* record, ZRDATETIME* value) ZR_NOEXCEPT;

/// ZrDateTimeToStruct converts a value to a record. It writes every field.
///
/// A value below 0 has no meaningful fields: its number of days, rounded towards zero, is read as an unsigned 32-bit
/// number; `year` contains the low 16 bits of the resulting year; the fields of the time are negative or zero.
///
/// @param record  receives the fields; if it is null, nothing happens.
ZR_API void ZrDateTimeToStruct(ZRDATETIME value, ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

// ---- Seconds since 1970 --------------------------------------------------------------------------------------------
//
// These functions convert between a local time (ZRDATETIME) and a moment (`timeT`), which is a number of seconds since
// 1970-01-01 00:00:00 UTC. On every system the last moment is 3000-12-31 23:59:59 UTC, and the first is 0. The
// functions use the time zone of the process, and so does ZrGetNow for local time.
//
// On POSIX systems a change of the time zone is noticed: if TZ names the zone, each call reads it again; otherwise
// calls read the system's zone again at most once a second. Changing the environment while a call runs is a data race.
// On Windows the conversions use the zone that the C runtime has read, until the next call of _tzset.

/// ZrDateTimeFromTimeT converts a moment to local time.
///
/// @param timeT  in seconds since 1970 UTC.
/// @param value  receives the local time; 0 if the moment is before the first or after the last, which is not reported
///               as a failure.
/// @return
///   - ZR_R_OK                 `*value` was written.
///   - ZR_R_INVALID_ARGUMENTS  `value` is null.
ZR_API ZRRESULT ZrDateTimeFromTimeT(int64_t timeT, ZRDATETIME* value) ZR_NOEXCEPT;

/// ZrDateTimeToTimeT converts a local time to a moment.
///
/// For some values it throws a CZrException instead of returning a code. A caller in C can't catch it, so the exception
/// terminates the process. A caller in C must pass only years below 1900 and from 1971 to 2999.
///
/// Every local time has a moment, and equal calls return equal moments while the time zone stays the same:
///   - A local time that the zone skips, because of daylight saving or otherwise, is read with the offset from UTC that
///     is valid after the gap. An example is 02:30 in New York on 2012-03-11, when clocks went from 02:00 EST to 03:00
///     EDT. It is read as 02:30 EDT, the moment 06:30 UTC.
///   - A local time that the zone repeats is read in standard time. If both readings are in standard time, or both in
///     daylight time, the later one counts. The zone's own rules define what daylight time is: Dublin calls summer its
///     standard time.
///
/// On Windows the C runtime's `_mktime64` decides. It knows the zone's current daylight rule and no other change.
///
/// @param value  the local time; its part below a second is ignored.
/// @param timeT  receives the seconds since 1970 UTC; 0 for a year below 1900.
/// @return
///   - ZR_R_OK                 `*timeT` was written.
///   - ZR_R_FAILED             `value` is below 0. `*timeT` is unchanged. This is checked first.
///   - ZR_R_INVALID_ARGUMENTS  `timeT` is null. This is checked last, after the exceptions.
/// @throws CZrException with ZR_RAISED_NO_TIME_T for the years 1900 to 1969, with ZR_RAISED_INVALID_TIME for a moment
///         before 1970-01-01 00:00:00 UTC or after 3000-12-31 23:59:59 UTC, and on Windows for every local time in
///         3001, even if its moment is still in 3000 UTC. `*timeT` is unchanged then. See "Exceptions" in base.h.
ZR_API ZRRESULT ZrDateTimeToTimeT(ZRDATETIME value, int64_t* timeT);

#define ZR_RAISED_NO_TIME_T ZR_RESULT_CODE(0x80004005u)
#define ZR_RAISED_INVALID_TIME ZR_RESULT_CODE(0x80070057u)

#ifdef __cplusplus
#if defined(_WIN32)
#define ZR_VISIBLE_TYPE
#else
#define ZR_VISIBLE_TYPE __attribute__((visibility("default")))
#endif

/// CZrException is the exception that the library throws where a function's comment says so. It contains a result code
/// and nothing else.
///
/// Catching it needs no symbol of the library: the program gets the type from this header, and the C++ runtime matches
/// both definitions by name. The type must stay without a base class and without member functions, because library and
/// program are built separately.
struct ZR_VISIBLE_TYPE CZrException {
  ZRRESULT code;
};
static_assert(sizeof(CZrException) == 4 && offsetof(CZrException, code) == 0, "a CZrException is its code");
#endif

// ---- From text -----------------------------------------------------------------------------------------------------
//
// Each number is read at a fixed position, which the examples show. It may begin with white space and a sign. Reading
// stops at the first other character, at the end of the field or at the end of the text. A number without a digit is 0.
// The characters between the positions are ignored. The text is not trimmed: a leading blank moves every field.
//
// In the tables, "index" is the number of the first unit of the field, "width" its number of units, and "needs" the
// number of units that the text must have for the field to be read. A field that the text cuts off is not scaled: with
// 26 units, "2012-03-04 05:06:07.123456" has 123456 ticks, not 1234560.

/// ZrDateTimeStringToDateTimeStruct parses "2012-03-04 05:06:07.1234567" or "04.03.2012 05:06:07.1234567".
///
/// The year comes first if the first hyphen of the text is at index 4. Any other text is read with the day first, with
/// or without a hyphen. The other fields are read if the text is long enough, and are 0 otherwise:
///
///     index  width  needs     field
///     11     2      12 units  hour
///     14     2      15 units  minute
///     17     2      18 units  second
///     20     3      22 units  the part below a second, in milliseconds
///     20     7      26 units  the part below a second, in ticks; `millisecond` is still read from three units
///
/// @param text    a string, or null for an empty one.
/// @param record  receives the fields, including `dayOfWeek`; `microsecond` is 0.
/// @return 1 if the record was written. 0 if `record` is null, or if the text has fewer than 10 units: all fields of
///         the record are 0 then.
ZR_API uint8_t ZrDateTimeStringToDateTimeStruct(ZRSTR text, ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

/// ZrTimeStringToDateTimeStruct parses "05:06:07.1234567".
///
/// The fields after the hour are read if the text is long enough, and are 0 otherwise:
///
///     index  width  needs     field
///     0      2       2 units  hour
///     3      2       4 units  minute
///     6      2       8 units  second
///     9      3      11 units  the part below a second, in milliseconds
///     9      7      15 units  the part below a second, in ticks; `millisecond` is still read from three units
///
/// @param text    a string, or null for an empty one.
/// @param record  receives the time. Year, month and day are 0, and so is `microsecond`. `dayOfWeek` is computed from
///                the value of the record; for a time from 0 to below 24 hours it is 1.
/// @return 1 if the record was written. 0 if `record` is null, or if the text has fewer than 2 units: all fields of
///         the record are 0 then.
ZR_API uint8_t ZrTimeStringToDateTimeStruct(ZRSTR text, ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

// ---- To text -------------------------------------------------------------------------------------------------------
//
// Fields are written as signed numbers, whatever they are. A number with more digits than its position has makes the
// text longer. One allocation.

/// ZrDateTimeStructToDateString formats a date, such as "2012-03-04". A year below 1000 is padded with blanks.
///
/// @return gives a string (ZrDestroyString); null if `record` is null or when out of memory.
ZR_API ZRSTR ZrDateTimeStructToDateString(const ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

/// ZrDateTimeStructToDateTimeString formats a date and time, such as "2012-03-04 05:06:07.1234567".
///
/// Round trip: a record that ZrDateTimeToStruct made from a value between 0 and the end of the year 9999, formatted
/// with the fraction, is parsed to the same record, except `microsecond`.
///
/// @param withFraction  non-zero for the seven digits of `fraction`, 0 for the three digits of `millisecond`.
/// @return gives a string (ZrDestroyString); null if `record` is null or when out of memory.
ZR_API ZRSTR ZrDateTimeStructToDateTimeString(const ZRDATETIMESTRUCT* record, uint8_t withFraction) ZR_NOEXCEPT;

/// ZrDateTimeStructToTimeString formats a time, such as "05:06:07.1234567". The digits after the point come from
/// `fraction`.
///
/// @return gives a string (ZrDestroyString); null if `record` is null or when out of memory.
ZR_API ZRSTR ZrDateTimeStructToTimeString(const ZRDATETIMESTRUCT* record) ZR_NOEXCEPT;

#endif
