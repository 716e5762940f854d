// Date and time: the current time, values and records, and seconds since 1970. The calendar itself is in date_time.h.
//
// The platform layer returns local and universal times as CClockFields. Fields that aren't a date and time, such as the
// zeros that it returns after a failure, become the value 0, which is not reported as an error.

#include "time/date_time.h"

#include "platform/clock.h"

// The last year that the system's own records of time represent. A value can represent a part of the year 30828, too.
static constexpr uint32_t kLastSystemYear = 30827;

// Checks each field, and the day against its month. DateTimeOf would accept any fields and carry them over.
static bool IsValid(const CClockFields& fields) noexcept {
  const auto isWithin = [](int32_t value, int32_t least, int32_t most) { return value >= least && value <= most; };
  if (!isWithin(fields.year, kFirstYear, kLastSystemYear) || !isWithin(fields.month, 1, 12)) return false;
  const auto month = static_cast<std::size_t>(fields.month);
  const int32_t nextMonth = month == 12 ? 365 : kDaysBeforeMonth[month + 1];
  const int32_t leapDay = month == 2 && IsLeapYear(static_cast<uint32_t>(fields.year)) ? 1 : 0;
  return isWithin(fields.day, 1, nextMonth - kDaysBeforeMonth[month] + leapDay) && isWithin(fields.hour, 0, 23) &&
         isWithin(fields.minute, 0, 59) && isWithin(fields.second, 0, 59) && isWithin(fields.millisecond, 0, 999);
}

// Returns 0 for fields that aren't a date and time.
static ZRDATETIME DateTimeOfFields(const CClockFields& fields) noexcept {
  if (!IsValid(fields)) return 0;
  ZRDATETIMESTRUCT record{};
  record.year = static_cast<int16_t>(fields.year);
  record.month = static_cast<int8_t>(fields.month);
  record.day = static_cast<int8_t>(fields.day);
  record.hour = static_cast<int8_t>(fields.hour);
  record.minute = static_cast<int8_t>(fields.minute);
  record.second = static_cast<int8_t>(fields.second);
  record.fraction = fields.millisecond * 10000;
  return DateTimeOf(record);
}

// ---- Values and records --------------------------------------------------------------------------------------------

ZRDATETIME ZrGetNow(uint8_t universal) noexcept {
  return DateTimeOfFields(universal != 0 ? PlatformUniversalNow() : PlatformLocalNow());
}

// By contract, only `value` is checked: a null `record` is undefined behaviour unless `value` is null, too.
void ZrDateTimeFromStruct(const ZRDATETIMESTRUCT* record, ZRDATETIME* value) noexcept {
  if (value != nullptr) *value = DateTimeOf(*record);
}

void ZrDateTimeToStruct(ZRDATETIME value, ZRDATETIMESTRUCT* record) noexcept {
  if (record != nullptr) *record = RecordOf(value);
}

// ---- Seconds since 1970 --------------------------------------------------------------------------------------------

// A moment outside the years 1970 to 3000 isn't a failure: the platform layer returns zeros, so the value is 0.
ZRRESULT ZrDateTimeFromTimeT(int64_t timeT, ZRDATETIME* value) noexcept {
  if (value == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *value = DateTimeOfFields(PlatformLocalTime(timeT));
  return ZR_R_OK;
}

// Returns the moment of a value that isn't negative. The fields of such a value are always a valid date and time, so
// only the year can be refused. Callers rely on three different results: a year below 1900 is the moment 0 and a
// success, the years 1900 to 1969 throw ZR_RAISED_NO_TIME_T, and any other local time without a moment throws
// ZR_RAISED_INVALID_TIME.
static int64_t MomentOf(ZRDATETIME value) {
  const CDate date = DateOf(static_cast<uint32_t>(value / ZR_TICKS_PER_DAY));
  if (date.year < 1900) return 0;
  if (date.year < 1970) throw CZrException{ZR_RAISED_NO_TIME_T};
  const ZRDATETIMESTRUCT record = RecordOf(value);
  int64_t moment = 0;
  if (!PlatformMomentOf({static_cast<int32_t>(date.year), record.month, record.day, record.hour, record.minute,
                         record.second, record.millisecond},
                        moment)) {
    throw CZrException{ZR_RAISED_INVALID_TIME};
  }
  return moment;
}

// `timeT` is checked after the exceptions, by contract.
ZRRESULT ZrDateTimeToTimeT(ZRDATETIME value, int64_t* timeT) {
  if (value < 0) return ZR_R_FAILED;
  const int64_t moment = MomentOf(value);
  if (timeT == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *timeT = moment;
  return ZR_R_OK;
}
