// Conversions to currency, times, blobs, UUIDs and references.
//
// ZR_VT_CY, ZR_VT_TIME and ZR_VT_DATETIME are called counts here: signed 64-bit numbers of a unit. A count accepts the
// bits of other 64-bit types as they are, without a range check and without scaling. In this it differs from a number.
//
// A source here is normalised (see LendCopy): a string is not null, and an SREF that is not null has a ref or a text.
// Other handles and records in a source may be null.

#include "variants/structured_targets.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "blobs/blob_handle.h"
#include "identifiers/reference_records.h"
#include "runtime/heap.h"
#include "runtime/result.h"
#include "text/counted_string.h"
#include "text/number_text.h"
#include "time/date_time.h"
#include "variants/number_rule.h"
#include "variants/variant_record.h"
#include "zrcore/unicode.h"

// ---- Counts --------------------------------------------------------------------------------------------------------

// A parser of datetime.h. It returns 1, or 0 if it cannot parse the text.
using TimeParser = uint8_t(ZRSTR text, ZRDATETIMESTRUCT* record) noexcept;

static ZRRESULT ParseTime(ZRSTR text, TimeParser* parse, int64_t& count) noexcept {
  ZRDATETIMESTRUCT record;
  if (parse == nullptr || parse(text, &record) == 0) return ZR_R_INVALID_ARGUMENTS;
  count = DateTimeOf(record);
  return ZR_R_OK;
}

// The texts are those of ParseInteger in numeric_targets.cpp for base 10: "" and "dog" are 0, "1d" is 1. Words and
// hexadecimal numbers fail. A number out of range saturates.
static ZRRESULT ParseDecimal(ZRSTR string, int64_t& count) noexcept {
  const CTextView text(string, StringLen(string));
  const auto [value, end] = ReadInteger<int64_t>(text);
  count = value;
  return EndsAt(text, end, 'd') ? ZR_R_OK : ZR_R_FAILED;
}

// `parse` may be null for a target whose column of the table does not contain ParseTime.
static ZRRESULT ToCount(Rule rule, const ZRVARIANT& source, TimeParser* parse, int64_t& count) noexcept {
  switch (rule) {
    case Rule::Word:
      count = source.Value.i8;
      return ZR_R_OK;
    case Rule::WordAtAddress:  // a ZR_VT_QWORD is an address here; an invalid one is undefined behaviour
      std::memcpy(&count, source.Value.address, sizeof count);
      return ZR_R_OK;
    case Rule::Truncate:
      count = TruncateToInt64(source.Value.r8);
      return ZR_R_OK;
    case Rule::ParseDecimal:
      return ParseDecimal(source.Value.string, count);
    case Rule::ParseTime:
      return ParseTime(source.Value.string, parse, count);
    default:
      return ZR_R_NOT_SUPPORTED;  // rules of other columns
  }
}

ZRRESULT ToCY(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  return ToCount(rule, source, nullptr, value.i8);
}
ZRRESULT ToTime(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  return ToCount(rule, source, ZrTimeStringToDateTimeStruct, value.i8);
}
ZRRESULT ToDateTime(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  return ToCount(rule, source, ZrDateTimeStringToDateTimeStruct, value.i8);
}

// ---- Blobs ---------------------------------------------------------------------------------------------------------

struct CBytes {
  const void* bytes;
  uint32_t size;
};

static CBytes BytesOf(ZRSTR string) noexcept { return {string, StringByteLen(string)}; }

// The bytes of an owned payload that is not null. The terminator of a text does not count, so an empty text has no
// bytes.
static CBytes BytesOf(PayloadKind kind, const ZRVARIANTVALUE& value) noexcept {
  switch (kind) {
    case PayloadKind::String:
      return BytesOf(value.string);
    case PayloadKind::Uuid:
      return {value.uuid, sizeof(ZRUUID)};
    case PayloadKind::Ref:
      return {value.ref, sizeof(ZRREF)};
    case PayloadKind::Sref:
      if (value.sref->ref != nullptr) return {value.sref->ref, sizeof(ZRREF)};
      return BytesOf(value.sref->text);
    default:
      return {nullptr, 0};
  }
}

