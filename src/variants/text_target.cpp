// Conversion to text. Every source of the table has exactly one text form:
//
//     integers, ZR_VT_CY        decimal, with a minus sign if negative: "-128"
//     ZR_VT_R4, ZR_VT_R8        as printf's "%f": "0.500000", "inf"
//     ZR_VT_BOOL                "TRUE" or "FALSE"; any byte other than 0 is true
//     ZR_VT_TIME                the time of day, with seven digits after the decimal point
//     ZR_VT_CHAR32              the character
//     ZR_VT_BLOB                the bytes of the blob as the code units of the text
//     all others                as the functions of their families write them
//
// Digits are written directly into the new string, backwards from its end, so its length is computed first.
//
// A null string from a creator means out of memory. It is stored, and the result is ZR_R_OK: callers rely on that. Only
// UUIDs and code points report ZR_R_NO_MEMORY, because the functions of their families do.

#include "variants/text_target.h"

#include <array>

#include "blobs/blob_handle.h"
#include "text/code_units.h"
#include "text/counted_string.h"
#include "text/real_text.h"
#include "time/date_time.h"
#include "time/date_time_text.h"
#include "time/time_digits.h"
#include "zrcore/unicode.h"

// A new string of a literal, without the literal's terminator.
template <std::size_t size>
static ZRSTR NewWord(const std::array<WCHAR, size>& word) noexcept {
  return NewString(word.data(), word.data() + size - 1);
}

static ZRSTR BooleanText(uint8_t boolean) noexcept {
  static constexpr auto kTrue = WideLiteral("TRUE");
  static constexpr auto kFalse = WideLiteral("FALSE");
  return boolean != 0 ? NewWord(kTrue) : NewWord(kFalse);
}

// With fractions of a second.
static ZRSTR DateTimeText(ZRDATETIME value) noexcept {
  const ZRDATETIMESTRUCT record = RecordOf(value);
  return ZrDateTimeStructToDateTimeString(&record, 1);
}

// The bytes of a blob, unchanged; an odd number of bytes makes a string with half a unit at its end. Null for a blob
// without bytes and for a null handle.
static ZRSTR BlobText(ZRBLOB blob) noexcept {
  const ZrBlobBlock* block = blob != nullptr ? blob->block : nullptr;
  if (block == nullptr || block->length == 0) return nullptr;
  return ZrCreateStringByteLen(block->bytes, block->length);
}

// The text of a tag whose conversion cannot fail. Null if out of memory, and for a blob without bytes.
static ZRSTR PayloadText(uint16_t tag, const ZRVARIANTVALUE& from) {
  switch (tag) {
    case ZR_VT_BOOL:
      return BooleanText(from.boolean);
    case ZR_VT_I1:
      return NewIntegerText(int32_t{from.i1});
    case ZR_VT_I2:
      return NewIntegerText(int32_t{from.i2});
    case ZR_VT_I4:
      return NewIntegerText(from.i4);
    case ZR_VT_I8:
    case ZR_VT_CY:
      return NewIntegerText(from.i8);
    case ZR_VT_UI1:
    case ZR_VT_BYTE:
      return NewIntegerText(uint32_t{from.ui1});
    case ZR_VT_UI2:
    case ZR_VT_WORD:
      return NewIntegerText(uint32_t{from.ui2});
    case ZR_VT_UI4:
    case ZR_VT_DWORD:
      return NewIntegerText(from.ui4);
    case ZR_VT_UI8:
    case ZR_VT_QWORD:
      return NewIntegerText(from.ui8);
    case ZR_VT_R4:
      return NewFixedText(double{from.r4});
    case ZR_VT_R8:
      return NewFixedText(from.r8);
    case ZR_VT_TIME:
      return FormatTime(RecordOf(from.time), true);  // the time of day; whole days are not shown
    case ZR_VT_DATETIME:
      return DateTimeText(from.dateTime);
    case ZR_VT_BLOB:
      return BlobText(from.blob);
    default:
      return nullptr;  // the table has no rule for other tags
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
      value.string = PayloadText(tag, from);  // null if out of memory, which is not a failure here
      return ZR_R_OK;
  }
}
