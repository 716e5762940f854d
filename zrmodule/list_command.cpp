// zrmodule list and zrmodule info: what a host would find.

#include "zr/zr.hpp"
#include "zrhost/host.h"
#include "zrmodule/commands.h"
#include "zrmodule/kit_list.h"

static void ListClass(COutput& output, const ZrHostClass& row) {
  Json interfaces = Json::array();
  std::string names;
  for (const ZrHostInterface* one = row.interfaces; one != row.interfaces + row.interfaceCount; ++one) {
    interfaces.push_back({{"id", Utf8(one->interfaceId)}, {"name", Utf8(one->name)}});
    names += (names.empty() ? "" : ", ") + (*one->name != 0 ? Utf8(one->name) : Utf8(one->interfaceId));
  }
  output.Document()["classes"].push_back({{"name", Utf8(row.name)},
                                          {"id", Utf8(row.classId)},
                                          {"description", Utf8(row.description)},
                                          {"module", Utf8(row.moduleFile)},
                                          {"version", Utf8(row.moduleVersion)},
                                          {"manifest", Utf8(row.manifestFile)},
                                          {"interfaces", interfaces}});
  output.Heading(Utf8(row.name) + "  " + Utf8(row.classId));
  if (*row.description != 0) output.Line("  " + Utf8(row.description));
  if (!names.empty()) output.Line("  interfaces: " + names);
  output.Line("  module: " + Utf8(row.moduleFile) + (*row.moduleVersion != 0 ? ", version " + Utf8(row.moduleVersion) : ""));
  output.Line("  manifest: " + Utf8(row.manifestFile));
}

void ListModules(COutput& output, const std::vector<std::string>& folders, const std::string& configurationFile) {
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery(folders, configurationFile);
  const CKitList<ZrHostClass> classes(*discovery, ZrHostListClasses);
  const CKitList<ZrHostProblem> problems(*discovery, ZrHostListProblems);
  output.Document()["classes"] = Json::array();
  for (const ZrHostClass& row : classes) ListClass(output, row);
  for (const ZrHostProblem& row : problems) {
    output.Finding(row.severity == ZRHOST_WARNING ? Level::Warning : Level::Error, Utf8(row.file), row.line, row.column,
                   Utf8(row.reason));
  }
  if (classes.Count() == 0) {
    output.Line("No class was found in:");
    const CKitList<const WCHAR*> searched(*discovery, ZrHostListFolders);
    for (const WCHAR* folder : searched) output.Line("  " + Utf8(folder));
  }
}

void ShowInformation(COutput& output) {
  const zr::Ptr<IZrComponentDiscovery> discovery = MakeDiscovery({}, "");
  const CKitList<const WCHAR*> folders(*discovery, ZrHostListFolders);
  const std::string version = std::to_string(ZRCORE_VERSION_MAJOR) + "." + std::to_string(ZRCORE_VERSION_MINOR) + "." +
                              std::to_string(ZRCORE_VERSION_PATCH);
  output.Document()["version"] = version;
  output.Document()["folders"] = Json::array();
  output.Line("zrmodule " + version);
  output.Line("Folders that are searched for modules:");
  for (const WCHAR* folder : folders) {
    output.Document()["folders"].push_back(Utf8(folder));
    output.Line("  " + Utf8(folder));
  }
}
