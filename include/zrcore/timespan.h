// ZrCore: time spans.
//
// A ZRTIMESPAN is a signed duration in ticks of 100 nanoseconds, those of a ZRDATETIME: the two add and subtract as
// plain numbers. Here is its text form, "03:04:05.0000006", with the days and a point in front if there are any.
//
// Any thread, any time, before ZrInitialize too.

#ifndef ZRCORE_TIMESPAN_H
#define ZRCORE_TIMESPAN_H

#include "zrcore/base.h"
#include "zrcore/string.h"

/// ZRTIMESPAN counts ticks of 100 ns: 10000000 a second.
typedef int64_t ZRTIMESPAN;

/// ZrTimeSpanToTimeSpanString writes a span, such as "03:04:05.0000006" or "   1.02:03:04.0000005".
///
/// The days, if not 0, come first, padded with blanks to four places. Each part of a span below zero bears its own
/// minus sign, in place of a digit: an hour and a half before zero is "-1:-30:00.0000000". Such a text is read, but in
/// general as another value.
///
/// @return gives a string, which the caller destroys; null when memory is exhausted. One allocation.
ZR_API ZRSTR ZrTimeSpanToTimeSpanString(ZRTIMESPAN span) ZR_NOEXCEPT;

/// ZrTimeSpanStringToTimeSpan reads a span.
///
/// A dot in front of the first colon ends the days; without one there are none. Counted from there, two units each at
/// the places 0, 3 and 6 are hours, minutes (if 4 units are left) and seconds (if 8 are). Three at place 9 are
/// milliseconds if 11 units are left; if 15 are, seven at place 9 are ticks. Numbers are read as in date-time texts:
/// white space and a sign may lead, no digit is 0, and what stands between the places is not looked at. Parts add up
/// with their own signs, whatever their size: "-1.12:00:00" is twelve hours back. What doesn't fit wraps in 64 bits.
///
/// @param text  a string, or null for an empty one.
/// @param span  receives the span; 0 if the text is refused.
/// @return 1; 0 if `span` is null, the text has fewer than 2 units, or it has no colon.
ZR_API uint8_t ZrTimeSpanStringToTimeSpan(ZRSTR text, ZRTIMESPAN* span) ZR_NOEXCEPT;

#endif
