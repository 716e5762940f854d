// Creation, comparison and the exports of counted strings. The layout of a block and its invariants are in
// counted_string.h.
//
// The creators differ in when they return the shared empty string instead of a new block, and callers rely on it:
//
//                                  empty text   empty text, length 3   null, length 0   null, length 3
//   ZrCreateString                 shared       -                      -                -
//   ZrCreateZRSTRfromWCHAR etc.    shared       shared (not 3 zeros)   new              new, 3 zeros
//   ZrCreateStringLen              new          new, 3 zeros           new              new, 3 zeros
//   ZrAppendStrings, deep copies   new; ZrAppendStrings of one null and one string returns that string again

#include "text/counted_string.h"

#include <algorithm>
#include <cstring>

#include "text/code_units.h"

static constexpr uint32_t kWholeText = 0xFFFFFFFF;

// Makes a string of `areaBytes` bytes, terminator included: `copyBytes` bytes of data, then zeros. Only the bytes that
// no data is copied to are zeroed.
static ZRSTR MakeString(const void* data, std::size_t copyBytes, std::size_t areaBytes) noexcept {
  ZRSTR string = AllocateString(areaBytes);
  if (string == nullptr) return nullptr;
  auto* bytes = reinterpret_cast<unsigned char*>(string);
  if (copyBytes != 0) std::memcpy(bytes, data, copyBytes);  // memcpy from null is undefined even for 0 bytes
  std::memset(bytes + copyBytes, 0, areaBytes - copyBytes);
  return string;
}

static constexpr std::size_t AreaOf(std::size_t units) noexcept { return (units + 1) * sizeof(WCHAR); }

static ZRSTR MakeEmptyString() noexcept { return MakeString(nullptr, 0, AreaOf(0)); }

// ZrCreateString and the three names of ZrCreateZRSTRfromWCHAR.
//
// Nothing after the first zero unit is ever copied, so the text is scanned for its terminator even when a shorter
// length is given. The scan has no bound. If no unit is copied from a text, the result is the shared empty string,
// whatever the length is.
static ZRRESULT CreateFromText(const WCHAR* text, int32_t length, ZRSTR* string) noexcept {
  if (string == nullptr || length < -1 || (text == nullptr && length == -1)) return ZR_R_INVALID_ARGUMENTS;
  *string = nullptr;
  const std::size_t terminated = text != nullptr ? TerminatedLength(text) : 0;
  const std::size_t capacity = length == -1 ? terminated : static_cast<std::size_t>(length);
  const std::size_t copied = std::min(terminated, capacity);
  if (text != nullptr && copied == 0) {
    *string = ShareString(nullptr);
    return ZR_R_OK;
  }
  *string = MakeString(text, copied * sizeof(WCHAR), AreaOf(capacity));
  return *string != nullptr ? ZR_R_OK : ZR_R_NO_MEMORY;
}

// ---- Creating ------------------------------------------------------------------------------------------------------

ZRSTR ZrCreateString(const WCHAR* text) noexcept {
  ZRSTR string = nullptr;
  (void)CreateFromText(text, -1, &string);  // a failure leaves null, which is the result for it
  return string;
}

ZRRESULT ZrCreateZRSTRfromWCHAR(const WCHAR* text, int32_t length, ZRSTR* string) noexcept {
  return CreateFromText(text, length, string);
}

ZRRESULT ZrCreateZRSTRfromUTF16(const WCHAR* text, int32_t length, ZRSTR* string) noexcept {
  return CreateFromText(text, length, string);
}

ZRRESULT ZrCreateStringLen_2(const WCHAR* text, int32_t length, ZRSTR* string) noexcept {
  return CreateFromText(text, length, string);
}

