#include "zrmodule/kit_list.h"

#include <stdexcept>

#include "zrmodule/text.h"

static zr::String PathText(const std::string& utf8) {
  zr::Result<zr::String> text = zr::String::FromUtf8(utf8);
  if (!text) throw std::runtime_error("the path " + Quoted(utf8) + " is not UTF-8; rename the file or folder");
  return std::move(*text);
}

zr::Ptr<IZrComponentDiscovery> MakeDiscovery(const std::vector<std::string>& folders,
                                             const std::string& configurationFile) {
  std::vector<zr::String> texts;
  std::vector<const WCHAR*> paths;
  texts.reserve(folders.size());
  paths.reserve(folders.size());
  for (const std::string& folder : folders) texts.push_back(PathText(folder));
  for (const zr::String& text : texts) paths.push_back(text.Get());
  const zr::String configuration = PathText(configurationFile);
  zr::Ptr<IZrComponentDiscovery> discovery;
  const ZRRESULT result =
      ZrHostCreateFolderDiscovery(paths.data(), static_cast<uint32_t>(paths.size()),
                                  configurationFile.empty() ? nullptr : configuration.Get(), 0, discovery.Put());
  if (zr::Failed(result)) throw zr::Error(result);
  return discovery;
}

void ReportProblem(COutput& output, const ZrHostProblem& problem) {
  output.Finding(problem.severity == ZRHOST_WARNING ? Level::Warning : Level::Error, "manifest",
                 {Utf8(problem.file), problem.line, problem.column}, Utf8(problem.reason));
}
