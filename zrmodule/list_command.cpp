// zrmodule list and zrmodule info: what a host would find.

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "zrcore/lifecycle.h"
#include "zrmodule/commands.h"
#include "zrmodule/discovery.h"
#include "zrmodule/module_file.h"
#include "zrmodule/system.h"
#include "zrmodule/text.h"

// Between the entries of ZRCORE_MODULE_PATH.
static constexpr const char* kPathSeparator = std::filesystem::path::preferred_separator == '/' ? ":" : ";";

static void PrintClass(const COutput& output, const ZrHostClass& row) {
  std::string names;
  for (const ZrHostInterface* one = row.interfaces; one != row.interfaces + row.interfaceCount; ++one) {
    names += (names.empty() ? "" : ", ") + (*one->name != 0 ? Utf8(one->name) : Utf8(one->interfaceId));
  }
  output.Heading(Utf8(row.name) + "  " + Utf8(row.classId));
  if (*row.description != 0) output.Line("  " + Utf8(row.description));
  if (!names.empty()) output.Line("  interfaces: " + names);
  const std::string version = *row.moduleVersion != 0 ? ", version " + Utf8(row.moduleVersion) : "";
  output.Line("  module: " + Utf8(row.moduleFile) + version);
  output.Line("  manifest: " + Utf8(row.manifestFile));
}

static CJson ClassRow(const ZrHostClass& row) {
  std::vector<CJson> interfaces;
  for (const ZrHostInterface* one = row.interfaces; one != row.interfaces + row.interfaceCount; ++one) {
    interfaces.push_back(CJson::Object({{"id", Utf8(one->interfaceId)}, {"name", Utf8(one->name)}}));
  }
  return CJson::Object({{"name", Utf8(row.name)},
                        {"id", Utf8(row.classId)},
                        {"description", Utf8(row.description)},
                        {"module", Utf8(row.moduleFile)},
                        {"version", Utf8(row.moduleVersion)},
                        {"manifest", Utf8(row.manifestFile)},
                        {"interfaces", CJson::List(interfaces)}});
}

void ListModules(COutput& output, const std::vector<std::string>& folders, const std::string& configurationFile) {
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery(folders, configurationFile);
  const auto classes = zr::ListHostClasses(*discovery).Value();
  const auto problems = zr::ListHostProblems(*discovery).Value();
  std::vector<CJson> rows;
  for (const ZrHostClass& row : classes) {
    if (output.IsJson())
      rows.push_back(ClassRow(row));
    else
      PrintClass(output, row);
  }
  output.Set("classes", CJson::List(rows));
  for (const ZrHostProblem& problem : problems) ReportProblem(output, problem);

  std::error_code error;
  for (const std::string& folder : folders) {
    const std::filesystem::directory_iterator entries(PathOf(folder), error);
    if (error) output.Raise(ExitCode::Unreadable);
  }
  if (!configurationFile.empty() && (!std::filesystem::is_regular_file(PathOf(configurationFile), error) ||
                                     !std::ifstream(PathOf(configurationFile)).is_open())) {
    output.Raise(ExitCode::Unreadable);
  }
  if (classes.size() != 0) return;
  output.Line("No classes in:");
  const auto searched = zr::ListHostFolders(*discovery).Value();
  for (const WCHAR* const folder : searched) output.Line("  " + Utf8(folder));
}

// Prints a library's file. Its name ends in the version on systems where files have one.
static void ShowLibrary(COutput& output, const char* key, const void* function) {
  const std::string file = Utf8(LibraryOf(function));
  output.Set(key, file);
  output.Line(std::string(key) + ": " + file);
}

std::string Version() {
  return std::to_string(ZRCORE_VERSION_MAJOR) + "." + std::to_string(ZRCORE_VERSION_MINOR) + "." +
         std::to_string(ZRCORE_VERSION_PATCH);
}

void ShowInformation(COutput& output) {
#if defined(__clang__)
  const std::string compiler = __VERSION__;
#else
  const std::string compiler = "GCC " __VERSION__;
#endif
  const char* const variable = std::getenv("ZRCORE_MODULE_PATH");
  const bool isChosen = variable != nullptr && variable[std::strspn(variable, kPathSeparator)] != 0;
  output.Heading("zrmodule " + Version());
  output.Set("version", Version());
  ShowLibrary(output, "libzrcore", reinterpret_cast<const void*>(&ZrInitialize));
  ShowLibrary(output, "libzrhost", reinterpret_cast<const void*>(&ZrHostListFolders));
  for (const auto& [key, value] :
       {JsonMember{"processor", OwnProcessor()}, {"system", SystemName()}, {"compiler", compiler}}) {
    output.Set(key, value);
  }
  output.Line("processor: " + OwnProcessor());
  output.Line("system: " + SystemName());
  output.Line("compiler: " + compiler);

  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery({});
  std::vector<CJson> folders;
  output.Line(isChosen ? "folders, from ZRCORE_MODULE_PATH:" : "folders, from the installation:");
  for (const WCHAR* const row : zr::ListHostFolders(*discovery).Value()) {
    const std::string folder = Utf8(row);
    std::error_code error;
    const bool exists = std::filesystem::is_directory(PathOf(folder), error);
    folders.push_back(CJson::Object({{"folder", folder}, {"exists", exists}}));
    output.Line("  " + folder + (exists ? "" : " (does not exist)"));
  }
  output.Set("foldersFrom", isChosen ? "ZRCORE_MODULE_PATH" : "installation");
  output.Set("folders", CJson::List(folders));
}
