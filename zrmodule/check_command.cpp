// zrmodule check: everything about a module that can be known without running its code. Each check is one function, in the
// order of the list at the end.

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "zr/zr.hpp"
#include "zrhost/host.h"
#include "zrmodule/commands.h"
#include "zrmodule/kit_list.h"
#include "zrmodule/module_file.h"

static constexpr std::array<const char*, 3> kExports = {"ZrInitModule", "ZrExitModule", "ZrCreateInstanceModule"};

struct Checked {
  COutput& output;
  const std::filesystem::path& file;
  const ModuleFile& module;

  void Error(const std::string& reason) const { output.Finding(Level::Error, file.string(), 0, 0, reason); }
  void Warn(const std::string& reason) const { output.Finding(Level::Warning, file.string(), 0, 0, reason); }
};

// The first names of a list, and how many more there are.
static std::string Names(const std::vector<std::string>& names) {
  static constexpr std::size_t kShown = 5;
  std::string text;
  for (std::size_t index = 0; index < std::min(names.size(), kShown); ++index) {
    text += (index == 0 ? "" : ", ") + names[index];
  }
  return names.size() > kShown ? text + " and " + std::to_string(names.size() - kShown) + " more" : text;
}

static void CheckKind(const Checked& checked) {
  if (!checked.module.isLoadable) checked.Error("not a shared library, so no host can load it");
  if (checked.module.processor != OwnProcessor()) {
    checked.Error("built for " + checked.module.processor + ", but this system needs " + OwnProcessor());
  }
}

static void CheckExports(const Checked& checked) {
  const std::set<std::string> exports(checked.module.exports.begin(), checked.module.exports.end());
  for (const char* const name : kExports) {
    if (exports.count(name) == 0) checked.Error("does not export " + std::string(name));
  }
  std::vector<std::string> others;
  for (const std::string& name : exports) {
    if (std::find(kExports.begin(), kExports.end(), name) == kExports.end()) others.push_back(name);
  }
  if (!others.empty()) {
    checked.Warn("exports more than the three functions of a module: " + Names(others) +
                 "; link it with zrcore_add_module or zrcore_module.map");
  }
}

static void CheckUnloading(const Checked& checked) {
  if (!checked.module.uniqueSymbols.empty()) {
    checked.Error("never unloads, because it exports symbols that are unique in the process: " +
                  Names(checked.module.uniqueSymbols));
  }
  if (checked.module.isPinned) checked.Error("never unloads, because it was linked with -z nodelete");
}

// Reads a needed library and the libraries that it needs, and collects what they export.
static void Collect(const Checked& checked, const std::string& name, const std::filesystem::path& neededBy,
                    const ModuleFile& asks, std::set<std::string>& seen, std::set<std::string>& defined, bool& isComplete) {
  if (!seen.insert(name).second) return;
  const std::filesystem::path file = FindLibrary(name, neededBy, asks);
  ModuleFile library;
  std::string reason;
  if (file.empty() || !ReadModuleFile(file, library, reason)) {
    isComplete = false;
    checked.Error("needs the library " + name + ", which is not found" +
                  (neededBy == checked.file ? "" : " (by way of " + neededBy.filename().string() + ")"));
    return;
  }
  defined.insert(library.exports.begin(), library.exports.end());
  for (const std::string& next : library.needed) Collect(checked, next, file, library, seen, defined, isComplete);
}

static void CheckLibraries(const Checked& checked) {
  static const std::string kOwn = "libzrcore.so." + std::to_string(ZRCORE_VERSION_MAJOR);
  if (checked.module.processor != OwnProcessor()) return;   // its libraries are on another machine
  std::set<std::string> seen, defined;
  bool isComplete = true;
  for (const std::string& name : checked.module.needed) {
    if (name.rfind("libzrcore.so", 0) == 0 && name != kOwn) {
      checked.Error("needs " + name + ", but this version of ZrCore is " + kOwn);
    }
    Collect(checked, name, checked.file, checked.module, seen, defined, isComplete);
  }
  if (!isComplete) return;   // the missing library may define what is undefined
  std::vector<std::string> unresolved;
  for (const std::string& name : checked.module.undefined) {
    if (defined.count(name) == 0) unresolved.push_back(name);
  }
  if (!unresolved.empty()) checked.Error("no needed library defines " + Names(unresolved) + "; a host can't load it");
}

static void CheckHardening(const Checked& checked) {
  if (checked.module.hasExecutableStack) checked.Warn("needs an executable stack");
  if (checked.module.hasTextRelocations) checked.Warn("has text relocations, because a part was compiled without -fPIC");
}

// Reads the manifests of the folder. The one with the module's name must be about this file.
static void CheckManifest(const Checked& checked) {
  std::filesystem::path manifest = checked.file;
  manifest.replace_extension(".zrmodule");
  std::error_code error;
  if (!std::filesystem::exists(manifest, error)) {
    checked.output.Finding(Level::Note, checked.file.string(), 0, 0,
                           "has no manifest " + manifest.filename().string() + ", so only a host that knows it finds it");
    return;
  }
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery({checked.file.parent_path().string()}, "");
  bool isListed = false;
  std::string other;
  for (const ZrHostClass& row : CKitList<ZrHostClass>(*discovery, ZrHostListClasses)) {
    if (!std::filesystem::equivalent(Utf8(row.manifestFile), manifest, error)) continue;
    const bool isSame = std::filesystem::equivalent(Utf8(row.moduleFile), checked.file, error);
    isListed = isListed || isSame;
    if (!isSame) other = Utf8(row.moduleFile);
  }
  for (const ZrHostProblem& row : CKitList<ZrHostProblem>(*discovery, ZrHostListProblems)) {
    if (Utf8(row.file) != manifest.string()) continue;
    checked.output.Finding(row.severity == ZRHOST_WARNING ? Level::Warning : Level::Error, Utf8(row.file), row.line,
                           row.column, Utf8(row.reason));
  }
  if (!other.empty()) {
    checked.output.Finding(Level::Error, manifest.string(), 0, 0,
                           "is the manifest of another file, " + Quoted(other));
  } else if (!isListed) {
    checked.output.Finding(Level::Warning, manifest.string(), 0, 0, "lists no class that can be used");
  }
}

void CheckModules(COutput& output, const std::vector<std::string>& files) {
  output.Document()["files"] = Json::array();
  for (const std::string& name : files) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::absolute(name, error);
    ModuleFile module;
    std::string reason;
    if (!ReadModuleFile(file, module, reason)) {
      output.Finding(Level::Error, name, 0, 0, reason);
      output.Raise(ExitCode::Unreadable);
      continue;
    }
    output.Document()["files"].push_back({{"file", file.string()},
                                          {"processor", module.processor},
                                          {"needed", module.needed},
                                          {"exports", module.exports.size()}});
    const Checked checked{output, file, module};
    const bool isGood = output.Status() == ExitCode::Good;
    for (const auto check : {CheckKind, CheckExports, CheckUnloading, CheckLibraries, CheckHardening, CheckManifest}) {
      check(checked);
    }
    if (isGood && output.Status() == ExitCode::Good) output.Line(name + ": no findings");
  }
}
