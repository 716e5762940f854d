// Conversion to text.

#include "variants/text_target.h"

#include <array>

#include "blobs/blob_handle.h"
#include "text/code_units.h"
#include "text/counted_string.h"
#include "text/decimal_digits.h"
#include "text/real_text.h"
#include "time/date_time.h"
#include "time/date_time_text.h"
#include "time/time_text.h"
#include "zrcore/unicode.h"

template <std::size_t size>
static ZRSTR NewWord(const std::array<WCHAR, size>& word) noexcept {
  return NewString(word.data(), word.data() + size - 1);
}

static ZRSTR BooleanText(uint8_t boolean) noexcept {
  static constexpr auto kTrue = WideLiteral("TRUE");
  static constexpr auto kFalse = WideLiteral("FALSE");
  return boolean != 0 ? NewWord(kTrue) : NewWord(kFalse);
}

static ZRSTR IntegerText(uint64_t magnitude, bool isNegative = false) noexcept {
  const std::size_t length = CountLongDecimalDigits(magnitude) + (isNegative ? 1 : 0);
  ZRSTR string = AllocateText(length);
  if (string == nullptr) return nullptr;
  WriteDecimalBackwards(string + length, magnitude);
  if (isNegative) string[0] = '-';
  return string;
}

static ZRSTR SignedText(int64_t value) noexcept {
  const auto bits = static_cast<uint64_t>(value);
  return value < 0 ? IntegerText(0 - bits, true) : IntegerText(bits);
}

static ZRSTR DateTimeText(ZRDATETIME value) noexcept {
  const ZRDATETIMESTRUCT record = RecordOf(value);
  return ZrDateTimeStructToDateTimeString(&record, 1);
}

// The bytes as they are; null for a blob that has none.
static ZRSTR BlobText(ZRBLOB blob) noexcept {
  const ZrBlobBlock* block = blob != nullptr ? blob->block : nullptr;
  if (block == nullptr || block->length == 0) return nullptr;
  return ZrCreateStringByteLen(block->bytes, block->length);
}

// The text of a kind that always has one. Null where memory is exhausted, and for a blob without bytes.
static ZRSTR PayloadText(uint16_t tag, const ZRVARIANTVALUE& from) {
  switch (tag) {
    case ZR_VT_BOOL:
      return BooleanText(from.boolean);
    case ZR_VT_I1:
      return SignedText(from.i1);
    case ZR_VT_I2:
      return SignedText(from.i2);
    case ZR_VT_I4:
      return SignedText(from.i4);
    case ZR_VT_I8:
    case ZR_VT_CY:
      return SignedText(from.i8);
    case ZR_VT_UI1:
    case ZR_VT_BYTE:
      return IntegerText(from.ui1);
    case ZR_VT_UI2:
    case ZR_VT_WORD:
      return IntegerText(from.ui2);
    case ZR_VT_UI4:
    case ZR_VT_DWORD:
      return IntegerText(from.ui4);
    case ZR_VT_UI8:
    case ZR_VT_QWORD:
      return IntegerText(from.ui8);
    case ZR_VT_R4:
      return NewFixedText(double{from.r4});
    case ZR_VT_R8:
      return NewFixedText(from.r8);
    case ZR_VT_TIME:
      return FormatTime(RecordOf(from.time), true);  // whole days don't show
    case ZR_VT_DATETIME:
      return DateTimeText(from.dateTime);
    case ZR_VT_BLOB:
      return BlobText(from.blob);
    default:
      return nullptr;  // the table has no rule for the others
  }
}

ZRRESULT ToStr(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  const ZRVARIANTVALUE& from = source.Value;
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  switch (tag) {
    case ZR_VT_CHAR32: {
      const char32_t codePoint = from.char32;
      return ZrCreateZRSTRfromUTF32(&codePoint, 1, &value.string);
    }
    case ZR_VT_UUID:
      return from.uuid != nullptr ? ZrStringFromUUID(from.uuid, &value.string) : ZR_R_INVALID_ARGUMENTS;
    case ZR_VT_REF:
      return from.ref != nullptr ? ZrREFToString(from.ref, &value.string) : ZR_R_INVALID_ARGUMENTS;
    case ZR_VT_SREF:
      return from.sref != nullptr ? ZrSREFToString(from.sref, &value.string) : ZR_R_INVALID_ARGUMENTS;
    default:
      value.string = PayloadText(tag, from);  // a null for want of memory is no failure
      return ZR_R_OK;
  }
}
