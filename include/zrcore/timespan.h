// ZrCore: time spans.
//
// A ZRTIMESPAN is a signed duration in ticks of 100 nanoseconds, the same ticks as in a ZRDATETIME (datetime.h). The
// two are added and subtracted as plain numbers. The text of a span is "03:04:05.0000006". If there are days, their
// number and a point come first.
//
//     ZRTIMESPAN span = end - begin;                       // two ZRDATETIME values
//     ZRSTR text = ZrTimeSpanToTimeSpanString(span);
//     ZrDestroyString(text);
//
// A null text is an empty text. Nothing throws: out of memory is reported by a null string. Any thread, any time,
// before ZrInitialize too.

#ifndef ZRCORE_TIMESPAN_H
#define ZRCORE_TIMESPAN_H

#include "zrcore/base.h"
#include "zrcore/string.h"

/// ZRTIMESPAN is a number of ticks of 100 ns; 10000000 ticks are one second.
typedef int64_t ZRTIMESPAN;

/// ZrTimeSpanToTimeSpanString formats a span, such as "03:04:05.0000006" or "   1.02:03:04.0000005".
///
/// The days, if not 0, come first and are padded with blanks to four characters.
///
/// In a negative span each part that is not 0 has its own minus sign. The sign counts as one of the characters to which
/// a part is padded: minus one and a half hours is "-1:-30:00.0000000". There is no round trip for negative spans:
/// ZrTimeSpanStringToTimeSpan accepts such a text but in general stores another value.
///
/// @return gives a string (ZrDestroyString); null when out of memory.
///
/// One allocation.
ZR_API ZRSTR ZrTimeSpanToTimeSpanString(ZRTIMESPAN span) ZR_NOEXCEPT;

/// ZrTimeSpanStringToTimeSpan parses a span.
///
/// If there is a point before the first colon, the text before the first point is the number of days, and the time
/// begins after that point. Otherwise there are no days, and the time begins at index 0. The parts of the time have
/// fixed positions, counted from its beginning, and are read if enough units are left:
///
///     position  units  needs     part
///     0         2      -         hours
///     3         2       4 units  minutes
///     6         2       8 units  seconds
///     9         3      11 units  milliseconds
///     9         7      15 units  ticks, instead of milliseconds
///
/// Numbers are read as in date-time texts (datetime.h): a number may begin with white space and a sign, a number
/// without a digit is 0, and the characters between the positions are ignored. The parts are added with their own
/// signs, whatever their size: "-1.12:00:00" is minus twelve hours. A number of days that doesn't fit 64 bits is read
/// as the nearest that does. A sum that doesn't fit 64 bits wraps.
///
/// @param text  a string, or null for an empty one.
/// @param span  receives the span; 0 if the text is refused.
/// @return 1 if the text was parsed. 0 if `span` is null, or if the text is refused: it has fewer than 2 units or no
///         colon.
///
/// Linear; no allocation.
ZR_API uint8_t ZrTimeSpanStringToTimeSpan(ZRSTR text, ZRTIMESPAN* span) ZR_NOEXCEPT;

#endif
