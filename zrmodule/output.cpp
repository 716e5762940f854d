#include "zrmodule/output.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "zrmodule/system.h"

static constexpr int kJsonSchema = 1;

struct LevelStyle {
  const char* name;
  const char* colour;
};
static constexpr std::array<LevelStyle, 3> kLevels = {
    {{"note", "\x1b[36m"}, {"warning", "\x1b[33m"}, {"error", "\x1b[31m"}}};
static constexpr const char* kBold = "\x1b[1m";
static constexpr const char* kPlain = "\x1b[0m";

COutput::COutput(bool isJson, const std::string& command)
    : isJson_(isJson), isColoured_(!isJson && IsColourTerminal()), document_(Json::object()) {
  document_["schema"] = kJsonSchema;
  document_["command"] = command;
}

void COutput::Line(const std::string& text) const {
  if (!isJson_) std::printf("%s\n", Printable(text).c_str());
}

void COutput::Heading(const std::string& text) const {
  if (isJson_) return;
  if (isColoured_) std::printf("%s%s%s\n", kBold, Printable(text).c_str(), kPlain);
  else std::printf("%s\n", Printable(text).c_str());
}

void COutput::Finding(Level level, const std::string& file, uint32_t line, uint32_t column, const std::string& reason) {
  const LevelStyle& style = kLevels[static_cast<std::size_t>(level)];
  if (level != Level::Note) Raise(ExitCode::Findings);
  if (isJson_) {
    Json finding = {{"severity", style.name}, {"file", file}};
    if (line != 0) finding.update({{"line", line}, {"column", column}});
    finding["reason"] = reason;
    document_["findings"].push_back(std::move(finding));
    return;
  }
  const std::string place = line != 0 ? ":" + std::to_string(line) + ":" + std::to_string(column) : "";
  std::printf("%s%s: %s%s%s: %s\n", Printable(file).c_str(), place.c_str(), isColoured_ ? style.colour : "", style.name,
              isColoured_ ? kPlain : "", Printable(reason).c_str());
}

void COutput::Raise(ExitCode code) noexcept { code_ = std::max(code_, code); }

int COutput::Finish() {
  if (isJson_) {
    if (!document_.contains("findings")) document_["findings"] = Json::array();
    document_["exit"] = static_cast<int>(code_);
    std::printf("%s\n", document_.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
  }
  return static_cast<int>(code_);
}

std::string Printable(const std::string& utf8) {
  std::string printable;
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) printable += c;
    else if (c == '\n' || c == '\t') printable += ' ';
    else printable += '?';
  }
  return printable;
}
