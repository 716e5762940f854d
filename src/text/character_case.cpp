// Letter case: filling the tables, comparing without case, and changing the case of a text in place. The exports use
// the tables of the process's default locale.
//
// The table always decides; vectors only skip what it would decide in the same way. They are used if the table is plain
// for ASCII, where upper and lower case differ by the bit 0x20 (A is 0x41, a is 0x61):
//
//     comparing          eight units are equal if they are equal after A to Z have become a to z
//     changing the case  eight ASCII units are changed by flipping the bit 0x20 of the letters
//
// Surrogates are units without case, so the length of a text never changes.

#include "text/character_case.h"

#include "text/code_units.h"
#include "text/vectors.h"
#include "zrcore/unicode.h"

// The release store comes last: a thread that sees isRead_ also sees the filled tables.
void CCharacterCase::Read() {
  locale_ = PlatformOpenCharacterLocale();
  lower_.Read([this](WCHAR unit) { return PlatformToLower(locale_, unit); }, 'A', 'a' - 'A');
  upper_.Read([this](WCHAR unit) { return PlatformToUpper(locale_, unit); }, 'a', 'A' - 'a');
  isRead_.store(true, std::memory_order_release);
}

#if defined(ZR_HAS_VECTORS)
// Sets all bits of the units from `first` to `last`, which are two ASCII letters. The comparisons are signed, so units
// from 0x8000 up are negative and outside the range.
static UnitVector Between(UnitVector units, char first, char last) noexcept {
  return IsGreaterSigned(units, EachUnit(first - 1)) & IsGreaterSigned(EachUnit(last + 1), units);
}

static UnitVector AsciiLower(UnitVector units) noexcept { return units | (Between(units, 'A', 'Z') & EachUnit(0x20)); }

// Whether a vector that is read at `text` stays in one page of memory. A read that crosses into the next page could
// reach memory that isn't mapped. Pages have 4096 bytes or a multiple of it.
static bool StaysInPage(const WCHAR* text) noexcept {
  return reinterpret_cast<std::uintptr_t>(text) % 4096 <= 4096 - 16;
}

// Returns the number of units that are equal at the beginning of both texts after A to Z have become a to z. It stops
// before the terminator of `left`, at a unit that only the table can find equal, and before the end of a page.
//
// The lengths aren't known, so a vector may read past the terminators. Only for a table that is plain for ASCII: then
// units that are equal here are equal by the table, too.
ZR_READS_WHOLE_VECTORS static std::size_t CountEqualUnits(const WCHAR* left, const WCHAR* right) noexcept {
  std::size_t at = 0;
  while (StaysInPage(left + at) && StaysInPage(right + at)) {
    const UnitVector leftUnits = LoadUnits(left + at), rightUnits = LoadUnits(right + at);
    const UnitVector areEqual = IsEqual(AsciiLower(leftUnits), AsciiLower(rightUnits));
    // The units that are equal and not the terminator; two bits per unit.
    const unsigned mask = TopBits(AndNot(IsEqual(leftUnits, EachUnit(0)), areEqual));
    if (mask != 0xFFFF) return at + static_cast<std::size_t>(std::countr_one(mask)) / sizeof(WCHAR);
    at += 8;
  }
  return at;
}
#endif

// Alternates between vectors and the table. The unit that ended a run of vectors is decided by the table, which finds a
// difference, the end, or two units that are equal in this locale.
int32_t CompareNoCase(const CCaseMap& lower, const WCHAR* left, const WCHAR* right) noexcept {
  for (std::size_t at = 0;;) {
#if defined(ZR_HAS_VECTORS)
    if (lower.IsAsciiPlain()) at += CountEqualUnits(left + at, right + at);
#endif
    // Eight units, not one: near the end of a page, and among letters beyond ASCII, a vector would be tried in vain for
    // each unit.
    for (const std::size_t end = at + 8; at < end; ++at) {
      const int32_t order = int32_t{lower[left[at]]} - int32_t{lower[right[at]]};
      if (order != 0 || left[at] == 0) return order;
    }
  }
}

// Maps each unit up to the first zero unit. The letters from `first` to `last` are those that a plain map changes, by
// the bit 0x20. Vectors stay within the length, because they are also written.
static void ChangeCase(const CCaseMap& map, WCHAR* text, char first, char last) noexcept {
  const std::size_t length = TerminatedLength(text);
  std::size_t at = 0;
#if defined(ZR_HAS_VECTORS)
  for (; map.IsAsciiPlain() && length - at >= 8; at += 8) {
    if (const UnitVector units = LoadUnits(text + at); AreAscii(units)) {
      StoreUnits(text + at, units ^ (Between(units, first, last) & EachUnit(0x20)));
    } else {
      for (std::size_t unit = at; unit < at + 8; ++unit) text[unit] = map[text[unit]];
    }
  }
#else
  (void)first, (void)last;
#endif
  for (; at < length; ++at) text[at] = map[text[at]];
}

// ---- The exports ---------------------------------------------------------------------------------------------------

int32_t ZrWCHARCompareNoCase(const WCHAR* left, const WCHAR* right) noexcept {
  if (left == nullptr || right == nullptr) return left == right ? 0 : left == nullptr ? -1 : 1;
  return CompareNoCase(g_characterCase.Lower(), left, right);
}

ZRRESULT ZrWCHARToLower(WCHAR* text) noexcept {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  ChangeCase(g_characterCase.Lower(), text, 'A', 'Z');
  return ZR_R_OK;
}

ZRRESULT ZrWCHARToUpper(WCHAR* text) noexcept {
  if (text == nullptr) return ZR_R_INVALID_ARGUMENTS;
  ChangeCase(g_characterCase.Upper(), text, 'a', 'z');
  return ZR_R_OK;
}
