// Formats and parses time spans. The days, if there are any, are padded with blanks to four places, and the time
// follows after a point:
//
//     "   1.02:03:04.0000005"     one day, two hours, ...
//     "02:03:04.0000005"          no days
//     "-1:-30:00.0000000"         minus one and a half hours: each part has its own sign
//
// The parts are parsed with their own signs and added up, but at fixed places. A part with a sign can be longer than
// its place and moves the parts after it, so most negative spans aren't parsed to the same value. Callers rely on both
// forms.

#include <array>

#include "text/decimal_digits.h"
#include "time/time_digits.h"
#include "zrcore/datetime.h"
#include "zrcore/timespan.h"

static constexpr std::size_t kTimeLength = 16;  // "03:04:05.0000006", each part at its least width
static constexpr std::size_t kMostUnits = 40;   // more than days of 9 units, a point and a time with four signs

// ---- Writing -------------------------------------------------------------------------------------------------------

// Formats any span, in particular a negative one or one with more than four digits of days. The parts come from
// divisions that round towards zero, so each has the sign of the span or is zero.
static ZRSTR FormatGeneralSpan(int32_t days, int32_t seconds, int32_t ticks) noexcept {
  std::array<WCHAR, kMostUnits> buffer;
  WCHAR* at = buffer.data();
  if (days != 0) {
    at = WritePadded(at, days, 4, Pad::Blanks);
    *at++ = '.';
  }
  at = WritePadded(at, seconds / 3600, 2, Pad::Zeros);
  *at++ = ':';
  at = WritePadded(at, seconds / 60 % 60, 2, Pad::Zeros);
  *at++ = ':';
  at = WritePadded(at, seconds % 60, 2, Pad::Zeros);
  *at++ = '.';
  return NewString(buffer.data(), WritePadded(at, ticks, 7, Pad::Zeros));
}

ZRSTR ZrTimeSpanToTimeSpanString(ZRTIMESPAN span) noexcept {
  const auto days = static_cast<int32_t>(span / ZR_TICKS_PER_DAY);  // below eleven million
  const int64_t rest = span % ZR_TICKS_PER_DAY;
  const auto seconds = static_cast<int32_t>(rest / ZR_TICKS_PER_SECOND);
  const auto ticks = static_cast<int32_t>(rest % ZR_TICKS_PER_SECOND);
  if (span < 0 || days > 9999) return FormatGeneralSpan(days, seconds, ticks);

  const std::size_t daysLength = days != 0 ? 5 : 0;
  ZRSTR string = AllocateText(daysLength + kTimeLength);
  if (string == nullptr) return nullptr;
  if (days != 0) {
    WriteFourDigits(string, static_cast<uint32_t>(days));
    for (WCHAR* leading = string; *leading == '0'; ++leading) *leading = ' ';  // ends, because days isn't 0
    string[4] = '.';
  }
  WCHAR* at = string + daysLength;
  WriteTwoDigits(at, static_cast<uint32_t>(seconds) / 3600);
  at[2] = ':';
  WriteTwoDigits(at + 3, static_cast<uint32_t>(seconds) / 60 % 60);
  at[5] = ':';
  WriteTwoDigits(at + 6, static_cast<uint32_t>(seconds) % 60);
  at[8] = '.';
  WriteSevenDigits(at + 9, static_cast<uint32_t>(ticks));
  return string;
}

// ---- Reading -------------------------------------------------------------------------------------------------------

// Reads the days. The loop is for at most nine digits after blanks, as they are written; any other text is read in the
// general way, which accepts white space and a sign and saturates.
static uint64_t ReadDays(CTextView text) noexcept {
  std::size_t at = 0;
  while (at < text.size() && text[at] == ' ') ++at;
  uint64_t days = 0, isIrregular = text.size() - at > 9 ? 1 : 0;
  for (; at < text.size() && isIrregular == 0; ++at) {
    const uint64_t digit = uint64_t{text[at]} - '0';
    isIrregular = digit > 9 ? 1 : 0;
    days = days * 10 + digit;
  }
  return isIrregular == 0 ? days : static_cast<uint64_t>(ReadInteger<int64_t>(text).value);
}

// A point before the first colon ends the days; the time begins after it. Without one the time begins at index 0. A
// text without a colon is refused. If the third unit after the point is a colon, as in a text that was written here,
// the search for a colon isn't needed.
//
// The thresholds for the parts of the time are those of ZrTimeStringToDateTimeStruct, counted from where it begins.
uint8_t ZrTimeSpanStringToTimeSpan(ZRSTR string, ZRTIMESPAN* span) noexcept {
  if (span == nullptr) return 0;
  *span = 0;
  const CTextView text = ViewOf(string);
  if (text.size() < 2) return 0;
  std::size_t mark = 0;  // the first dot or colon
  while (mark < text.size() && text[mark] != ':' && text[mark] != '.') ++mark;
  if (mark == text.size()) return 0;

  uint64_t days = 0;
  std::size_t at = 0;
  if (text[mark] == '.') {
    at = mark + 1;
    const bool hasColonInPlace = text.size() - at > 2 && text[at + 2] == ':';
    if (!hasColonInPlace && text.find(WCHAR{':'}, at) == CTextView::npos) return 0;
    days = ReadDays(text.substr(0, mark));
  }
  int32_t seconds, ticks = 0;
  const std::size_t left = text.size() - at;
  if (left >= CPlainTime::kLength && CPlainTime(text.data() + at).IsPlain()) {
    const CPlainTime time(text.data() + at);
    seconds = (time.Hour() * 60 + time.Minute()) * 60 + time.Second();
    ticks = time.Ticks();
  } else {
    seconds = ReadPlace<2>(text, at) * 3600;
    if (left >= 4) seconds += ReadPlace<2>(text, at + 3) * 60;
    if (left >= 8) seconds += ReadPlace<2>(text, at + 6);
    if (left >= 15) {
      ticks = ReadPlace<7>(text, at + 9);
    } else if (left >= 11) {
      ticks = ReadPlace<3>(text, at + 9) * 10000;
    }
  }
  // Unsigned, because a large number of days must wrap rather than overflow.
  const uint64_t allSeconds = days * 86400 + static_cast<uint64_t>(int64_t{seconds});
  *span = static_cast<ZRTIMESPAN>(allSeconds * ZR_TICKS_PER_SECOND + static_cast<uint64_t>(int64_t{ticks}));
  return 1;
}
