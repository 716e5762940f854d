// Names of result codes, for failure messages.

#pragma once

#include <compare>
#include <fstream>
#include <ostream>
#include <string>

#include "tests/support/units.h"
#include "zrcore/base.h"

// Returns the name of a code in the header that defines the codes, or its hexadecimal value if it has no name. It does
// not use the library's error registry, which is itself under test.
inline std::string ResultName(ZRRESULT result) {
  if (result == ZR_R_OK) return "ZR_R_OK";
  const std::string define = "#define ", code = Format("0x%08X", static_cast<uint32_t>(result));
  std::ifstream header(BASE_HEADER);
  for (std::string line; std::getline(header, line);) {
    const bool isCode = line.rfind(define + "ZR_R_", 0) == 0 && line.find("(" + code) != std::string::npos;
    if (isCode) return line.substr(define.size(), line.find(' ', define.size()) - define.size());
  }
  return code;
}

// A result that GoogleTest prints as its name, also in pairs and sets.
struct Result {
  ZRRESULT code;
  constexpr Result(ZRRESULT of) : code(of) {}
  friend auto operator<=>(const Result&, const Result&) = default;
  friend std::ostream& operator<<(std::ostream& out, Result result) { return out << ResultName(result.code); }
};
