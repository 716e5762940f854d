// Conversions to counts of time, blobs, UUIDs and references.

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

using TimeParser = uint8_t(ZRSTR text, ZRDATETIMESTRUCT* record) noexcept;

static ZRRESULT ParseTime(ZRSTR text, TimeParser* parse, int64_t& count) noexcept {
  ZRDATETIMESTRUCT record;
  if (parse == nullptr || parse(text, &record) == 0) return ZR_R_INVALID_ARGUMENTS;
  count = DateTimeOf(record);
  return ZR_R_OK;
}

static ZRRESULT ParseDecimal(ZRSTR string, int64_t& count) noexcept {
  const CTextView text(string, StringLen(string));
  const auto [value, end] = ReadInteger<int64_t>(text);
  count = value;
  return EndsAt(text, end, 'd') ? ZR_R_OK : ZR_R_FAILED;
}

static ZRRESULT ToCount(Rule rule, const ZRVARIANT& source, TimeParser* parse, int64_t& count) noexcept {
  switch (rule) {
    case Rule::Word:
      count = source.Value.i8;
      return ZR_R_OK;
    case Rule::WordBehind:
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
      return ZR_R_NOT_SUPPORTED;  // of other columns
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

// The bytes of an owned kind, which is not null. An empty text has none.
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

ZRRESULT ToBlob(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  const CTag tag = TagOf(source.Type);
  if (IsOwned(tag.kind)) {
    if (source.Value.address == nullptr) return ZR_R_INVALID_ARGUMENTS;
    const CBytes content = BytesOf(tag.kind, source.Value);
    value.blob = ZrCreateBlob(content.size, content.bytes);  // null for no bytes: there is no empty blob
    return ZR_R_OK;
  }
  ZRVARIANTVALUE from = source.Value;
  if ((source.Type & ZR_VT_TYPEMASK) == ZR_VT_BOOL) from.boolean = from.boolean != 0;
  value.blob = ZrCreateBlob(tag.width, &from);
  return ZR_R_OK;
}

// ---- UUIDs ---------------------------------------------------------------------------------------------------------

static constexpr std::size_t kOrdinaryUuidUnits = 64;

// Reads the text as UTF-8, which for ASCII is the same units.
static ZRRESULT ReadUuid(ZRSTR string, ZRUUID& uuid) {
  const std::size_t length = StringLen(string);
  std::array<char, kOrdinaryUuidUnits> ascii{};
  if (length < ascii.size() && std::all_of(string, string + length, [](WCHAR unit) { return unit < 0x80; })) {
    std::copy(string, string + length, ascii.begin());
    return ZrUUIDFromString(ascii.data(), &uuid);
  }
  int32_t bytes = -1;  // asks for the size
  if (Failed(ZrCreateUTF8fromZRSTR(string, -1, nullptr, &bytes))) return ZR_R_INVALID_ARGUMENTS;
  const std::size_t room = std::size_t{length} * 4 + 4;  // whatever is written and counted, with a zero behind
  std::unique_ptr<char, HeapFree> text(static_cast<char*>(AllocateOrThrow(room)));
  std::memset(text.get(), 0, room);
  (void)ZrCreateUTF8fromZRSTR(string, -1, text.get(), &bytes);
  return ZrUUIDFromString(text.get(), &uuid);
}

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

ZRRESULT ToREF(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  if (TagOf(source.Type).kind == PayloadKind::String) return ZrStringToREF(source.Value.string, &value.ref);
  const ZRSREF* sref = source.Value.sref;
  if (sref == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return sref->ref != nullptr ? ZrCopyREF(sref->ref, &value.ref) : ZrStringToREF(sref->text, &value.ref);
}

ZRRESULT ToSREF(Rule /*rule*/, const ZRVARIANT& source, ZRVARIANTVALUE& value) {
  if (TagOf(source.Type).kind == PayloadKind::String) return ZrStringToSREF(source.Value.string, &value.sref);
  CRefHolder ref(source.Value.ref != nullptr ? AllocateRef(*source.Value.ref) : nullptr);
  value.sref = AllocateSref({ref.get(), nullptr});  // of a null REF too, and then it stays behind with the failure
  return ref.release() != nullptr ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS;
}
