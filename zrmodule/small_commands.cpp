// zrmodule uuid and zrmodule code.

#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>

#include "result_codes.h"  // generated: kResultCodes, the codes of zrcore/base.h with their comments
#include "zr/uuid.hpp"
#include "zrmodule/commands.h"
#include "zrmodule/discovery.h"
#include "zrmodule/text.h"

void MakeIdentifiers(COutput& output, uint32_t count) {
  std::vector<std::string> ids;
  for (uint32_t made = 0; made < count; ++made) ids.push_back(Utf8(zr::Uuid::Generate()));
  for (const std::string& id : ids) output.Line(id);
  output.Set("ids", CJson::List(ids));
}

// Reads "0x80000004", "80000004" or "-2147483644", all of which are the same 32 bits.
static std::optional<uint32_t> NumberOf(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  const bool isMarked = text.starts_with("0x") || text.starts_with("0X");
  const bool isHexadecimal = isMarked || (text.size() == 8 && text.find_first_of("89ABCDEFabcdef") == 0);
  text.remove_prefix(isNegative ? 1 : isMarked ? 2 : 0);
  uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, isHexadecimal ? 16 : 10);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (value > (isNegative ? 0x80000000 : 0xFFFFFFFF)) return std::nullopt;
  return static_cast<uint32_t>(isNegative ? 0 - value : value);
}

// Finds a code by its number or by its name, with or without "ZR_R_" and in any case.
static const ResultCode* FindCode(std::optional<uint32_t> number, const std::string& text) {
  std::string name = text;
  for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  for (const ResultCode& row : kResultCodes) {
    if (number ? row.code == *number : row.name == name || row.name == "ZR_R_" + name) return &row;
  }
  return nullptr;
}

void ExplainCode(COutput& output, const std::string& text) {
  const std::optional<uint32_t> number = NumberOf(text);
  const ResultCode* const found = FindCode(number, text);
  if (!found && !number) {
    output.Error("unknown-code", {}, Quoted(text) + " is neither a number nor the name of a code of the library");
    return;
  }
  const uint32_t code = found ? found->code : *number;
  const bool isSuccess = static_cast<int32_t>(code) >= 0;
  std::array<char, 16> digits = {};
  std::snprintf(digits.data(), digits.size(), "0x%08X", code);
  output.Set("code", digits.data());
  output.Set("number", static_cast<int32_t>(code));
  output.Set("success", isSuccess);
  const std::string numbers = std::string(digits.data()) + " (" + std::to_string(static_cast<int32_t>(code)) + ")";
  if (!found) {
    output.Error("unknown-code", {},
                 numbers + (isSuccess ? ", a success," : ", a failure,") +
                     " is not a code of the library; a module may have defined it");
    return;
  }
  // A comment of base.h ends in "(module)" if only modules return the code.
  static constexpr std::string_view kModule = "(module)";
  std::string_view comment = found->comment;
  const bool isOfModules = comment.ends_with(kModule);
  if (isOfModules) comment.remove_suffix(kModule.size());
  while (comment.ends_with(' ')) comment.remove_suffix(1);
  output.Set("name", found->name.data());
  output.Set("meaning", std::string(comment));
  output.Set("returnedBy", isOfModules ? "modules" : "library");
  output.Heading(std::string(found->name) + " = " + numbers + (isSuccess ? ", a success" : ", a failure"));
  if (!comment.empty()) output.Line("  " + std::string(comment));
  output.Line(isOfModules ? "  Modules and hosts may return it; the library does not." : "  The library returns it.");
}