// Always a new block, with `length` units in any case: the text, then zero units.
ZRSTR ZrCreateStringLen(const WCHAR* text, uint32_t length) noexcept {
  if (length == kWholeText) {
    const std::size_t whole = TerminatedLength(text);
    return MakeString(text, whole * sizeof(WCHAR), AreaOf(whole));
  }
  const std::size_t copied = text != nullptr ? std::min<std::size_t>(TerminatedLength(text), length) : 0;
  return MakeString(text, copied * sizeof(WCHAR), AreaOf(length));
}

ZRSTR ZrCreateStringByteLen(const void* data, uint32_t length) noexcept {
  return MakeString(data, data != nullptr ? length : 0, std::size_t{length} + sizeof(WCHAR));
}

// The copy of `right` includes its terminator. The bytes are copied, so an odd number of bytes in `left` moves all
// units of `right` by a byte.
ZRSTR ZrAppendStrings(ZRSTR left, ZRSTR right) noexcept {
  if (left == nullptr && right == nullptr) return MakeEmptyString();
  if (left == nullptr || right == nullptr) return ShareString(left != nullptr ? left : right);
  const std::size_t leftBytes = StringByteLen(left), rightArea = StringHeader(right)->byteLen;
  ZRSTR string = AllocateString(leftBytes + rightArea);
  if (string == nullptr) return nullptr;
  auto* bytes = reinterpret_cast<unsigned char*>(string);
  std::memcpy(bytes, left, leftBytes);
  std::memcpy(bytes + leftBytes, right, rightArea);
  return string;
}

// ---- References ----------------------------------------------------------------------------------------------------

ZRSTR ZrCopyString(ZRSTR string) noexcept { return ShareString(string); }

ZRSTR ZrDeepCopyString(ZRSTR string) noexcept {
  if (string == nullptr) return MakeEmptyString();
  const std::size_t area = StringHeader(string)->byteLen;
  return MakeString(string, area, area);
}

void ZrDestroyString(ZRSTR string) noexcept { ReleaseString(string); }

uint8_t ZrReCreateString(ZRSTR* string, const WCHAR* text) noexcept {
  if (string == nullptr || text == nullptr) return 0;
  ReleaseString(*string);  // before the text is read, by contract: the text must not lie in the old string
  *string = ZrCreateString(text);
  return *string != nullptr;
}

uint8_t ZrReCreateStringLen(ZRSTR* string, const WCHAR* text, uint32_t length) noexcept {
  if (string == nullptr || text == nullptr) return 0;
  ReleaseString(*string);
  *string = ZrCreateStringLen(text, length);
  return *string != nullptr;
}

uint32_t ZrStringRefCount(ZRSTR string) noexcept {
  if (string == nullptr) return 0;
  return std::atomic_ref(StringHeader(string)->refCount).load(std::memory_order_relaxed);
}

// ---- Reading -------------------------------------------------------------------------------------------------------

uint32_t ZrStringLen(ZRSTR string) noexcept { return StringLen(string); }

uint32_t ZrStringByteLen(ZRSTR string) noexcept { return StringByteLen(string); }

ZRRESULT ZrCompareString(ZRSTR left, ZRSTR right, int32_t* order) noexcept {
  if (order == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *order = CompareStrings(left, right);
  return ZR_R_OK;
}

// Compares units, unlike ZrCompareString. Two rules:
//   - Emptiness of `left` is decided by its length: a `left` that begins with a zero unit comes after an empty `right`.
//   - Otherwise the first zero unit on either side ends the comparison, even inside `left`.
ZRRESULT ZrCompareStringW(ZRSTR left, const WCHAR* right, int32_t* order) noexcept {
  if (order == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const bool leftEmpty = StringLen(left) == 0;
  const bool rightEmpty = right == nullptr || *right == 0;
  if (leftEmpty || rightEmpty) {
    *order = leftEmpty == rightEmpty ? 0 : leftEmpty ? -1 : 1;
    return ZR_R_OK;
  }
  std::size_t at = 0;
  while (left[at] == right[at] && left[at] != 0) ++at;
  *order = left[at] == right[at] ? 0 : left[at] < right[at] ? -1 : 1;
  return ZR_R_OK;
}
