// The registry's own rows, its operations, and the exports.
//
// The table of the library's codes is written once, below, and checked by static_asserts. It becomes rows of the map
// when the registry is first used. Rows contain strings, so making them while the library is loaded could terminate the
// process when out of memory.

#include "runtime/error_registry.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <new>
#include <string_view>
#include <utility>

// ---- The library's own codes ----------------------------------------------------------------------------------------

struct CBuiltInRow {
  ZRRESULT code;
  std::string_view name;
};

// The text of a code is its name: ZR_ROW(ZR_R_FAILED) -> {ZR_R_FAILED, "ZR_R_FAILED"}.
#define ZR_ROW(code) \
  { code, #code }
static constexpr CBuiltInRow kBuiltInRows[] = {
    ZR_ROW(ZR_R_FAILED),
    ZR_ROW(ZR_R_NOT_SUPPORTED),
    ZR_ROW(ZR_R_CANCELLED),
    ZR_ROW(ZR_R_TIMEOUT),
    ZR_ROW(ZR_R_INVALID_ARGUMENTS),
    ZR_ROW(ZR_R_ACCESS_DENIED),
    ZR_ROW(ZR_R_INVALID_POINTER),
    ZR_ROW(ZR_R_FILE_NOT_FOUND),
    ZR_ROW(ZR_R_NO_INIT),
    ZR_ROW(ZR_R_NO_INTERFACE),
    ZR_ROW(ZR_R_INVALID_OBJECT_STATE),
    ZR_ROW(ZR_R_UNEXPECTED),
    ZR_ROW(ZR_R_EXISTS),
    ZR_ROW(ZR_R_ABANDONED),
    ZR_ROW(ZR_R_REQUEST_ABORTED),
    ZR_ROW(ZR_R_UNKNOWN_IDENTIFIER),
    ZR_ROW(ZR_R_INCONSISTENT_CONFIGURATION),
    ZR_ROW(ZR_R_REQUEST_REJECTED),
    ZR_ROW(ZR_R_SUBSCRIPTION_LOST),
    ZR_ROW(ZR_R_NOT_IMPLEMENTED),
    ZR_ROW(ZR_R_EMPTY_VALUE),
    ZR_ROW(ZR_R_NO_AGGREGATION),
    ZR_ROW(ZR_R_CONNECTION_LOST),
    ZR_ROW(ZR_R_INVALID_SUBSCRIPTION),
    ZR_ROW(ZR_R_INVALID_SYSTEM),
    ZR_ROW(ZR_R_INVALID_CREF),
    ZR_ROW(ZR_R_INVALID_OTYPE),
    ZR_ROW(ZR_R_INVALID_LANGUAGE),
    ZR_ROW(ZR_R_NOT_EXISTING),
    ZR_ROW(ZR_R_NO_MEMORY),
    ZR_ROW(ZR_R_ALREADY_REGISTERED),
    ZR_ROW(ZR_R_CLASS_NOT_REGISTERED),
    ZR_ROW(ZR_R_SAME_VALUE),
};
#undef ZR_ROW

// All of the library's own codes have this description.
static constexpr std::string_view kDescription = "The component reported a general error";

// The table has the 32 failures in ascending order from 0x80000000 on, then the one success. The codes 0x8000001E and
// 0x8000001F are unassigned and have no row.
static_assert([] {
  uint32_t next = 0x80000000;
  for (std::size_t row = 0; row + 1 < std::size(kBuiltInRows); ++row, ++next) {
    if (next == 0x8000001E) next += 2;
    if (static_cast<uint32_t>(kBuiltInRows[row].code) != next) return false;
  }
  return std::size(kBuiltInRows) == 33 && std::rbegin(kBuiltInRows)->code == ZR_R_SAME_VALUE;
}());

// A short ASCII text as zero-terminated code units. ASCII characters have the same numbers in both. The array has the
// size of the description, which is the longest text; the static_assert below checks that.
class CAsciiUnits {
 public:
  explicit CAsciiUnits(std::string_view ascii) noexcept {
    for (std::size_t at = 0; at < ascii.size(); ++at) units_[at] = static_cast<WCHAR>(ascii[at]);
  }
  const WCHAR* Get() const noexcept { return units_.data(); }

 private:
  std::array<WCHAR, kDescription.size() + 1> units_{};
};

static_assert([] {
  for (const CBuiltInRow& row : kBuiltInRows) {
    if (row.name.size() > kDescription.size()) return false;
  }
  return true;
}());

// ---- Rows -----------------------------------------------------------------------------------------------------------

// ZrCopyString would turn null into the shared empty string. A row keeps null.
static ZRSTR ShareOrNull(ZRSTR string) noexcept { return string != nullptr ? ZrCopyString(string) : nullptr; }

CZrErrorInfoData::CZrErrorInfoData(const CZrErrorInfoData& other) noexcept
    : text_(ShareOrNull(other.text_)), description_(ShareOrNull(other.description_)) {}

CZrErrorInfoData::~CZrErrorInfoData() {
  ZrDestroyString(std::exchange(description_, nullptr));
  ZrDestroyString(std::exchange(text_, nullptr));
}

// The order matters: the code is looked up before any string is made, so a code that exists needs no memory. A string
// that can't be made is null without an exception; it is reported as std::bad_alloc, as for a row that can't be made.
//
// The map copies `row`, which adds a reference to each string, and `row` then releases its own. An exception of the map
// releases them too.
ZRRESULT CErrorRegistry::Add(uint32_t code, const WCHAR* text, const WCHAR* description) {
  const auto place = rows_.lower_bound(code);
  if (place != rows_.end() && place->first == code) return ZR_R_ALREADY_REGISTERED;
  const CZrErrorInfoData row(ZrCreateString(text), ZrCreateString(description));
  if (row.Text() == nullptr || (description != nullptr && row.Description() == nullptr)) throw std::bad_alloc();
  rows_.emplace_hint(place, code, row);
  return ZR_R_OK;
}

// Every operation calls this first. So no caller can register one of the library's own codes before the library does.
//
// If the loop runs out of memory, the rows that it has added remain and built_ stays false. The next call runs the
// whole loop again and adds the missing rows; for the others Add returns ZR_R_ALREADY_REGISTERED.
void CErrorRegistry::Build() {
  if (built_) return;
  const CAsciiUnits description(kDescription);
  for (const CBuiltInRow& row : kBuiltInRows) {
    (void)Add(static_cast<uint32_t>(row.code), CAsciiUnits(row.name).Get(),
              description.Get());  // already registered after an interrupted attempt
  }
  built_ = true;
}

// ---- Operations -----------------------------------------------------------------------------------------------------

ZRRESULT CErrorRegistry::Register(uint32_t code, const WCHAR* text, const WCHAR* description) {
  CLockGuard hold(mutex_);
  Build();
  return Add(code, text, description);
}

// Writes `*result` on success only.
ZRRESULT CErrorRegistry::ShareString(uint32_t code, ZRSTR (CZrErrorInfoData::*string)() const noexcept, ZRSTR* result) {
  CLockGuard hold(mutex_);
  Build();
  const auto row = rows_.find(code);
  if (row == rows_.end()) return ZR_R_NOT_EXISTING;
  *result = ZrCopyString((row->second.*string)());  // null becomes the shared empty string
  return ZR_R_OK;
}

ZRRESULT CErrorRegistry::GetText(uint32_t code, ZRSTR* text) {
  return ShareString(code, &CZrErrorInfoData::Text, text);
}

ZRRESULT CErrorRegistry::GetDescription(uint32_t code, ZRSTR* description) {
  return ShareString(code, &CZrErrorInfoData::Description, description);
}

// ---- Exports --------------------------------------------------------------------------------------------------------
//
// The null pointer is refused before the registry is used, so these calls neither lock nor throw.

ZRRESULT ZrErrorInfoRegister(uint32_t code, const WCHAR* text, const WCHAR* description) {
  return text != nullptr ? ErrorRegistry().Register(code, text, description) : ZR_R_INVALID_ARGUMENTS;
}

ZRRESULT ZrErrorInfoGetText(uint32_t code, ZRSTR* text) {
  return text != nullptr ? ErrorRegistry().GetText(code, text) : ZR_R_INVALID_ARGUMENTS;
}

ZRRESULT ZrErrorInfoGetDescription(uint32_t code, ZRSTR* description) {
  return description != nullptr ? ErrorRegistry().GetDescription(code, description) : ZR_R_INVALID_ARGUMENTS;
}
