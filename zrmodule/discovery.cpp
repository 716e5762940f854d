#include "zrmodule/discovery.h"

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
  texts.reserve(folders.size());
  for (const std::string& folder : folders) texts.push_back(PathText(folder));
  return zr::MakeFolderDiscovery({texts.data(), texts.size()}, PathText(configurationFile)).Value();
}

void ReportProblem(COutput& output, const ZrHostProblem& problem) {
  output.Finding(problem.severity == ZRHOST_WARNING ? Level::Warning : Level::Error, "manifest",
                 {Utf8(problem.file), problem.line, problem.column}, Utf8(problem.reason));
}
