#include "module/cell.h"

#include <new>
#include <string_view>

static constexpr const char16_t* kWeekdays[] = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};
static constexpr std::u16string_view kMark = u" ✗";

static ZRRESULT Convert(const ZRVARIANT& source, uint16_t type, CVariantOwner& target) {
  const ZRRESULT result = ZrVariantChangeType(target.Address(), &source, 0, type);
  if (result == ZR_R_NO_MEMORY) throw std::bad_alloc();
  return result;
}

static std::u16string TextOf(const ZRVARIANT& value) {
  CVariantOwner text;
  if (ZR_FAILED(Convert(value, ZR_VT_STR, text))) return {};
  return std::u16string(Units(text.Get().Value.string));
}

// ---- Reading -------------------------------------------------------------------------------------------------------

// The library reads a date as far as it can and reckons with any field.
static bool ReadsBack(const ZRVARIANT& source, const ZRVARIANT& converted) {
  if (source.Type != ZR_VT_STR || converted.Type != ZR_VT_DATETIME) return true;
  const std::u16string_view written = Units(source.Value.string);
  return TextOf(converted).compare(0, written.size(), written) == 0;
}

TableCell ReadCell(const ZRVARIANT& source, uint16_t type) {
  TableCell cell;
  cell.conversion = ZrVariantCopyInd(cell.value.Address(), &source);
  if (ZR_FAILED(cell.conversion)) return cell;
  if (ZrVariantIsContentEmpty(&cell.value.Get()) != 0) return TableCell();

  CVariantOwner converted;
  cell.conversion = Convert(cell.value.Get(), type, converted);
  if (ZR_FAILED(cell.conversion)) return cell;
  if (ReadsBack(cell.value.Get(), converted.Get())) {
    cell.value = std::move(converted);
  } else {
    cell.conversion = ZR_R_INVALID_ARGUMENTS;
  }
  return cell;
}

// ---- Writing -------------------------------------------------------------------------------------------------------

bool IsReal(uint16_t type) noexcept { return type == ZR_VT_R4 || type == ZR_VT_R8; }

bool IsNumber(uint16_t type) noexcept { return (type >= ZR_VT_I1 && type <= ZR_VT_UI8) || IsReal(type); }

// Six digits stand behind the point; those that say nothing go.
static std::u16string RealText(const ZRVARIANT& value) {
  std::u16string text = TextOf(value);
  text.resize(text.find_last_not_of(u'0') + 1);
  if (!text.empty() && (text.back() == u'.' || text.back() == u',')) text.pop_back();
  return text;
}

// The numbers at the end that are all 0 go, but for the first.
static std::u16string RefText(const ZRVARIANT& value) {
  std::u16string text = TextOf(value);
  while (text.size() > 2 && text.compare(text.size() - 2, 2, u".0") == 0) text.resize(text.size() - 2);
  return text;
}

static std::u16string DateText(const ZRVARIANT& value) {
  ZRDATETIMESTRUCT fields = {};
  ZrDateTimeToStruct(value.Value.dateTime, &fields);
  const bool isMidnight = value.Value.dateTime % ZR_TICKS_PER_DAY == 0;
  const StringOwner text(isMidnight ? ZrDateTimeStructToDateString(&fields)
                                    : ZrDateTimeStructToDateTimeString(&fields, 0));
  if (text == nullptr) throw std::bad_alloc();
  return kWeekdays[fields.dayOfWeek % 7] + (u" " + std::u16string(Units(text.get())));
}

std::u16string CellText(const TableCell& cell) {
  const ZRVARIANT& value = cell.value.Get();
  if (ZR_FAILED(cell.conversion)) return TextOf(value).append(kMark);
  if (value.Type == ZR_VT_DATETIME) return DateText(value);
  if (value.Type == ZR_VT_REF) return RefText(value);
  return IsReal(value.Type) ? RealText(value) : TextOf(value);
}
