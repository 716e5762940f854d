// Parses and formats the texts of date and time.
//
// Every number has a fixed place in the text, counted from its beginning:
//
//     0    5  8  11 14 17 20              0  3  6    11 14 17 20              0  3  6  9
//     2012-03-04 05:06:07.1234567         04.03.2012 05:06:07.1234567         05:06:07.1234567
//
// Both directions have two ways with the same result. The plain way is for records and texts whose numbers have exactly
// as many digits as their places. It converts several digits at once and writes straight into the string. The general
// way is for all others, because callers may pass any text and any record, and nothing is validated:
//
//   - Parsing reads as much of a number as is there: white space, a sign, digits. What is left out is 0.
//   - Formatting writes fields as signed numbers. One that is too long for its place makes the text longer. It goes
//     through a buffer, because the length isn't known before.

#include "time/date_time_text.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "text/decimal_digits.h"
#include "time/date_time.h"
#include "time/time_digits.h"

// ---- Reading -------------------------------------------------------------------------------------------------------

static void SetTime(ZRDATETIMESTRUCT& record, const CPlainTime& time) noexcept {
  record.hour = static_cast<int8_t>(time.Hour());
  record.minute = static_cast<int8_t>(time.Minute());
  record.second = static_cast<int8_t>(time.Second());
  record.fraction = time.Ticks();
  record.millisecond = static_cast<int16_t>(record.fraction / 10000);  // the first three of its seven digits
}

// Parses the form that is written: the year first, and a digit at every place. The characters between the places may be
// any, except the first hyphen, which says that the year comes first. Returns false for any other text and leaves
// `record` unchanged.
static bool ReadPlainDateTime(CTextView text, ZRDATETIMESTRUCT& record) noexcept {
  constexpr std::size_t kTimeAt = 11;
  if (text.size() < kTimeAt + CPlainTime::kLength || text[4] != '-') return false;
  const CFourPlaces year(text.data()), monthAndDay(text.data() + 5, text.data() + 8);
  const CPlainTime time(text.data() + kTimeAt);
  if (!year.AreDigits() || !monthAndDay.AreDigits() || !time.IsPlain()) return false;
  record.year = static_cast<int16_t>(year.Number());
  record.month = static_cast<int8_t>(monthAndDay.Pair());
  record.day = static_cast<int8_t>(monthAndDay.OtherPair());
  SetTime(record, time);
  return true;
}

// Parses any text of at least ten units. The year comes first if the first hyphen of the text is at index 4.
//
// A field is read if the text reaches at least its first digit; two thresholds are different, and callers rely on them.
// The part below a second is read from 22 units on, as three digits of milliseconds. From 26 units on its seven places
// are read as ticks instead. So six digits after the point, as in "....07.123456", mean 123456 ticks, not 123456
// microseconds.
static void ReadAnyDateTime(CTextView text, ZRDATETIMESTRUCT& record) noexcept {
  const bool isYearFirst = text.find(WCHAR{'-'}) == 4;
  record.year = static_cast<int16_t>(ReadPlace<4>(text, isYearFirst ? 0 : 6));
  record.month = static_cast<int8_t>(ReadPlace<2>(text, isYearFirst ? 5 : 3));
  record.day = static_cast<int8_t>(ReadPlace<2>(text, isYearFirst ? 8 : 0));
  if (text.size() >= 12) record.hour = static_cast<int8_t>(ReadPlace<2>(text, 11));
  if (text.size() >= 15) record.minute = static_cast<int8_t>(ReadPlace<2>(text, 14));
  if (text.size() >= 18) record.second = static_cast<int8_t>(ReadPlace<2>(text, 17));
  if (text.size() >= 22) record.millisecond = static_cast<int16_t>(ReadPlace<3>(text, 20));
  record.fraction = text.size() >= 26 ? ReadPlace<7>(text, 20) : record.millisecond * 10000;
}

// As above, for a time alone, which begins at index 0. The thresholds are those of a date and time less eleven, except
// that the seconds need both of their digits: eight units, not seven.
static void ReadAnyTime(CTextView text, ZRDATETIMESTRUCT& record) noexcept {
  record.hour = static_cast<int8_t>(ReadPlace<2>(text, 0));
  if (text.size() >= 4) record.minute = static_cast<int8_t>(ReadPlace<2>(text, 3));
  if (text.size() >= 8) record.second = static_cast<int8_t>(ReadPlace<2>(text, 6));
  if (text.size() >= 11) record.millisecond = static_cast<int16_t>(ReadPlace<3>(text, 9));
  record.fraction = text.size() >= 15 ? ReadPlace<7>(text, 9) : record.millisecond * 10000;
}

