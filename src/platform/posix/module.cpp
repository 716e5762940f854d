// Modules through the dynamic loader.

#include "platform/module.h"

#include <dlfcn.h>
#include <link.h>

#include <optional>
#include <string_view>

#include "platform/posix/utf8_text.h"

// Makes the reason from the loader's text. Most texts of the loader begin with the path, which is removed: a long path
// would leave no space for the reason. Control characters, which a file name may contain, and other characters that
// break a line become blanks. The text is cut to the maximal length, but not inside a surrogate pair.
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
  // RTLD_NOW reports a missing symbol here; otherwise it would terminate the process in the middle of a later call.
  // RTLD_LOCAL keeps the module's symbols out of the search for others, because all modules export the same names.
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
  // dlsym also searches the libraries that the module depends on. A function from there isn't the module's own, so the
  // object that contains the function must be the module itself.
  link_map *own = nullptr, *found = nullptr;
  Dl_info ignored;
  if (dlinfo(module, RTLD_DI_LINKMAP, &own) != 0) return nullptr;
  if (dladdr1(function, &ignored, reinterpret_cast<void**>(&found), RTLD_DL_LINKMAP) == 0 || found != own)
    return nullptr;
  return reinterpret_cast<ModuleFunction>(function);
}

void PlatformReleaseModule(ModuleHandle module) noexcept {
  if (module != nullptr) (void)dlclose(module);  // a caller could do nothing about a failure
}