// A number becomes a blob of its own width. A boolean is stored as 0 or 1, whatever its byte is.
ZRRESULT ToBlob(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  const CTag tag = TagOf(source.Type);
  if (IsOwned(tag.kind)) {
    if (source.Value.address == nullptr) return ZR_R_INVALID_ARGUMENTS;
    const CBytes content = BytesOf(tag.kind, source.Value);
    value.blob = ZrCreateBlob(content.size, content.bytes);  // null if there are no bytes: an empty blob does not exist
    return ZR_R_OK;
  }
  ZRVARIANTVALUE from = source.Value;
  if ((source.Type & ZR_VT_TYPEMASK) == ZR_VT_BOOL) from.boolean = from.boolean != 0;
  value.blob = ZrCreateBlob(tag.width, &from);
  return ZR_R_OK;
}

// ---- UUIDs ---------------------------------------------------------------------------------------------------------

static constexpr std::size_t kOrdinaryUuidUnits = 64;  // a UUID in braces has 38

// Parses a UUID from the text's UTF-8 form, since ZrUUIDFromString takes bytes. ASCII text has the same units and
// bytes, so text of ordinary length is copied into a local buffer, and no memory is allocated.
//
// Text with other units may be a UUID, too: any byte is a valid separator, and what follows the digits is ignored. It
// goes through the UTF-8 writer. For lone surrogates the writer may store another number of bytes than it reported,
// and fail. Its result is ignored: the buffer has four bytes for every unit and starts as zeros, so whatever the writer
// has stored fits and is terminated, and ZrUUIDFromString decides.
static ZRRESULT ReadUuid(ZRSTR string, ZRUUID& uuid) {
  const std::size_t length = StringLen(string);
  std::array<char, kOrdinaryUuidUnits> ascii{};
  if (length < ascii.size() && std::all_of(string, string + length, [](WCHAR unit) { return unit < 0x80; })) {
    std::copy(string, string + length, ascii.begin());
    return ZrUUIDFromString(ascii.data(), &uuid);
  }
  int32_t bytes = -1;  // -1 requests the size
  if (Failed(ZrCreateUTF8fromZRSTR(string, -1, nullptr, &bytes))) return ZR_R_INVALID_ARGUMENTS;
  const std::size_t capacity = std::size_t{length} * 4 + 4;
  std::unique_ptr<char, HeapFree> text(static_cast<char*>(AllocateOrThrow(capacity)));
  std::memset(text.get(), 0, capacity);
  (void)ZrCreateUTF8fromZRSTR(string, -1, text.get(), &bytes);
  return ZrUUIDFromString(text.get(), &uuid);
}

// A blob needs at least one byte; bytes that are missing from 16 are zero. A null blob or one without bytes fails.
ZRRESULT ToUUID(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  ZRUUID uuid{};
  if (TagOf(source.Type).kind == PayloadKind::Blob) {
    if (ZrReadBlobPos(source.Value.blob, &uuid, 0, sizeof uuid) != ZR_R_OK) return ZR_R_FAILED;
  } else if (const ZRRESULT result = ReadUuid(source.Value.string, uuid); Failed(result)) {
    return result;
  }
  value.uuid = HeapNew<ZRUUID>(uuid);
  return ZR_R_OK;
}

// ---- References ----------------------------------------------------------------------------------------------------

// An SREF with both a ref and a text converts by its ref; its text is ignored.
ZRRESULT ToREF(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  if (TagOf(source.Type).kind == PayloadKind::String) return ZrStringToREF(source.Value.string, &value.ref);
  const ZRSREF* sref = source.Value.sref;
  if (sref == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return sref->ref != nullptr ? ZrCopyREF(sref->ref, &value.ref) : ZrStringToREF(sref->text, &value.ref);
}

// A null REF fails, but only after a new SREF without content was stored; this is part of the contract. Conversions in
// place and of array elements release that SREF. In a conversion to another record it leaks.
ZRRESULT ToSREF(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  if (TagOf(source.Type).kind == PayloadKind::String) return ZrStringToSREF(source.Value.string, &value.sref);
  CRefHolder ref(source.Value.ref != nullptr ? AllocateRef(*source.Value.ref) : nullptr);
  value.sref = AllocateSref({ref.get(), nullptr});
  return ref.release() != nullptr ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS;
}
