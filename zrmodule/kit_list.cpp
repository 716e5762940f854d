#include "zrmodule/kit_list.h"

zr::Ptr<IZrComponentDiscovery> MakeDiscovery(const std::vector<std::string>& folders,
                                             const std::string& configurationFile) {
  std::vector<zr::String> texts;
  std::vector<const WCHAR*> paths;
  for (const std::string& folder : folders) texts.push_back(zr::String::FromUtf8(folder).Value());
  for (const zr::String& text : texts) paths.push_back(text.Get());
  const zr::String configuration = zr::String::FromUtf8(configurationFile).Value();
  zr::Ptr<IZrComponentDiscovery> discovery;
  const ZRRESULT result =
      ZrHostCreateFolderDiscovery(paths.data(), static_cast<uint32_t>(paths.size()),
                                  configurationFile.empty() ? nullptr : configuration.Get(), 0, discovery.Put());
  if (zr::Failed(result)) throw zr::Error(result);
  return discovery;
}
