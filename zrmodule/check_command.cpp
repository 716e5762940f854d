// zrmodule check: everything about a module that can be known without running its code. CheckModule calls the checks in
// their order.

#include <algorithm>
#include <array>
#include <exception>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "zrmodule/commands.h"
#include "zrmodule/discovery.h"
#include "zrmodule/module_file.h"
#include "zrmodule/text.h"

static constexpr std::array<std::string_view, 3> kExports = {"ZrInitModule", "ZrExitModule", "ZrCreateInstanceModule"};

// A library that modules need, with the versions of its symbols by their names.
struct Library {
  ModuleFile file;
  std::multimap<std::string, std::string> exports;
};

// The manifests of one folder.
class CManifestFolder {
 public:
  explicit CManifestFolder(const std::filesystem::path& folder) : CManifestFolder(*MakeDiscovery({Utf8(folder)})) {}

  // Whether a manifest lists classes of the file.
  [[nodiscard]] bool Lists(const std::filesystem::path& module) const { return modules_.count(Real(module)) != 0; }

  // The module of a manifest; empty if it lists no classes that can be used.
  [[nodiscard]] std::filesystem::path ModuleOf(const std::filesystem::path& manifest) const {
    const auto found = moduleOf_.find(manifest.filename());
    return found != moduleOf_.end() ? found->second : std::filesystem::path();
  }

  // Reports the problems of a manifest. Returns whether there are any.
  bool ReportProblems(COutput& output, const std::filesystem::path& manifest) const {
    bool isFound = false;
    for (const ZrHostProblem& problem : problems_) {
      if (PathOf(Utf8(problem.file)).filename() != manifest.filename()) continue;
      isFound = true;
      ReportProblem(output, problem);
    }
    return isFound;
  }

 private:
  explicit CManifestFolder(IZrComponentDiscovery& discovery) : problems_(zr::ListHostProblems(discovery).Value()) {
    for (const ZrHostClass& row : zr::ListHostClasses(discovery).Value()) {
      const std::filesystem::path module = PathOf(Utf8(row.moduleFile));
      if (moduleOf_.emplace(PathOf(Utf8(row.manifestFile)).filename(), module).second) modules_.insert(Real(module));
    }
  }

  static std::filesystem::path Real(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::canonical(file, error);
  }

  zr::HostList<ZrHostProblem> problems_;
  std::map<std::filesystem::path, std::filesystem::path> moduleOf_;  // by the names of the manifests
  std::set<std::filesystem::path> modules_;
};

// Libraries and manifests are read once, whichever modules need them.
class CCache {
 public:
  // Returns null with a reason if the file can't be read.
  const Library* ReadLibrary(const std::filesystem::path& file, std::string& reason) {
    const auto known = libraries_.find(file);
    if (known != libraries_.end()) return &known->second;
    Library library;
    if (!ReadModuleFile(file, library.file, reason)) return nullptr;
    for (const ModuleSymbol& symbol : library.file.exports) library.exports.emplace(symbol.name, symbol.version);
    return &libraries_.emplace(file, std::move(library)).first->second;
  }

  // Throws if the path is not UTF-8.
  const CManifestFolder& ReadManifests(const std::filesystem::path& folder) {
    return folders_.try_emplace(folder, folder).first->second;
  }

 private:
  std::map<std::filesystem::path, Library> libraries_;
  std::map<std::filesystem::path, CManifestFolder> folders_;
};

struct Checked {
  COutput& output;
  CCache& cache;
  const std::string& name;  // of the file, as the user gave it
  const ModuleFile& module;

  void Error(const char* kind, const std::string& reason) const { output.Error(kind, {name}, reason); }
  void Warn(const char* kind, const std::string& reason) const { output.Finding(Level::Warning, kind, {name}, reason); }
  void Note(const char* kind, const std::string& reason) const { output.Finding(Level::Note, kind, {name}, reason); }
  [[nodiscard]] bool IsForThisSystem() const { return module.isLibrary && module.processor == OwnProcessor(); }
};

static void CheckKind(const Checked& checked) {
  if (!checked.module.isLibrary) {
    checked.Error("not-a-library", "is a program or an object file, not a shared library; link it as a module");
  }
  if (checked.module.processor != OwnProcessor()) {
    checked.Error("wrong-processor", "is built for " + checked.module.processor + ", but hosts of this system run on " +
                                         OwnProcessor() + "; build the module for this processor");
  }
}

// Functions that only the C++ runtime itself defines. Instances of its templates, which modules have too, are not
// listed.
static constexpr std::array<std::string_view, 6> kRuntimeFunctions = {
    "__cxa_throw",          "__cxa_begin_catch",      "__cxa_guard_acquire",
    "__gxx_personality_v0", "_Unwind_RaiseException", "_ZSt9terminatev"};

