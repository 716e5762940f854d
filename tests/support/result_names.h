// Result codes by name, for the messages of failed tests.

#pragma once

#include <compare>
#include <ostream>
#include <string>

#include "tests/support/units.h"
#include "zrcore/error_info.h"

// The name in the library's registry of errors; hexadecimal for a code that has no name. The first call fills the
// registry, so only a test that fails should call this.
inline std::string ResultName(ZRRESULT result) {
  const auto code = static_cast<uint32_t>(result);
  Owned name;
  if (result == ZR_R_OK) return "ZR_R_OK";  // the registry names no success but ZR_R_SAME_VALUE
  if (ZrErrorInfoGetText(code, &name.string) != ZR_R_OK) return Format("0x%08X", code);
  return Narrowed(Units(name.string, ZrStringLen(name)));
}

// A result that prints as its name: in pairs, sets and tables of expectations.
struct Result {
  ZRRESULT code;
  constexpr Result(ZRRESULT of) : code(of) {}
  friend auto operator<=>(const Result&, const Result&) = default;
  friend std::ostream& operator<<(std::ostream& out, Result result) { return out << ResultName(result.code); }
};
