#include "host/value_text.h"

#include <zrcore/zrcore.h>

#include <cmath>
#include <new>

#include "owners.h"

static constexpr const char16_t* kWeekdays[] = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};

bool IsReal(uint16_t type) noexcept { return type == ZR_VT_R4 || type == ZR_VT_R8; }

bool IsNumber(uint16_t type) noexcept { return (type >= ZR_VT_I1 && type <= ZR_VT_UI8) || IsReal(type); }

static std::u16string LibraryText(const ZRVARIANT& value) {
  CVariantOwner text;
  if (ZR_FAILED(ZrVariantChangeType(text.Address(), &value, 0, ZR_VT_STR))) return {};
  return std::u16string(Units(text.Get().Value.string));
}

// Without those that end a fraction. The library writes all digits, six of a real number and seven of a time.
static std::u16string WithoutZeros(std::u16string text) {
  if (FractionLength(text) == 0) return text;  // such as an infinity
  text.resize(text.find_last_not_of(u'0') + 1);
  if (text.back() == u'.') text.pop_back();
  return text;
}

static std::u16string RealText(const ZRVARIANT& value, unsigned fraction) {
  CVariantOwner real;
  (void)ZrVariantChangeType(real.Address(), &value, 0, ZR_VT_R8);
  ZRVARIANT rounded = real.Get();
  const double scale = std::pow(10, fraction);
  if (std::fabs(rounded.Value.r8) < 1e9) rounded.Value.r8 = std::round(rounded.Value.r8 * scale) / scale;
  return WithoutZeros(LibraryText(rounded));
}

static std::u16string RefText(const ZRVARIANT& value) {
  std::u16string text = LibraryText(value);
  while (text.size() > 2 && text.compare(text.size() - 2, 2, u".0") == 0) text.resize(text.size() - 2);
  return text;
}

static std::u16string DateText(ZRDATETIME date, bool hasTime) {
  ZRDATETIMESTRUCT fields = {};
  ZrDateTimeToStruct(date, &fields);
  const bool showsTime = hasTime && date % ZR_TICKS_PER_DAY != 0;
  const StringOwner text(showsTime ? ZrDateTimeStructToDateTimeString(&fields, 0)
                                   : ZrDateTimeStructToDateString(&fields));
  if (text == nullptr) throw std::bad_alloc();
  return kWeekdays[fields.dayOfWeek % 7] + (u" " + std::u16string(Units(text.get())));
}

std::u16string ValueText(const ZRVARIANT& value, unsigned fraction) {
  if (value.Type == ZR_VT_DATETIME) return DateText(value.Value.dateTime, fraction > 0);
  if (value.Type == ZR_VT_TIME) return WithoutZeros(LibraryText(value));
  if (value.Type == ZR_VT_REF) return RefText(value);
  return IsReal(value.Type) ? RealText(value, fraction) : LibraryText(value);
}

unsigned FractionLength(const std::u16string& text) {
  const std::size_t point = text.find(u'.');
  return point == text.npos ? 0 : static_cast<unsigned>(text.size() - point - 1);
}

void FillFraction(std::u16string& number, unsigned length) {
  const unsigned has = FractionLength(number);
  const bool isFinite = !number.empty() && number.back() >= u'0' && number.back() <= u'9';
  if (has >= length || !isFinite) return;
  if (has == 0) number += u'.';
  number.append(length - has, u'0');
}
