// zrmodule probe: starts the child, follows its reports, and names the stage at which it failed.

#include <cstdio>
#include <filesystem>

#include "zrmodule/commands.h"
#include "zrmodule/kit_list.h"
#include "zrmodule/probe.h"

// Finds the module of a class in the folders.
static std::string ModuleOfClass(const ProbeOptions& options) {
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery(options.folders, "");
  for (const ZrHostClass& row : CKitList<ZrHostClass>(*discovery, ZrHostListClasses)) {
    if (Utf8(row.name) == options.className) return Utf8(row.moduleFile);
  }
  return {};
}

static void ShowStage(COutput& output, const std::string& file, const Json& stage) {
  const std::string className = stage.value("class", "");
  const std::string name = stage.value("stage", "") + (className.empty() ? "" : " " + className);
  const std::string result = stage.value("result", "");
  char figures[64] = "";
  if (stage.contains("milliseconds")) {
    std::snprintf(figures, sizeof figures, "%8.2f ms %8lld bytes left", stage["milliseconds"].get<double>(),
                  static_cast<long long>(stage["bytes"].get<int64_t>()));
  }
  output.Line("  " + name + std::string(name.size() < 32 ? 32 - name.size() : 1, ' ') + result +
              std::string(result.size() < 8 ? 8 - result.size() : 1, ' ') + figures);
  if (result != "ok") output.Finding(Level::Error, file, 0, 0, name + " " + result + ": " + stage.value("detail", ""));
  output.Document()["stages"].push_back(stage);
}

void ProbeModule(COutput& output, const ProbeOptions& options) {
  if (options.file.empty() == options.className.empty()) {
    output.Finding(Level::Error, "zrmodule probe", 0, 0, "needs either FILE or --class");
    output.Raise(ExitCode::Usage);
    return;
  }
  const std::string file = options.file.empty() ? ModuleOfClass(options) : options.file;
  std::error_code error;
  if (file.empty()) {
    output.Finding(Level::Error, options.className, 0, 0, "no class of this name was found; zrmodule list shows all");
    return;
  }
  if (!std::filesystem::is_regular_file(file, error)) {
    output.Finding(Level::Error, file, 0, 0, error ? error.message() : "not a regular file");
    output.Raise(ExitCode::Unreadable);
    return;
  }
  const std::string absolute = std::filesystem::absolute(file).string();
  output.Document()["module"] = absolute;
  output.Document()["stages"] = Json::array();
  output.Heading(absolute);

  CChild child({kChildCommand, absolute, "--class", options.className});
  Json stage = {{"stage", "start"}};
  bool isRunning = false, isEnded = false;
  for (std::string line; !isEnded;) {
    const CChild::Event event = child.ReadLine(options.seconds, line);
    if (event == CChild::Event::Line) {
      const Json report = Json::parse(line);
      isRunning = report.contains("begin");
      if (isRunning) {
        stage = {{"stage", report["begin"]}};
        if (report["class"] != "") stage["class"] = report["class"];
      } else {
        for (const char* const key : {"result", "milliseconds", "bytes", "detail"}) stage[key] = report[key];
        ShowStage(output, file, stage);
      }
      continue;
    }
    isEnded = true;
    const std::string reason = child.Stop(event == CChild::Event::Timeout);
    if (event == CChild::Event::Timeout) {
      char text[64];
      std::snprintf(text, sizeof text, "did not end within %g seconds", options.seconds);
      stage.update({{"result", "hung"}, {"detail", text}});
      ShowStage(output, file, stage);
    } else if (isRunning || !reason.empty()) {
      if (!isRunning) stage = {{"stage", "end of the process"}};
      stage.update({{"result", "crashed"}, {"detail", reason.empty() ? "the process ended" : reason}});
      ShowStage(output, file, stage);
    }
  }
}
