// Result codes by name, for the messages of failed tests.

#pragma once

#include <compare>
#include <fstream>
#include <ostream>
#include <string>

#include "tests/support/units.h"
#include "zrcore/base.h"

// The name in the header that defines the codes; hexadecimal for a code without a name. It doesn't ask the library,
// whose registry of errors is under test itself.
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

// A result that prints as its name: in pairs, sets and tables of expectations.
struct Result {
  ZRRESULT code;
  constexpr Result(ZRRESULT of) : code(of) {}
  friend auto operator<=>(const Result&, const Result&) = default;
  friend std::ostream& operator<<(std::ostream& out, Result result) { return out << ResultName(result.code); }
};
