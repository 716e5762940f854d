// Conversion to text.

#include <array>

#include "blobs/blob_handle.h"
#include "identifiers/date_time.h"
#include "identifiers/time_text.h"
#include "text/code_units.h"
#include "text/counted_string.h"
#include "text/decimal_digits.h"
#include "text/real_text.h"
#include "variants/conversion.h"
#include "zrcore/unicode.h"

template <std::size_t size>
static ZRSTR NewWord(const std::array<WCHAR, size>& word) noexcept {
  return NewString(word.data(), word.data() + size - 1);
}

static ZRSTR BooleanText(uint8_t boolean) noexcept {
  static constexpr auto kTrue = Wide("TRUE");
  static constexpr auto kFalse = Wide("FALSE");
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

// Null results where memory is exhausted are no failure here.
ZRRESULT ToStr(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  const ZRVARIANTVALUE& from = source.Value;
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  switch (tag) {
    case ZR_VT_BOOL:
      value.string = BooleanText(from.boolean);
      return ZR_R_OK;
    case ZR_VT_I1:
      value.string = SignedText(from.i1);
      return ZR_R_OK;
    case ZR_VT_I2:
      value.string = SignedText(from.i2);
      return ZR_R_OK;
    case ZR_VT_I4:
      value.string = SignedText(from.i4);
      return ZR_R_OK;
    case ZR_VT_I8:
    case ZR_VT_CY:
      value.string = SignedText(from.i8);
      return ZR_R_OK;
    case ZR_VT_UI1:
    case ZR_VT_BYTE:
      value.string = IntegerText(from.ui1);
      return ZR_R_OK;
    case ZR_VT_UI2:
    case ZR_VT_WORD:
      value.string = IntegerText(from.ui2);
      return ZR_R_OK;
    case ZR_VT_UI4:
    case ZR_VT_DWORD:
      value.string = IntegerText(from.ui4);
      return ZR_R_OK;
    case ZR_VT_UI8:
    case ZR_VT_QWORD:
      value.string = IntegerText(from.ui8);
      return ZR_R_OK;
    case ZR_VT_R4:
      value.string = NewFixedText(double{from.r4});
      return ZR_R_OK;
    case ZR_VT_R8:
      value.string = NewFixedText(from.r8);
      return ZR_R_OK;
    case ZR_VT_TIME:
      value.string = FormatTime(RecordOf(from.time), true);
      return ZR_R_OK;  // whole days don't show
    case ZR_VT_DATETIME:
      value.string = DateTimeText(from.dateTime);
      return ZR_R_OK;
    case ZR_VT_BLOB:
      value.string = BlobText(from.blob);
      return ZR_R_OK;
    case ZR_VT_CHAR32: {
      const char32_t codePoint = from.char32;
      return ZrCreateZRSTRfromUTF32(&codePoint, 1, &value.string);
    }
    default:
      break;
  }
  if (from.address == nullptr) return ZR_R_INVALID_ARGUMENTS;
  switch (tag) {
    case ZR_VT_UUID:
      return ZrStringFromUUID(from.uuid, &value.string);
    case ZR_VT_REF:
      return ZrREFToString(from.ref, &value.string);
    case ZR_VT_SREF:
      return ZrSREFToString(from.sref, &value.string);
    default:
      return ZR_R_NOT_SUPPORTED;
  }
}
