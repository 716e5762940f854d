#include "platform/module.h"

#include <dlfcn.h>
#include <link.h>

#include <optional>
#include <string_view>

#include "platform/posix/utf8_text.h"

// The loader puts the path in front of most of its texts, where it could crowd out what went wrong; and a file name may
// hold what breaks a line.
static std::u16string ReasonText(std::string_view text, std::string_view path) {
  if (text.substr(0, path.size()) == path && text.substr(path.size(), 2) == ": ") text.remove_prefix(path.size() + 2);
  std::u16string reason = FromUtf8Lossy(text);
  for (char16_t& unit : reason) {
    if (unit < 0x20 || unit == 0x7F || unit == 0x85 || unit == 0x2028 || unit == 0x2029) unit = u' ';
  }
  if (reason.size() > kModuleReasonUnits) {
    const bool cutsPair = (reason[kModuleReasonUnits - 1] & 0xFC00) == 0xD800;
    reason.resize(kModuleReasonUnits - (cutsPair ? 1 : 0));
  }
  return reason;
}

ModuleHandle PlatformLoadModule(const WCHAR* path, std::u16string& reason) {
  const std::optional<std::string> file = ToUtf8(path);
  if (!file) {
    reason = u"the path is not valid UTF-16";
    return nullptr;
  }
  // NOW: a missing symbol shows here and not in the middle of a call. LOCAL: two modules may define one name.
  ModuleHandle module = dlopen(file->c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    const char* text = dlerror();
    reason = ReasonText(text != nullptr ? text : "", *file);
  }
  return module;
}

ModuleFunction PlatformFindFunction(ModuleHandle module, const char* name) noexcept {
  void* function = dlsym(module, name);
  if (function == nullptr) return nullptr;
  // The search goes on into the libraries that the module needs. What it finds there is not the module's.
  link_map *own = nullptr, *found = nullptr;
  Dl_info ignored;
  if (dlinfo(module, RTLD_DI_LINKMAP, &own) != 0) return nullptr;
  if (dladdr1(function, &ignored, reinterpret_cast<void**>(&found), RTLD_DL_LINKMAP) == 0 || found != own)
    return nullptr;
  return reinterpret_cast<ModuleFunction>(function);
}

void PlatformReleaseModule(ModuleHandle module) noexcept {
  if (module != nullptr) (void)dlclose(module);  // nobody could do anything about a failure
}