// The record is zeroed first: it is all zeros for a text that is refused, and fields that aren't read stay zero.
uint8_t ZrDateTimeStringToDateTimeStruct(ZRSTR string, ZRDATETIMESTRUCT* record) noexcept {
  if (record == nullptr) return 0;
  *record = ZRDATETIMESTRUCT{};
  const CTextView text = ViewOf(string);
  if (text.size() < 10) return 0;
  if (!ReadPlainDateTime(text, *record)) ReadAnyDateTime(text, *record);
  record->dayOfWeek = DayOfWeekOf(*record);
  return 1;
}

// The date stays zero, which is day 0, a Monday, for the day of the week.
uint8_t ZrTimeStringToDateTimeStruct(ZRSTR string, ZRDATETIMESTRUCT* record) noexcept {
  if (record == nullptr) return 0;
  *record = ZRDATETIMESTRUCT{};
  const CTextView text = ViewOf(string);
  if (text.size() < 2) return 0;
  if (text.size() >= CPlainTime::kLength && CPlainTime(text.data()).IsPlain()) {
    SetTime(*record, CPlainTime(text.data()));
  } else {
    ReadAnyTime(text, *record);
  }
  record->dayOfWeek = DayOfWeekOf(*record);
  return 1;
}

// ---- Writing -------------------------------------------------------------------------------------------------------

static constexpr std::size_t kDateLength = 10, kTimeLength = 8;            // of plain records
static constexpr std::size_t kFractionLength = 8, kMillisecondLength = 4;  // with the point

// At least the longest text of a record, which has 43 units: a year of 6 ("-32768"), five fields of 4 ("-128"), a
// fraction of 11 ("-2147483648"), and six separators. The spaced form of the time is shorter.
static constexpr std::size_t kMostUnits = 48;
using CBuffer = std::array<WCHAR, kMostUnits>;

// Whether a field has at most two digits and no sign. A negative number becomes a large one when it is made unsigned.
static bool FillsTwo(int8_t value) noexcept { return static_cast<uint8_t>(value) <= 99; }

// A year below 1000 isn't plain because it is padded with blanks, not with zeros.
static bool HasPlainDate(const ZRDATETIMESTRUCT& record) noexcept {
  return record.year >= 1000 && record.year <= 9999 && FillsTwo(record.month) && FillsTwo(record.day);
}

static bool HasPlainTime(const ZRDATETIMESTRUCT& record) noexcept {
  return FillsTwo(record.hour) && FillsTwo(record.minute) && FillsTwo(record.second);
}

static bool HasPlainFraction(const ZRDATETIMESTRUCT& record) noexcept {
  return static_cast<uint32_t>(record.fraction) <= 9999999;
}

static bool HasPlainMillisecond(const ZRDATETIMESTRUCT& record) noexcept {
  return static_cast<uint16_t>(record.millisecond) <= 999;
}

static void WritePlainDate(WCHAR* at, const ZRDATETIMESTRUCT& record) noexcept {
  WriteFourDigits(at, static_cast<uint32_t>(record.year));
  at[4] = '-';
  WriteTwoDigits(at + 5, static_cast<uint32_t>(record.month));
  at[7] = '-';
  WriteTwoDigits(at + 8, static_cast<uint32_t>(record.day));
}

static void WritePlainTime(WCHAR* at, const ZRDATETIMESTRUCT& record) noexcept {
  WriteTwoDigits(at, static_cast<uint32_t>(record.hour));
  at[2] = ':';
  WriteTwoDigits(at + 3, static_cast<uint32_t>(record.minute));
  at[5] = ':';
  WriteTwoDigits(at + 6, static_cast<uint32_t>(record.second));
}

static void WritePlainFraction(WCHAR* at, const ZRDATETIMESTRUCT& record) noexcept {
  at[0] = '.';
  WriteSevenDigits(at + 1, static_cast<uint32_t>(record.fraction));
}

// These three write the same forms for any record and return the place after the last unit. They correspond to the
// formats "%4d-%02d-%02d", "%02d:%02d:%02d" and ".%07d" or ".%03d" of printf.
static WCHAR* WriteIrregularDate(WCHAR* at, const ZRDATETIMESTRUCT& record) noexcept {
  at = WritePadded(at, record.year, 4, Pad::Blanks);
  *at++ = '-';
  at = WritePadded(at, record.month, 2, Pad::Zeros);
  *at++ = '-';
  return WritePadded(at, record.day, 2, Pad::Zeros);
}

