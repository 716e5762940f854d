// zrmodule probe: starts the child, follows its reports, and names the stage at which it failed.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "zrmodule/commands.h"
#include "zrmodule/discovery.h"
#include "zrmodule/probe.h"
#include "zrmodule/text.h"

struct Stage {
  std::string name, className, result, detail;
  std::string milliseconds, bytes;  // empty if not known
};

// The fields of a line up to the last one, which may contain separators.
static std::vector<std::string> Fields(const std::string& line, std::size_t count) {
  std::vector<std::string> fields;
  std::size_t at = 0;
  while (fields.size() + 1 < count) {
    const std::size_t end = std::min(line.find('\t', at), line.size());
    fields.push_back(line.substr(at, end - at));
    at = std::min(end + 1, line.size());
  }
  fields.push_back(line.substr(at));
  return fields;
}

class CProbeReport {
 public:
  CProbeReport(COutput& output, const std::string& file) : output_(output), file_(file) {}

  void Show(const Stage& stage) {
    const std::string name = stage.name + (stage.className.empty() ? "" : " " + stage.className);
    std::vector<JsonMember> row = {{"stage", stage.name}};
    if (!stage.className.empty()) row.push_back({"class", stage.className});
    row.push_back({"result", stage.result});
    std::string figures;
    if (!stage.milliseconds.empty()) {
      const double milliseconds = std::strtod(stage.milliseconds.c_str(), nullptr);
      row.push_back({"milliseconds", milliseconds});
      char text[32];
      std::snprintf(text, sizeof text, "%10.2f ms", milliseconds);
      figures = text;
    }
    if (!stage.bytes.empty()) {
      const long long bytes = std::strtoll(stage.bytes.c_str(), nullptr, 10);
      row.push_back({"bytes", bytes});
      bytesLeft_ = bytesLeft_.value_or(0) + bytes;
      char text[32];
      std::snprintf(text, sizeof text, " %+10lld bytes", bytes);
      figures += text;
    }
    if (!stage.detail.empty()) row.push_back({"detail", stage.detail});
    rows_.push_back(CJson::Object(row));
    output_.Line("  " + Padded(name, 32) + Padded(stage.result, 8) + figures);
    if (stage.result != "ok")
      output_.Error(stage.result.c_str(), {file_}, name + " " + stage.result + ": " + stage.detail);
  }

  // `isComplete` says that the child came to its end.
  void Finish(bool isComplete) {
    output_.Set("stages", CJson::List(rows_));
    if (!isComplete || !bytesLeft_) return;
    output_.Set("bytesLeft", *bytesLeft_);
    output_.Line("  memory left: " + std::to_string(*bytesLeft_) + " bytes");
  }

 private:
  static std::string Padded(const std::string& text, std::size_t width) {
    return text + std::string(text.size() < width ? width - text.size() : 1, ' ');
  }

  COutput& output_;
  const std::string& file_;
  std::vector<CJson> rows_;
  std::optional<long long> bytesLeft_;
};

// No code of the module runs before the first line of the report, so the user's limit doesn't apply to that time: only
// the machine is slow then.
static constexpr double kLeastSecondsToStart = 60;

// Follows the child to its end. Returns whether it ended well.
static bool Follow(CChild& child, double seconds, CProbeReport& report) {
  Stage stage = {"start", {}, {}, {}, {}, {}};
  bool isRunning = true;  // a stage
  std::string line;
  CChild::Event event = child.ReadLine(std::max(seconds, kLeastSecondsToStart), line);
  for (; event == CChild::Event::Line; event = child.ReadLine(seconds, line)) {
    if (line.starts_with("begin\t")) {
      const std::vector<std::string> fields = Fields(line, 3);
      stage = {fields[1], fields[2], {}, {}, {}, {}};
      isRunning = true;
    } else if (line.starts_with("end\t") && isRunning) {
      const std::vector<std::string> fields = Fields(line, 5);
      stage.result = fields[1];
      stage.milliseconds = fields[2];
      stage.bytes = fields[3];
      stage.detail = fields[4];
      report.Show(stage);
      stage = {"end", {}, {}, {}, {}, {}};  // destructors and handlers that run at the end of the process
      isRunning = false;
    }
  }
  std::string reason;
  const bool hasEnded = child.Stop(event == CChild::Event::Timeout ? 0 : seconds, reason);
  if (hasEnded && reason.empty() && !isRunning) return true;
  stage.detail = reason;
  if (!hasEnded) {
    char text[96];
    std::snprintf(text, sizeof text, "did not end within %g seconds; --timeout sets another limit", seconds);
    stage.result = "hung";
    stage.detail = text;
  } else if (reason.starts_with("signal") || reason.starts_with("exception")) {
    stage.result = "crashed";
  } else {
    stage.result = "exited";
    stage.detail = "the module ended the process" + (reason.empty() ? "" : " with " + reason);
  }
  report.Show(stage);
  return false;
}

struct ModuleOfClass {
  std::string file;
  std::filesystem::path folder;  // of the manifest, which can be above that of the module
};

static ModuleOfClass FindClass(const ProbeOptions& options) {
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery(options.folders);
  for (const ZrHostClass& row : zr::ListHostClasses(*discovery).Value()) {
    if (Utf8(row.name) == options.className)
      return {Utf8(row.moduleFile), PathOf(Utf8(row.manifestFile)).parent_path()};
  }
  return {};
}

// Whether a manifest in the folder lists classes of the module.
static bool HasClasses(const std::filesystem::path& folder, const std::filesystem::path& module) {
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery({Utf8(folder)});
  std::error_code error;
  for (const ZrHostClass& row : zr::ListHostClasses(*discovery).Value()) {
    if (std::filesystem::equivalent(PathOf(Utf8(row.moduleFile)), module, error)) return true;
  }
  return false;
}

void ProbeModule(COutput& output, const ProbeOptions& options) {
  if (options.file.empty() == options.className.empty()) {
    output.Error("usage", {}, "probe needs either FILE or --class NAME");
    output.Raise(ExitCode::Usage);
    return;
  }
  const ModuleOfClass found = options.file.empty() ? FindClass(options) : ModuleOfClass{};
  const std::string file = options.file.empty() ? found.file : options.file;
  if (file.empty()) {
    output.Error("unknown-class", {},
                 "no manifest lists the class " + Quoted(options.className) +
                     "; zrmodule list shows the classes and the problems of manifests");
    return;
  }
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(PathOf(file), error);
  if (!std::filesystem::is_regular_file(absolute, error)) {
    output.Error("unreadable", {file}, error ? error.message() : "is not a regular file");
    output.Raise(ExitCode::Unreadable);
    return;
  }
  output.Set("module", Utf8(absolute));
  output.Heading(Utf8(absolute));
  const std::filesystem::path folder = options.file.empty() ? found.folder : absolute.parent_path();
  if (!HasClasses(folder, absolute)) {
    output.Finding(Level::Note, "no-manifest", {file},
                   "no manifest in its folder lists classes of this file, so none is created; zrmodule list shows why");
  }
  std::fflush(stdout);  // before output of the child
  CChild child({kChildCommand, Utf8(absolute), options.className, Utf8(folder)});
  CProbeReport report(output, file);
  report.Finish(Follow(child, options.seconds, report));
}
