// Modules as DLLs, read by the system's image functions.

#include "zrmodule/module_file.h"

#include <windows.h>
// after windows.h
#include <imagehlp.h>

#include <array>
#include <cstring>
#include <system_error>

struct ProcessorName {
  WORD machine;
  const char* name;
};
static constexpr std::array<ProcessorName, 3> kProcessors = {{{IMAGE_FILE_MACHINE_AMD64, "x86-64"},
                                                              {IMAGE_FILE_MACHINE_ARM64, "arm64"},
                                                              {IMAGE_FILE_MACHINE_I386, "x86 (32 bits)"}}};

static std::string NameOfProcessor(WORD machine) {
  for (const ProcessorName& row : kProcessors) {
    if (row.machine == machine) return row.name;
  }
  return "processor number " + std::to_string(machine);
}

std::string OwnProcessor() { return NameOfProcessor(IMAGE_FILE_MACHINE_AMD64); }

// A file that the system has mapped as an image.
class CImage {
 public:
  explicit CImage(const std::filesystem::path& file) {
    // The function takes the path in the process's code page. A short path is ASCII.
    std::wstring shortPath(32768, L'\0');
    const DWORD length = GetShortPathNameW(file.c_str(), shortPath.data(), static_cast<DWORD>(shortPath.size()));
    shortPath.resize(length < shortPath.size() ? length : 0);
    const std::string path = std::filesystem::path(shortPath.empty() ? file.wstring() : shortPath).string();
    isMapped_ = MapAndLoad(path.c_str(), nullptr, &image_, TRUE, TRUE) != 0;
  }
  CImage(const CImage&) = delete;
  CImage& operator=(const CImage&) = delete;
  ~CImage() {
    if (isMapped_) UnMapAndLoad(&image_);
  }

  [[nodiscard]] bool IsMapped() const noexcept { return isMapped_; }
  [[nodiscard]] const IMAGE_NT_HEADERS& Headers() const noexcept { return *image_.FileHeader; }

  // What lies at an address relative to the image, or null if the file ends before `size` bytes of it.
  template <class T>
  [[nodiscard]] const T* At(DWORD address, std::size_t size = sizeof(T)) const noexcept {
    const auto* const found =
        static_cast<const unsigned char*>(ImageRvaToVa(image_.FileHeader, image_.MappedAddress, address, nullptr));
    if (found == nullptr || address == 0) return nullptr;
    const auto offset = static_cast<std::size_t>(found - image_.MappedAddress);
    return offset <= image_.SizeOfImage && size <= image_.SizeOfImage - offset ? reinterpret_cast<const T*>(found)
                                                                               : nullptr;
  }

  // A text at an address, or null if the file ends before its terminator.
  [[nodiscard]] const char* TextAt(DWORD address) const noexcept {
    const char* const text = At<char>(address);
    if (text == nullptr) return nullptr;
    const auto offset = static_cast<std::size_t>(reinterpret_cast<const unsigned char*>(text) - image_.MappedAddress);
    return std::memchr(text, 0, image_.SizeOfImage - offset) != nullptr ? text : nullptr;
  }

  [[nodiscard]] DWORD Directory(unsigned entry) const noexcept {
    return Headers().OptionalHeader.DataDirectory[entry].VirtualAddress;
  }

 private:
  LOADED_IMAGE image_ = {};
  bool isMapped_ = false;
};

static bool ReadExports(const CImage& image, ModuleFile& module) {
  const DWORD address = image.Directory(IMAGE_DIRECTORY_ENTRY_EXPORT);
  if (address == 0) return true;
  const auto* const table = image.At<IMAGE_EXPORT_DIRECTORY>(address);
  if (table == nullptr) return false;
  const auto* const names = image.At<DWORD>(table->AddressOfNames, std::size_t{table->NumberOfNames} * sizeof(DWORD));
  if (names == nullptr && table->NumberOfNames != 0) return false;
  for (DWORD index = 0; index < table->NumberOfNames; ++index) {
    const char* const name = image.TextAt(names[index]);
    if (name == nullptr) return false;
    module.exports.push_back({name, "", ""});
  }
  return true;
}

// Each undefined symbol belongs to one library here. A symbol without a name, only with a number, is not checked.
static bool ReadImports(const CImage& image, ModuleFile& module) {
  static constexpr uint64_t kHasNumber = IMAGE_ORDINAL_FLAG64;
  const DWORD address = image.Directory(IMAGE_DIRECTORY_ENTRY_IMPORT);
  for (DWORD at = address; at != 0; at += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
    const auto* const row = image.At<IMAGE_IMPORT_DESCRIPTOR>(at);
    if (row == nullptr) return false;
    if (row->Name == 0) break;
    const char* const library = image.TextAt(row->Name);
    if (library == nullptr) return false;
    if (std::strncmp(library, "api-ms-", 7) == 0 || std::strncmp(library, "ext-ms-", 7) == 0) continue;  // not a file
    module.needed.emplace_back(library);
    DWORD symbolAt = row->OriginalFirstThunk != 0 ? row->OriginalFirstThunk : row->FirstThunk;
    for (;; symbolAt += sizeof(uint64_t)) {
      const auto* const symbol = image.At<uint64_t>(symbolAt);
      if (symbol == nullptr) return false;
      if (*symbol == 0) break;
      if ((*symbol & kHasNumber) != 0) continue;
      const char* const name = image.TextAt(static_cast<DWORD>(*symbol) + offsetof(IMAGE_IMPORT_BY_NAME, Name));
      if (name == nullptr) return false;
      module.undefined.push_back({name, "", library});
    }
  }
  return true;
}

LibraryName OwnLibrary() { return {"zrcore.dll", "zrcore"}; }

bool ReadModuleFile(const std::filesystem::path& file, ModuleFile& module, std::string& reason) {
  std::error_code error;
  module.file = file;
  if (!std::filesystem::is_regular_file(file, error)) {
    reason = error ? error.message() : "is not a regular file";
    return false;
  }
  const CImage image(file);
  if (!image.IsMapped()) {
    const std::string kind = DescribeFile(file);
    reason = kind == "a file for Windows" ? "is truncated or damaged; build or copy the file again"
                                          : "is not a shared library, but " + kind;
    return false;
  }
  module.processor = NameOfProcessor(image.Headers().FileHeader.Machine);
  module.isLibrary = (image.Headers().FileHeader.Characteristics & IMAGE_FILE_DLL) != 0;
  if (image.Headers().OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR64_MAGIC) return true;  // another processor
  if (ReadExports(image, module) && ReadImports(image, module)) return true;
  reason = "is truncated or damaged; build or copy the file again";
  return false;
}

// The library loads a module without searching the module's folder for its DLLs.
std::filesystem::path FindLibrary(const std::string& name, const ModuleFile&, const ModuleFile&) {
  std::wstring found(32768, L'\0');
  const std::filesystem::path wide(name);
  if (const HMODULE loaded = GetModuleHandleW(wide.c_str())) {  // every host has it
    found.resize(GetModuleFileNameW(loaded, found.data(), static_cast<DWORD>(found.size())));
    return found;
  }
  found.resize(SearchPathW(nullptr, wide.c_str(), nullptr, static_cast<DWORD>(found.size()), found.data(), nullptr));
  return found;
}