static WCHAR* WriteIrregularTime(WCHAR* at, const ZRDATETIMESTRUCT& record) noexcept {
  at = WritePadded(at, record.hour, 2, Pad::Zeros);
  *at++ = ':';
  at = WritePadded(at, record.minute, 2, Pad::Zeros);
  *at++ = ':';
  return WritePadded(at, record.second, 2, Pad::Zeros);
}

static WCHAR* WriteIrregularFraction(WCHAR* at, int32_t value, std::size_t width) noexcept {
  *at++ = '.';
  return WritePadded(at, value, width, Pad::Zeros);
}

static WCHAR* WriteUnits(WCHAR* at, std::string_view ascii) noexcept {
  for (const char unit : ascii) *at++ = static_cast<WCHAR>(unit);
  return at;
}

// Fixed by contract. Formats as " %02d: %02d : %02d. %03d".
static ZRSTR FormatSpacedTime(const ZRDATETIMESTRUCT& record) noexcept {
  CBuffer buffer;
  WCHAR* at = WriteUnits(buffer.data(), " ");
  at = WritePadded(at, record.hour, 2, Pad::Zeros);
  at = WriteUnits(at, ": ");
  at = WritePadded(at, record.minute, 2, Pad::Zeros);
  at = WriteUnits(at, " : ");
  at = WritePadded(at, record.second, 2, Pad::Zeros);
  at = WriteUnits(at, ". ");
  return NewString(buffer.data(), WritePadded(at, record.millisecond, 3, Pad::Zeros));
}

ZRSTR FormatTime(const ZRDATETIMESTRUCT& record, bool withFraction) noexcept {
  if (!withFraction) return FormatSpacedTime(record);
  if (HasPlainTime(record) && HasPlainFraction(record)) {
    ZRSTR string = AllocateText(kTimeLength + kFractionLength);
    if (string == nullptr) return nullptr;
    WritePlainTime(string, record);
    WritePlainFraction(string + kTimeLength, record);
    return string;
  }
  CBuffer buffer;
  return NewString(buffer.data(),
                   WriteIrregularFraction(WriteIrregularTime(buffer.data(), record), record.fraction, 7));
}

ZRSTR ZrDateTimeStructToDateString(const ZRDATETIMESTRUCT* record) noexcept {
  if (record == nullptr) return nullptr;
  if (HasPlainDate(*record)) {
    ZRSTR string = AllocateText(kDateLength);
    if (string != nullptr) WritePlainDate(string, *record);
    return string;
  }
  CBuffer buffer;
  return NewString(buffer.data(), WriteIrregularDate(buffer.data(), *record));
}

ZRSTR ZrDateTimeStructToDateTimeString(const ZRDATETIMESTRUCT* record, uint8_t withFraction) noexcept {
  if (record == nullptr) return nullptr;
  const bool isPlain = HasPlainDate(*record) && HasPlainTime(*record) &&
                       (withFraction != 0 ? HasPlainFraction(*record) : HasPlainMillisecond(*record));
  if (isPlain) {
    constexpr std::size_t kPointAt = kDateLength + 1 + kTimeLength;
    ZRSTR string = AllocateText(kPointAt + (withFraction != 0 ? kFractionLength : kMillisecondLength));
    if (string == nullptr) return nullptr;
    WritePlainDate(string, *record);
    string[kDateLength] = ' ';
    WritePlainTime(string + kDateLength + 1, *record);
    if (withFraction != 0) {
      WritePlainFraction(string + kPointAt, *record);
    } else {
      string[kPointAt] = '.';
      WriteThreeDigits(string + kPointAt + 1, static_cast<uint32_t>(record->millisecond));
    }
    return string;
  }
  CBuffer buffer;
  WCHAR* at = WriteIrregularDate(buffer.data(), *record);
  *at++ = ' ';
  at = WriteIrregularTime(at, *record);
  at = withFraction != 0 ? WriteIrregularFraction(at, record->fraction, 7)
                         : WriteIrregularFraction(at, record->millisecond, 3);
  return NewString(buffer.data(), at);
}

ZRSTR ZrDateTimeStructToTimeString(const ZRDATETIMESTRUCT* record) noexcept {
  return record != nullptr ? FormatTime(*record, true) : nullptr;
}
