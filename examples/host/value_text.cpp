// The library converts each value to text; this file shortens the text or adds to it for the table.

#include "host/value_text.h"

#include <zrcore/zrcore.h>

#include <cmath>
#include <new>

#include "code_units.h"
#include "owners.h"

static constexpr const WCHAR* kWeekdays[] = {W("Sun"), W("Mon"), W("Tue"), W("Wed"), W("Thu"), W("Fri"), W("Sat")};

bool IsReal(uint16_t type) noexcept { return type == ZR_VT_R4 || type == ZR_VT_R8; }

bool IsNumber(uint16_t type) noexcept { return (type >= ZR_VT_I1 && type <= ZR_VT_UI8) || IsReal(type); }

static WideText LibraryText(const ZRVARIANT& value) {
  CVariantOwner text;
  if (ZR_FAILED(ZrVariantChangeType(text.Address(), &value, 0, ZR_VT_STR))) return {};
  return WideText(Units(text.Get().Value.string));
}

// Removes the zeros at the end of a fraction. The library always writes six digits for a real number and seven for a
// time.
static WideText WithoutZeros(WideText text) {
  if (FractionLength(text) == 0) return text;  // no fraction, for example an infinity
  text.resize(text.find_last_not_of(W('0')) + 1);
  if (text.back() == W('.')) text.pop_back();
  return text;
}

static WideText RealText(const ZRVARIANT& value, unsigned fraction) {
  CVariantOwner real;
  (void)ZrVariantChangeType(real.Address(), &value, 0, ZR_VT_R8);
  ZRVARIANT rounded = real.Get();
  const double scale = std::pow(10, fraction);
  if (std::fabs(rounded.Value.r8) < 1e9) rounded.Value.r8 = std::round(rounded.Value.r8 * scale) / scale;
  return WithoutZeros(LibraryText(rounded));
}

static WideText RefText(const ZRVARIANT& value) {
  WideText text = LibraryText(value);
  while (text.size() > 2 && text.compare(text.size() - 2, 2, W(".0")) == 0) text.resize(text.size() - 2);
  return text;
}

static WideText DateText(ZRDATETIME date, bool hasTime) {
  ZRDATETIMESTRUCT fields = {};
  ZrDateTimeToStruct(date, &fields);
  const bool showsTime = hasTime && date % ZR_TICKS_PER_DAY != 0;
  const StringOwner text(showsTime ? ZrDateTimeStructToDateTimeString(&fields, 0)
                                   : ZrDateTimeStructToDateString(&fields));
  if (text == nullptr) throw std::bad_alloc();
  return kWeekdays[fields.dayOfWeek % 7] + (W(" ") + WideText(Units(text.get())));
}

WideText ValueText(const ZRVARIANT& value, unsigned fraction) {
  if (value.Type == ZR_VT_DATETIME) return DateText(value.Value.dateTime, fraction > 0);
  if (value.Type == ZR_VT_TIME) return WithoutZeros(LibraryText(value));
  if (value.Type == ZR_VT_REF) return RefText(value);
  return IsReal(value.Type) ? RealText(value, fraction) : LibraryText(value);
}

unsigned FractionLength(const WideText& text) {
  const std::size_t point = text.find(W('.'));
  return point == text.npos ? 0 : static_cast<unsigned>(text.size() - point - 1);
}

void FillFraction(WideText& number, unsigned length) {
  const unsigned has = FractionLength(number);
  const bool isFinite = !number.empty() && number.back() >= W('0') && number.back() <= W('9');
  if (has >= length || !isFinite) return;
  if (has == 0) number += W('.');
  number.append(length - has, W('0'));
}
