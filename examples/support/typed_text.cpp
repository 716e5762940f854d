// The library converts each value to text; this file shortens the text or adds to it for the table.

#include "support/typed_text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

struct NamedType {
  const char* name;
  uint16_t type;
};

// The types that the demo can convert a text to and show.
static constexpr NamedType kTypes[] = {
    {"STR", ZR_VT_STR}, {"BOOL", ZR_VT_BOOL}, {"I4", ZR_VT_I4},     {"UI4", ZR_VT_UI4},
    {"I8", ZR_VT_I8},   {"R4", ZR_VT_R4},     {"R8", ZR_VT_R8},     {"TIME", ZR_VT_TIME},
    {"REF", ZR_VT_REF}, {"SREF", ZR_VT_SREF}, {"UUID", ZR_VT_UUID}, {"DATETIME", ZR_VT_DATETIME},
};

ColumnTitle ReadColumnTitle(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  for (const NamedType& known : kTypes) {
    if (colon != text.npos && text.compare(colon + 1, text.npos, known.name) == 0) {
      return {text.substr(0, colon), known.type};
    }
  }
  return {text, ZR_VT_STR};
}

const char* TypeName(uint16_t type) {
  for (const NamedType& known : kTypes) {
    if (known.type == type) return known.name;
  }
  return "?";
}

bool IsReal(uint16_t type) { return type == ZR_VT_R4 || type == ZR_VT_R8; }

bool IsNumber(uint16_t type) { return (type >= ZR_VT_I1 && type <= ZR_VT_UI8) || IsReal(type); }

static std::string LibraryText(const zr::Variant& value) {
  return value.To<zr::String>().ValueOr(zr::String()).ToUtf8();
}

// The library always writes six digits after the point of a real number, and seven for a time.
static std::string WithoutZeros(std::string text) {
  if (text.find('.') == text.npos) return text;  // for example an infinity
  text.resize(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

int Decimals(const zr::Variant& value) {
  if (value.Type() == ZR_VT_DATETIME) return value.To<zr::DateTime>()->Ticks() % ZR_TICKS_PER_DAY != 0 ? 3 : 0;
  if (!IsReal(value.Type())) return 0;
  const std::string text = WithoutZeros(LibraryText(value));
  const std::size_t point = text.find('.');
  return point == text.npos ? 0 : static_cast<int>(text.size() - point - 1);
}

static std::string RealText(const zr::Variant& value, int decimals) {
  const double number = value.To<double>().ValueOr(0);
  if (!std::isfinite(number)) return LibraryText(value);
  char text[400];
  (void)std::snprintf(text, sizeof text, "%.*f", decimals, number);
  return text;
}

static std::string DateText(zr::DateTime date, int decimals) {
  static constexpr const char* kWeekdays[] = {"Sun ", "Mon ", "Tue ", "Wed ", "Thu ", "Fri ", "Sat "};
  const bool hasTime = decimals > 0 && date.Ticks() % ZR_TICKS_PER_DAY != 0;
  const std::size_t length = hasTime ? sizeof "2000-01-01 00:00:00.000" - 1 : sizeof "2000-01-01" - 1;
  return kWeekdays[date.Fields().dayOfWeek % 7] + date.ToString().ToUtf8().substr(0, length);
}

static std::string RefText(std::string text) {
  while (text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0) text.resize(text.size() - 2);
  return text;
}

std::string ValueText(const zr::Variant& value, int decimals) {
  if (value.Type() == ZR_VT_DATETIME) return DateText(*value.To<zr::DateTime>(), decimals);
  if (value.Type() == ZR_VT_TIME) return WithoutZeros(LibraryText(value));
  if (value.Type() == ZR_VT_REF) return RefText(LibraryText(value));
  return IsReal(value.Type()) ? RealText(value, decimals) : LibraryText(value);
}