static void CheckExports(const Checked& checked) {
  std::set<std::string> names;
  for (const ModuleSymbol& symbol : checked.module.exports) names.insert(symbol.name);
  for (const std::string_view name : kExports) {
    if (names.erase(std::string(name)) == 0) {
      checked.Error("missing-export",
                    "does not export " + std::string(name) + "; define it with the signature of zrcore/component.h");
    }
  }
  if (names.empty()) return;
  const bool hasRuntime = std::any_of(kRuntimeFunctions.begin(), kRuntimeFunctions.end(),
                                      [&](std::string_view name) { return names.count(std::string(name)) != 0; });
  if (hasRuntime) {
    checked.Error(
        "leaked-runtime",
        "exports " + Counted(names.size(), "symbol") +
            " more than the three functions of a module, among them "
            "the C++ runtime, because libstdc++ or libgcc was linked statically: they mix with the runtime of "
            "the host; link without -static-libstdc++ and -static-libgcc, or hide them with zrcore_add_module");
  } else {
    checked.Warn("extra-export",
                 "exports more than the three functions of a module: " + Names({names.begin(), names.end()}) +
                     "; zrcore_add_module hides all other symbols");
  }
}

static void CheckUnloading(const Checked& checked) {
  if (!checked.module.uniqueSymbols.empty()) {
    checked.Error("unique-symbol", "is never unloaded, because it exports symbols that exist once in the process: " +
                                       Names(checked.module.uniqueSymbols) +
                                       "; hide them with zrcore_add_module, or compile with -fno-gnu-unique");
  }
  if (checked.module.isNeverUnloaded) {
    checked.Error("never-unloaded", "is never unloaded, because it was linked with -z nodelete; link it without");
  }
  for (const ModuleSymbol& symbol : checked.module.undefined) {
    if (symbol.name != "__cxa_thread_atexit" && symbol.name != "__cxa_thread_atexit_impl") continue;
    checked.Note("thread-local",
                 "has a thread_local variable with a destructor: while a thread that used it runs, the "
                 "module stays in memory");
  }
}

static void CheckHardening(const Checked& checked) {
  if (checked.module.hasExecutableStack) {
    checked.Warn("executable-stack", "needs an executable stack; link it with -z noexecstack");
  }
  if (checked.module.hasTextRelocations) {
    checked.Warn("text-relocations", "has text relocations; compile all of its code with -fPIC");
  }
}

// The library's own version is checked by its name, even if the library isn't found.
static void CheckOwnLibrary(const Checked& checked) {
  const LibraryName own = OwnLibrary();
  for (const std::string& name : checked.module.needed) {
    if (name.starts_with(own.prefix) && name != own.name) {
      checked.Error("wrong-library-version",
                    "needs " + name + ", but this version of ZrCore is " + own.name + "; build it with this version");
    }
  }
}

// The libraries of one module: which files they are, and what they define.
class CLibraries {
 public:
  explicit CLibraries(const Checked& checked) : checked_(checked) { Load(checked.module); }

  // Whether all were found. What is undefined may be defined in a library that wasn't.
  [[nodiscard]] bool IsComplete() const noexcept { return isComplete_; }

  // Symbols that no library defines.
  [[nodiscard]] std::vector<std::string> Unresolved() const {
    std::vector<std::string> names;
    for (const ModuleSymbol& symbol : checked_.module.undefined) {
      if (!IsDefined(symbol)) names.push_back(symbol.name + (symbol.version.empty() ? "" : "@" + symbol.version));
    }
    return names;
  }

  [[nodiscard]] std::vector<CJson> Files() const {
    std::vector<CJson> files;
    for (const auto& [name, library] : libraries_) {
      files.push_back(CJson::Object({{"name", name}, {"file", library ? Utf8(library->file.file) : ""}}));
    }
    return files;
  }

 private:
  void Load(const ModuleFile& by) {
    for (const std::string& name : by.needed) {
      if (libraries_.count(name) != 0) continue;
      const std::filesystem::path file = FindLibrary(name, by, checked_.module);
      std::string reason = "is not found; install it, or add its folder to the RUNPATH of the module";
      const Library* const library = file.empty() ? nullptr : checked_.cache.ReadLibrary(file, reason);
      libraries_.emplace(name, library);
      if (library != nullptr) {
        Load(library->file);
      } else {
        isComplete_ = false;
        const std::string way = &by == &checked_.module ? "" : ", which " + Utf8(by.file.filename()) + " needs,";
        checked_.Error("missing-library", "needs the library " + name +
                                              (way.empty() ? ", which " : way + " but which ") +
                                              (file.empty() ? reason : "can't be read: " + reason));
      }
    }
    for (const RequiredVersion& required : by.requiredVersions) {
      const auto found = libraries_.find(required.library);
      if (found == libraries_.end() || found->second == nullptr) continue;
      const std::vector<std::string>& defined = found->second->file.definedVersions;  // empty: the loader accepts it
      if (defined.empty() || std::find(defined.begin(), defined.end(), required.version) != defined.end()) continue;
      checked_.Error("missing-version",
                     (&by == &checked_.module ? "" : Utf8(by.file.filename()) + " ") + "needs version " +
                         required.version + " of " + required.library + ", which " + Utf8(found->second->file.file) +
                         " does not have; build the module on the oldest system on which it will run");
    }
  }

