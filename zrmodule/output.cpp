#include "zrmodule/output.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "zrmodule/system.h"
#include "zrmodule/text.h"

static constexpr int kJsonSchema = 1;

struct LevelStyle {
  const char* name;
  const char* colour;
};
static constexpr std::array<LevelStyle, 3> kLevels = {
    {{"note", "\x1b[36m"}, {"warning", "\x1b[33m"}, {"error", "\x1b[31m"}}};
static constexpr const char* kBold = "\x1b[1m";
static constexpr const char* kPlain = "\x1b[0m";

COutput::COutput(bool isJson, std::string command)
    : isJson_(isJson),
      isColoured_(!isJson && IsColourTerminal()),
      document_{{"schema", kJsonSchema}, {"command", command}} {}

void COutput::Set(const std::string& key, const CJson& value) { document_.push_back({key, value}); }

void COutput::Line(const std::string& text) const {
  if (!isJson_) std::printf("%s\n", Printable(text).c_str());
}

void COutput::Heading(const std::string& text) const {
  if (!isJson_) std::printf("%s%s%s\n", isColoured_ ? kBold : "", Printable(text).c_str(), isColoured_ ? kPlain : "");
}

void COutput::Finding(Level level, const char* kind, const Place& place, const std::string& reason) {
  const LevelStyle& style = kLevels[static_cast<std::size_t>(level)];
  if (level != Level::Note) {
    ++count_;
    Raise(ExitCode::Findings);
  }
  if (isJson_) {
    std::vector<JsonMember> finding = {{"severity", style.name}, {"kind", kind}};
    if (!place.file.empty()) finding.push_back({"file", place.file});
    if (place.line != 0) finding.insert(finding.end(), {{"line", place.line}, {"column", place.column}});
    finding.push_back({"reason", reason});
    findings_.push_back(CJson::Object(finding));
    return;
  }
  const std::string numbers =
      place.line != 0 ? ":" + std::to_string(place.line) + ":" + std::to_string(place.column) : "";
  const std::string subject = Printable(place.file.empty() ? "zrmodule" : place.file) + numbers;
  std::printf("%s: %s%s%s: %s [%s]\n", subject.c_str(), isColoured_ ? style.colour : "", style.name,
              isColoured_ ? kPlain : "", Printable(reason).c_str(), kind);
}

void COutput::Raise(ExitCode code) noexcept { code_ = std::max(code_, code); }

int COutput::Finish() {
  if (isJson_) {
    Set("findings", CJson::List(findings_));
    Set("exit", static_cast<int>(code_));
    std::printf("%s\n", CJson::Object(document_).Text().c_str());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fputs("zrmodule: error: can't write the output\n", stderr);
    Raise(ExitCode::Unreadable);
  }
  return static_cast<int>(code_);
}
