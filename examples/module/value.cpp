#include "module/value.h"

#include <cstdint>
#include <limits>
#include <new>
#include <tuple>

#include "string_owner.h"

uint32_t countedHandles = 0;

static constexpr const WCHAR* kWeekdays[] = {W("Sun"), W("Mon"), W("Tue"), W("Wed"), W("Thu"), W("Fri"), W("Sat")};

static StringOwner Made(ZRSTR string) {
  if (string == nullptr) throw std::bad_alloc();
  return StringOwner(string);
}

static WideText Taken(ZRSTR string) { return WideText(Units(Made(string).get())); }

static WideText Number(std::uint64_t number) {
  const std::string digits = std::to_string(number);
  return WideText(digits.begin(), digits.end());
}

ValueKind KindOfTitle(WideView title) {
  if (title == W("Body")) return ValueKind::Identity;
  if (title == W("Place")) return ValueKind::Place;
  if (title == W("Discovered")) return ValueKind::Moment;
  if (title == W("Period d")) return ValueKind::Span;
  if (title == W("Note")) return ValueKind::Bytes;
  return ValueKind::Text;
}

// ---- Reading: each tells whether the text is one of its kind -------------------------------------------------------

// The text has as many numbers as are not 0 at the end; a REF has six.
static bool ReadPlace(WideView text, Value& value) {
  WideText numbers(text);
  int dots = 0;
  for (const WCHAR unit : text) dots += unit == W('.') ? 1 : 0;
  for (; dots < 5; ++dots) numbers += W(".0");
  ZRREF* ref = nullptr;
  if (ZR_FAILED(ZrStringToREF(Made(MakeString(numbers)).get(), &ref))) return false;
  Own(value.place, ref);
  return true;
}

static bool ReadMoment(WideView text, Value& value) {
  ZRDATETIMESTRUCT fields = {};
  if (ZrDateTimeStringToDateTimeStruct(Made(MakeString(text)).get(), &fields) == 0) return false;
  ZrDateTimeFromStruct(&fields, &value.moment);
  // The library reads what it can and reckons with any field. Only a true date comes back as it went in.
  ZrDateTimeToStruct(value.moment, &fields);
  return Taken(ZrDateTimeStructToDateString(&fields)) == text;
}

// Decimal days become ticks without a detour by floating point: nine places of them are whole ticks.
static bool ReadSpan(WideView text, Value& value) {
  std::int64_t placeTicks = 0;  // of the place behind the point that was read last; 0 in front of the point
  bool hasDigit = false;
  for (const WCHAR unit : text) {
    if (unit == W('.') && placeTicks == 0) {
      placeTicks = ZR_TICKS_PER_DAY;
      continue;
    }
    if (unit < W('0') || unit > W('9')) return false;
    if (value.span > std::numeric_limits<std::int64_t>::max() / 100) return false;
    hasDigit = true;
    if (placeTicks == 0) {
      value.span = value.span * 10 + (unit - W('0')) * ZR_TICKS_PER_DAY;
    } else {
      if (placeTicks % 10 != 0) return false;
      placeTicks /= 10;
      value.span += (unit - W('0')) * placeTicks;
    }
  }
  return hasDigit;
}

static bool ReadBytes(WideView text, Value& value) {
  if (text.find(W('\0')) != text.npos) return false;  // would end the conversion
  const StringOwner string = Made(MakeString(text));
  std::string bytes(static_cast<std::size_t>(ZrZRSTRtoUTF8(string.get(), nullptr, 0)), '\0');
  const std::int32_t size = static_cast<std::int32_t>(bytes.size());
  if (size < 2 || ZrZRSTRtoUTF8(string.get(), bytes.data(), size) != size) return false;
  Own(value.bytes, ZrCreateBlob(static_cast<std::uint32_t>(size - 1), bytes.data()));  // without the zero byte
  return true;
}

static bool Read(ValueKind kind, WideView text, Value& value) {
  switch (kind) {
    case ValueKind::Text:
      return false;
    case ValueKind::Identity:
      Own(value.identity, ZrGenerateUUID());
      return true;
    case ValueKind::Place:
      return ReadPlace(text, value);
    case ValueKind::Moment:
      return ReadMoment(text, value);
    case ValueKind::Span:
      return ReadSpan(text, value);
    case ValueKind::Bytes:
      return ReadBytes(text, value);
  }
  return false;
}

Value ReadValue(ValueKind kind, WideView text) {
  Value value;
  if (!text.empty() && Read(kind, text, value)) value.kind = kind;
  return value;
}