  [[nodiscard]] bool IsDefined(const ModuleSymbol& symbol) const {
    for (const auto& [name, library] : libraries_) {
      if (library == nullptr || (!symbol.library.empty() && symbol.library != name)) continue;
      const auto range = library->exports.equal_range(symbol.name);
      for (auto found = range.first; found != range.second; ++found) {
        if (symbol.version.empty() || found->second.empty() || found->second == symbol.version) return true;
      }
    }
    return false;
  }

  const Checked& checked_;
  std::map<std::string, const Library*> libraries_;  // null for one that wasn't found
  bool isComplete_ = true;
};

static std::vector<CJson> CheckLibraries(const Checked& checked) {
  if (!checked.IsForThisSystem()) return {};  // its libraries are on another machine
  const CLibraries libraries(checked);
  const std::vector<std::string> unresolved = libraries.Unresolved();
  if (libraries.IsComplete() && !unresolved.empty()) {
    checked.Error("unresolved-symbol", "can't be loaded, because no library that it needs defines " +
                                           Names(unresolved) +
                                           "; link the library that defines them, or the missing object file");
  }
  return libraries.Files();
}

// A manifest in the folder must list classes of this file, and the manifest with the file's name must not be about
// another file.
static void CheckManifest(const Checked& checked) {
  const std::filesystem::path& file = checked.module.file;
  const CManifestFolder& manifests = checked.cache.ReadManifests(file.parent_path());
  std::filesystem::path own = file;
  own.replace_extension(".zrmodule");
  std::error_code error;
  const std::filesystem::path module = manifests.ModuleOf(own);
  const bool isOfOther = !module.empty() && !std::filesystem::equivalent(module, file, error);
  if (isOfOther) {
    checked.output.Error("manifest-of-other-file", {Utf8(own)},
                         "is the manifest of another file, " + Quoted(Utf8(module)) +
                             "; correct its \"module\", or rename one of the files");
  }
  const bool hasProblem = manifests.ReportProblems(checked.output, own);
  if (isOfOther || hasProblem || manifests.Lists(file)) return;
  if (std::filesystem::exists(own, error)) {
    checked.output.Finding(Level::Warning, "manifest-without-class", {Utf8(own)},
                           "lists no classes, so no host finds the module");
  } else {
    checked.Note("no-manifest", "has no manifest " + Utf8(own.filename()) +
                                    ", so hosts don't find it in its folder; zrcore_add_module writes one for CLASSES");
  }
}

static CJson CheckModule(COutput& output, CCache& cache, const std::string& name) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(PathOf(name), error);
  std::vector<JsonMember> row = {{"file", Utf8(file)}};
  ModuleFile module;
  std::string reason;
  if (!ReadModuleFile(file, module, reason)) {
    output.Error("unreadable", {name}, reason);
    output.Raise(ExitCode::Unreadable);
    return CJson::Object(row);
  }
  const Checked checked{output, cache, name, module};
  const std::size_t before = output.Count();
  CheckKind(checked);
  CheckExports(checked);
  CheckUnloading(checked);
  CheckHardening(checked);
  CheckOwnLibrary(checked);
  const std::vector<CJson> libraries = CheckLibraries(checked);
  CheckManifest(checked);
  if (output.Count() == before) output.Line(name + ": good");
  row.push_back({"processor", module.processor});
  row.push_back({"exports", module.exports.size()});
  row.push_back({"libraries", CJson::List(libraries)});
  return CJson::Object(row);
}

void CheckModules(COutput& output, const std::vector<std::string>& files) {
  CCache cache;
  std::vector<CJson> rows;
  for (const std::string& name : files) {
    try {
      rows.push_back(CheckModule(output, cache, name));
    } catch (const std::exception& error) {  // such as a path that is not UTF-8; the other files are checked
      output.Error("failed", {name}, error.what());
      output.Raise(ExitCode::Unreadable);
    }
  }
  output.Set("files", CJson::List(rows));
}
