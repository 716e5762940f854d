// The texts of date and time. Numbers that fill their places go two digits at a time, straight into the string; any
// other record takes the slow road, through a buffer.

#include "time/date_time_text.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "text/decimal_digits.h"
#include "time/date_time.h"
#include "time/time_text.h"

// ---- Reading -------------------------------------------------------------------------------------------------------

static void SetTime(ZRDATETIMESTRUCT& record, const CPlainTime& time) noexcept {
  record.hour = static_cast<int8_t>(time.Hour());
  record.minute = static_cast<int8_t>(time.Minute());
  record.second = static_cast<int8_t>(time.Second());
  record.fraction = time.Ticks();
  record.millisecond = static_cast<int16_t>(record.fraction / 10000);  // its first three digits
}

// The form that is written: year first, a digit at every place. False for any other, with `record` as it was.
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

static void ReadAnyTime(CTextView text, ZRDATETIMESTRUCT& record) noexcept {
  record.hour = static_cast<int8_t>(ReadPlace<2>(text, 0));
  if (text.size() >= 4) record.minute = static_cast<int8_t>(ReadPlace<2>(text, 3));
  if (text.size() >= 8) record.second = static_cast<int8_t>(ReadPlace<2>(text, 6));
  if (text.size() >= 11) record.millisecond = static_cast<int16_t>(ReadPlace<3>(text, 9));
  record.fraction = text.size() >= 15 ? ReadPlace<7>(text, 9) : record.millisecond * 10000;
}

uint8_t ZrDateTimeStringToDateTimeStruct(ZRSTR string, ZRDATETIMESTRUCT* record) noexcept {
  if (record == nullptr) return 0;
  *record = ZRDATETIMESTRUCT{};
  const CTextView text = ViewOf(string);
  if (text.size() < 10) return 0;
  if (!ReadPlainDateTime(text, *record)) ReadAnyDateTime(text, *record);
  record->dayOfWeek = DayOfWeekOf(*record);
  return 1;
}

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

static constexpr std::size_t kDateLength = 10, kTimeLength = 8;  // of records whose numbers fill their places
static constexpr std::size_t kFractionLength = 8, kMillisecondLength = 4;

// The longest text of a record: a year of 6 units, five fields of 4, a fraction of 11, six marks; and the blanks of the
// time's second form.
static constexpr std::size_t kMostUnits = 48;
using CBuffer = std::array<WCHAR, kMostUnits>;

static bool FillsTwo(int8_t value) noexcept { return static_cast<uint8_t>(value) <= 99; }

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

static WCHAR* WriteOddDate(WCHAR* at, const ZRDATETIMESTRUCT& record) noexcept {
  at = WritePadded(at, record.year, 4, Pad::Blanks);
  *at++ = '-';
  at = WritePadded(at, record.month, 2, Pad::Zeros);
  *at++ = '-';
  return WritePadded(at, record.day, 2, Pad::Zeros);
}

static WCHAR* WriteOddTime(WCHAR* at, const ZRDATETIMESTRUCT& record) noexcept {
  at = WritePadded(at, record.hour, 2, Pad::Zeros);
  *at++ = ':';
  at = WritePadded(at, record.minute, 2, Pad::Zeros);
  *at++ = ':';
  return WritePadded(at, record.second, 2, Pad::Zeros);
}

static WCHAR* WriteOddPart(WCHAR* at, int32_t value, std::size_t width) noexcept {
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
  return NewString(buffer.data(), WriteOddPart(WriteOddTime(buffer.data(), record), record.fraction, 7));
}

ZRSTR ZrDateTimeStructToDateString(const ZRDATETIMESTRUCT* record) noexcept {
  if (record == nullptr) return nullptr;
  if (HasPlainDate(*record)) {
    ZRSTR string = AllocateText(kDateLength);
    if (string != nullptr) WritePlainDate(string, *record);
    return string;
  }
  CBuffer buffer;
  return NewString(buffer.data(), WriteOddDate(buffer.data(), *record));
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
  WCHAR* at = WriteOddDate(buffer.data(), *record);
  *at++ = ' ';
  at = WriteOddTime(at, *record);
  at = withFraction != 0 ? WriteOddPart(at, record->fraction, 7) : WriteOddPart(at, record->millisecond, 3);
  return NewString(buffer.data(), at);
}

ZRSTR ZrDateTimeStructToTimeString(const ZRDATETIMESTRUCT* record) noexcept {
  return record != nullptr ? FormatTime(*record, true) : nullptr;
}
