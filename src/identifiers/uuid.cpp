// Identifiers: heap records, comparison, and the text form, whose two directions share one table of places.
//
//     {01234567-89AB-CDEF-0123-456789ABCDEF}
//      data1    data2 and 3, data4 byte by byte
//
// The text writes data1 to data3 as numbers, highest digit first. Bytes "in the order of the text" are therefore the
// two digits at each place from left to right, not the bytes of the record, which has its numbers in the machine's
// order.

#include "identifiers/uuid.h"

#include <array>
#include <cstdlib>

#include "platform/random.h"
#include "runtime/heap.h"
#include "text/code_units.h"
#include "text/counted_string.h"

// ---- The text form -------------------------------------------------------------------------------------------------

// The index of the two digits of each byte, counted from the first digit of the text; bytes in the order of the text.
// The missing indexes belong to the hyphens.
static constexpr std::array<uint8_t, 16> kDigitPlaces = {0,  2,  4,  6,  9,  11, 14, 16,   // data1, data2, data3
                                                         19, 21, 24, 26, 28, 30, 32, 34};  // data4
static constexpr std::size_t kPlainLength = 36;                                            // without the braces
static constexpr std::size_t kTextLength = kPlainLength + 2;

static constexpr uint8_t kNoDigit = 0xFF;

// The value of each hexadecimal digit, in both cases; kNoDigit for all other characters.
static constexpr std::array<uint8_t, 256> kDigitValues = [] {
  std::array<uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (uint8_t digit = 0; digit < 10; ++digit) values[static_cast<std::size_t>('0' + digit)] = digit;
  for (uint8_t digit = 10; digit < 16; ++digit) {
    values[static_cast<std::size_t>('A' + digit - 10)] = digit;
    values[static_cast<std::size_t>('a' + digit - 10)] = digit;
  }
  return values;
}();

static void StoreBigEndian64(uint8_t* bytes, uint64_t value) noexcept {
  const uint64_t swapped = LoadBigEndian64(&value);  // the same swap both ways
  std::memcpy(bytes, &swapped, sizeof swapped);
}

static std::array<uint8_t, 16> BytesInTextOrder(const ZRUUID& uuid) noexcept {
  std::array<uint8_t, 16> bytes;
  StoreBigEndian64(bytes.data(), CFieldWiseLess::Rank(uuid).high);
  std::memcpy(bytes.data() + 8, uuid.data4, sizeof uuid.data4);
  return bytes;
}

static ZRUUID FromBytesInTextOrder(const std::array<uint8_t, 16>& bytes) noexcept {
  const uint64_t high = LoadBigEndian64(bytes.data());
  ZRUUID uuid = {static_cast<uint32_t>(high >> 32), static_cast<uint16_t>(high >> 16), static_cast<uint16_t>(high), {}};
  std::memcpy(uuid.data4, bytes.data() + 8, sizeof uuid.data4);
  return uuid;
}

// Whether a zero-terminated text has at least `length` bytes. memchr stops at the terminator, so it doesn't read past a
// shorter text, and it doesn't scan all of a longer one, as strlen would.
static bool HasAtLeast(const char* text, std::size_t length) noexcept {
  return std::memchr(text, 0, length) == nullptr;
}

// ---- Heap records --------------------------------------------------------------------------------------------------

ZRUUID* ZrCreateUUID() { return HeapNew<ZRUUID>(); }

ZRUUID* ZrGenerateUUID() {
  ZRUUID* uuid = HeapNew<ZRUUID>();
  (void)PlatformRandomUuid(*uuid);  // if the generator fails, the record stays nil, by contract
  return uuid;
}

