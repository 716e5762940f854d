// One reference on a counted string, given up at the end of the scope.

#ifndef EXAMPLES_STRING_OWNER_H
#define EXAMPLES_STRING_OWNER_H

#include <zrcore/string.h>

#include <cstdint>
#include <limits>
#include <memory>

#include "code_units.h"

struct StringRelease {
  void operator()(WCHAR* string) const noexcept { ZrDestroyString(string); }
};
using StringOwner = std::unique_ptr<WCHAR, StringRelease>;

/// Units shows the content of a string. The length comes from the string's header, so zero units are part of it.
inline WideView Units(ZRSTR string) noexcept {
  return string == nullptr ? WideView() : WideView(string, ZrStringLen(string));
}

/// MakeString gives a string of exactly these units; null if memory or the 32 bits for its length don't suffice.
///
/// By bytes, because the other creators stop copying at a zero unit and need a terminator, which a slice has not.
inline ZRSTR MakeString(WideView units) noexcept {
  constexpr std::size_t kMostUnits = std::numeric_limits<std::uint32_t>::max() / sizeof(WCHAR) - 1;
  if (units.size() > kMostUnits) return nullptr;
  return ZrCreateStringByteLen(units.data(), static_cast<std::uint32_t>(units.size() * sizeof(WCHAR)));
}

#endif