// ---- Writing -------------------------------------------------------------------------------------------------------

static WideText FullPlace(const ZRREF& place) {
  ZRSTR text = nullptr;
  (void)ZrREFToString(&place, &text);
  return Taken(text);
}

static WideText ShortPlace(const ZRREF& place) {
  WideText text = FullPlace(place);
  while (text.size() > 2 && text.compare(text.size() - 2, 2, W(".0")) == 0) text.resize(text.size() - 2);
  return text;
}

static WideText ShortMoment(ZRDATETIME moment) {
  ZRDATETIMESTRUCT fields = {};
  ZrDateTimeToStruct(moment, &fields);
  return kWeekdays[fields.dayOfWeek % 7] + (W(" ") + Taken(ZrDateTimeStructToDateString(&fields)));
}

static WideText FullMoment(ZRDATETIME moment) {
  ZRDATETIMESTRUCT then = {};
  ZRDATETIMESTRUCT now = {};
  ZrDateTimeToStruct(moment, &then);
  ZrDateTimeToStruct(ZrGetNow(0), &now);
  int years = now.year - then.year;
  if (std::tie(now.month, now.day) < std::tie(then.month, then.day)) --years;
  WideText text = Taken(ZrDateTimeStructToDateTimeString(&then, 1));
  if (years > 0)
    text += W(", ") + Number(static_cast<std::uint64_t>(years)) + (years == 1 ? W(" year ago") : W(" years ago"));
  return text;
}

static WideText FullSpan(ZRTIMESPAN span) {
  const WideText text = Taken(ZrTimeSpanToTimeSpanString(span));
  return text.substr(text.find_first_not_of(W(' ')));  // the days are padded
}

// Two units that suit the length, in at most nine columns: "1d 18:27", "365d 06h", "60189d".
static WideText ShortSpan(ZRTIMESPAN span) {
  const WideText text = FullSpan(span);
  const std::size_t hour = text.find(W(':')) - 2;
  const WideText days = hour == 0 ? W("0") : text.substr(0, hour - 1);
  if (days.size() > 4) return days + W("d");
  if (days.size() > 2) return days + W("d ") + text.substr(hour, 2) + W("h");
  return days + W("d ") + text.substr(hour, 5);
}

// Reading at an offset leaves the blob as it is, shared or not.
static std::string Bytes(ZRBLOB blob) {
  std::uint32_t length = 0;
  (void)ZrBlobByteLen(blob, &length);
  std::string bytes(length, '\0');
  (void)ZrReadBlobPos(blob, bytes.data(), 0, length);
  return bytes;
}

static WideText BytesText(ZRBLOB blob) {
  const std::string bytes = Bytes(blob);
  ZRSTR text = nullptr;
  (void)ZrCreateZRSTRfromUTF8(bytes.c_str(), static_cast<std::int32_t>(bytes.size()), &text);
  return Taken(text);
}

static WideText FullBytes(ZRBLOB blob) {
  constexpr std::size_t kShown = 9;
  const std::string bytes = Bytes(blob);
  WideText text = Number(bytes.size()) + (bytes.size() == 1 ? W(" byte:") : W(" bytes:"));
  for (std::size_t i = 0; i < bytes.size() && i < kShown; ++i) {
    const unsigned byte = static_cast<unsigned char>(bytes[i]);
    text += {W(' '), W("0123456789ABCDEF")[byte >> 4], W("0123456789ABCDEF")[byte & 15]};
  }
  return bytes.size() > kShown ? text + W(" …") : text;
}

WideText ShortText(const Value& value, WideView text) {
  switch (value.kind) {
    case ValueKind::Text:
    case ValueKind::Identity:
      break;
    case ValueKind::Place:
      return ShortPlace(*value.place);
    case ValueKind::Moment:
      return ShortMoment(value.moment);
    case ValueKind::Span:
      return ShortSpan(value.span);
    case ValueKind::Bytes:
      return BytesText(value.bytes.get());
  }
  return WideText(text);
}

WideText FullText(const Value& value) {
  ZRSTR text = nullptr;
  switch (value.kind) {
    case ValueKind::Text:
      break;
    case ValueKind::Identity:
      (void)ZrStringFromUUID(value.identity.get(), &text);
      return Taken(text);
    case ValueKind::Place:
      return FullPlace(*value.place);
    case ValueKind::Moment:
      return FullMoment(value.moment);
    case ValueKind::Span:
      return FullSpan(value.span);
    case ValueKind::Bytes:
      return FullBytes(value.bytes.get());
  }
  return {};
}
