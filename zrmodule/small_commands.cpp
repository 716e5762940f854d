// zrmodule uuid and zrmodule code.

#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>

#include "zr/zr.hpp"
#include "zrmodule/commands.h"

void MakeIdentifiers(COutput& output, uint32_t count) {
  output.Document()["ids"] = Json::array();
  for (uint32_t made = 0; made < count; ++made) {
    std::string text = zr::Uuid::Generate().ToString().ToUtf8();
    text = text.substr(1, text.size() - 2);   // without braces, as manifests and zr::Uuid want it
    output.Document()["ids"].push_back(text);
    output.Line(text);
  }
}

struct CodeText {
  uint32_t code;
  std::string name;
  std::string description;
};

// What the library knows about a code, if it does.
static std::optional<CodeText> TextOfCode(uint32_t code) {
  zr::String name, description;
  if (zr::Failed(ZrErrorInfoGetText(code, name.Put()))) return std::nullopt;
  (void)ZrErrorInfoGetDescription(code, description.Put());
  return CodeText{code, name.ToUtf8(), description.ToUtf8()};
}

// Finds a code by its name, with or without "ZR_R_". The library has no list of its codes; they are in these ranges.
static std::optional<CodeText> CodeOfName(std::string_view name) {
  static constexpr std::array<std::array<uint32_t, 2>, 2> kRanges = {{{0, 0x1000}, {0x80000000, 0x80001000}}};
  for (const auto& [first, end] : kRanges) {
    for (uint32_t code = first; code != end; ++code) {
      std::optional<CodeText> text = TextOfCode(code);
      if (text && (text->name == name || text->name == "ZR_R_" + std::string(name))) return text;
    }
  }
  return std::nullopt;
}

// Reads "0x80000004", "80000004" or "-2147483644", all 32 bits.
static std::optional<uint32_t> NumberOf(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  const bool isMarked = text.starts_with("0x") || text.starts_with("0X");
  if (isNegative) text.remove_prefix(1);
  if (isMarked) text.remove_prefix(2);
  const auto read = [&](int base) -> std::optional<uint64_t> {
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
  };
  if (isNegative) {
    const std::optional<uint64_t> magnitude = read(10);
    if (!magnitude || *magnitude > 0x80000000) return std::nullopt;
    return static_cast<uint32_t>(0 - *magnitude);
  }
  const bool isHexadecimal = isMarked || (text.size() == 8 && text.find_first_of("89ABCDEFabcdef") != text.npos);
  const std::optional<uint64_t> value = read(isHexadecimal ? 16 : 10);
  if (!value || *value > 0xFFFFFFFF) return std::nullopt;
  return static_cast<uint32_t>(*value);
}

void ExplainCode(COutput& output, const std::string& text) {
  const std::optional<uint32_t> number = NumberOf(text);
  const std::optional<CodeText> found = number ? TextOfCode(*number) : CodeOfName(text);
  std::array<char, 16> digits = {};
  const uint32_t code = found ? found->code : number.value_or(0);
  std::snprintf(digits.data(), digits.size(), "0x%08X", code);
  if (number || found) {
    output.Document()["code"] = digits.data();
    output.Document()["success"] = (code & 0x80000000) == 0;
  }
  if (!found) {
    output.Finding(Level::Error, text, 0, 0,
                   number ? std::string(digits.data()) + " is not a code of the library; a module may have registered it"
                          : "no code of the library has this name");
    return;
  }
  output.Document()["name"] = found->name;
  output.Document()["description"] = found->description;
  output.Heading(found->name + " = " + digits.data());
  output.Line(found->description + ((code & 0x80000000) == 0 ? " (a success)" : " (a failure)"));
}