ZRRESULT ZrCopyUUID(const ZRUUID* source, ZRUUID** copy) {
  if (source == nullptr || copy == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *copy = HeapNew<ZRUUID>(*source);
  return ZR_R_OK;
}

void ZrDestroyUUID(ZRUUID* uuid) noexcept {
  if (uuid == nullptr) return;
  // A freed record must not disclose its content. Without volatile, a compiler removes the stores: nothing reads them.
  for (volatile uint8_t *byte = reinterpret_cast<uint8_t*>(uuid), *end = byte + sizeof *uuid; byte != end; ++byte) {
    *byte = 0;
  }
  std::free(uuid);
}

// ---- Comparison ----------------------------------------------------------------------------------------------------

ZRRESULT ZrCompareUUID(const ZRUUID* left, const ZRUUID* right, uint8_t* equal) noexcept {
  if (left == nullptr || right == nullptr || equal == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *equal = std::memcmp(left, right, sizeof *left) == 0;
  return ZR_R_OK;
}

// With a null operand, both comparisons are false: null is neither nil nor less than anything.
bool ZRUUIDGreater(const ZRUUID* left, const ZRUUID* right) noexcept {
  return left != nullptr && right != nullptr && CFieldWiseLess()(*right, *left);
}

bool ZRUUIDLess(const ZRUUID* left, const ZRUUID* right) noexcept {
  return left != nullptr && right != nullptr && CFieldWiseLess()(*left, *right);
}

// ---- Text ----------------------------------------------------------------------------------------------------------

// `uuid` is read before anything is checked, by contract, so it must not be null. The frame supplies the braces, the
// hyphens and the terminator; the digits are written over its zeros.
ZRRESULT ZrStringFromUUID(const ZRUUID* uuid, ZRSTR* string) noexcept {
  const std::array<uint8_t, 16> bytes = BytesInTextOrder(*uuid);
  if (string == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *string = nullptr;
  ZRSTR text = AllocateString((kTextLength + 1) * sizeof(WCHAR));
  if (text == nullptr) return ZR_R_NO_MEMORY;

  static constexpr auto kFrame = WideLiteral("{00000000-0000-0000-0000-000000000000}");
  static_assert(kFrame.size() == kTextLength + 1);
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::memcpy(text, kFrame.data(), sizeof kFrame);
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    WCHAR* pair = text + 1 + kDigitPlaces[at];
    pair[0] = static_cast<WCHAR>(kDigits[bytes[at] >> 4]);
    pair[1] = static_cast<WCHAR>(kDigits[bytes[at] & 0xF]);
  }
  *string = text;
  return ZR_R_OK;
}

// Accepts more than is written: a quotation mark, a brace, or both in this order may come first, the separators may be
// any characters, and everything after the 36 characters is ignored, even the closing brace.
//
// There are two refusals, and callers see the difference in `*uuid`: it is unchanged if the whole text is too short,
// and nil if too little is left after the mark and the brace, or if a digit is wrong.
ZRRESULT ZrUUIDFromString(const char* text, ZRUUID* uuid) noexcept {
  if (text == nullptr || uuid == nullptr || !HasAtLeast(text, kPlainLength)) return ZR_R_INVALID_ARGUMENTS;
  *uuid = ZRUUID{};
  const char* digits = text;
  if (*digits == '"') ++digits;
  if (*digits == '{') ++digits;
  if (digits != text && !HasAtLeast(digits, kPlainLength)) return ZR_R_INVALID_ARGUMENTS;

  std::array<uint8_t, 16> bytes;
  uint8_t seen = 0;  // the bits of all values; kNoDigit sets high bits, which the value of a digit doesn't have
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    const uint8_t high = kDigitValues[static_cast<uint8_t>(digits[kDigitPlaces[at]])];
    const uint8_t low = kDigitValues[static_cast<uint8_t>(digits[kDigitPlaces[at] + 1])];
    seen |= high | low;
    bytes[at] = static_cast<uint8_t>(high << 4 | low);
  }
  if (seen > 0xF) return ZR_R_INVALID_ARGUMENTS;
  *uuid = FromBytesInTextOrder(bytes);
  return ZR_R_OK;
}
