// Texts that may begin with an integer, in base 10 or 16: those at a limit, and many at random.

#pragma once

#include <cctype>
#include <random>
#include <sstream>
#include <string>

// C libraries differ about a "0x" without digits behind it. Only its 0 is to be read, so that is all they are shown.
inline std::string WithoutEmptyPrefix(const std::string& bytes) {
  std::size_t at = bytes.find_first_not_of(" \t\n\v\f\r");
  if (at == std::string::npos) return bytes;
  if (bytes[at] == '-' || bytes[at] == '+') ++at;
  const bool isPrefix = bytes.compare(at, 2, "0x") == 0 || bytes.compare(at, 2, "0X") == 0;
  const bool isFollowed = isPrefix && at + 2 < bytes.size() && std::isxdigit(static_cast<unsigned char>(bytes[at + 2]));
  return isPrefix && !isFollowed ? bytes.substr(0, at + 1) : bytes;
}

template <class Check>
void ForEachIntegerText(const Check& check) {
  std::istringstream texts(
      "|-|+-1| \t\n\v\f\r42|0x|0x1g|-0XfF|9223372036854775807|9223372036854775808|-9223372036854775808|"
      "-9223372036854775809|18446744073709551615|18446744073709551616|-18446744073709551615|-18446744073709551616|"
      "7fffffffffffffff|8000000000000000|ffffffffffffffff|10000000000000000|-8000000000000000|-ffffffffffffffff");
  for (std::string text; std::getline(texts, text, '|');) check(text);
  std::mt19937 random(3);
  static constexpr char kUnits[] = "00123456789999afAFx+- \tg.";
  for (int round = 0; round < 20000; ++round) {
    std::string text(random() % 24, ' ');
    for (char& unit : text) unit = kUnits[random() % sizeof kUnits];  // zero units too
    check(text);
  }
}
