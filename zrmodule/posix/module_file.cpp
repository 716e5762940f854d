// Modules as ELF files, read by libelf.

#include "zrmodule/module_file.h"

#include <fcntl.h>
#include <gelf.h>
#include <libelf.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>

// Closes the file and the ELF handle.
class CElf {
 public:
  explicit CElf(const std::filesystem::path& file) : descriptor_(open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) return;
    (void)elf_version(EV_CURRENT);
    elf_ = elf_begin(descriptor_, ELF_C_READ, nullptr);
  }
  CElf(const CElf&) = delete;
  CElf& operator=(const CElf&) = delete;
  ~CElf() {
    if (elf_ != nullptr) elf_end(elf_);
    if (descriptor_ >= 0) close(descriptor_);
  }

  [[nodiscard]] bool IsOpen() const noexcept { return descriptor_ >= 0; }
  [[nodiscard]] Elf* Get() const noexcept { return elf_; }

 private:
  int descriptor_;
  Elf* elf_ = nullptr;
};

struct ProcessorName {
  unsigned machine;
  const char* name;
};
static constexpr std::array<ProcessorName, 6> kProcessors = {{{EM_X86_64, "x86-64"},
                                                              {EM_AARCH64, "arm64"},
                                                              {EM_386, "x86 (32 bits)"},
                                                              {EM_ARM, "arm (32 bits)"},
                                                              {EM_RISCV, "RISC-V"},
                                                              {EM_PPC64, "POWER"}}};

static std::string NameOfProcessor(unsigned machine) {
  for (const ProcessorName& row : kProcessors) {
    if (row.machine == machine) return row.name;
  }
  return "processor number " + std::to_string(machine);
}

std::string OwnProcessor() {
#if defined(__x86_64__)
  return NameOfProcessor(EM_X86_64);
#elif defined(__aarch64__)
  return NameOfProcessor(EM_AARCH64);
#else
#error "name the processor"
#endif
}

// The dynamic section lists libraries and flags.
static bool ReadDynamic(Elf* elf, Elf_Scn* section, const GElf_Shdr& header, const std::filesystem::path& file,
                        ModuleFile& module) {
  Elf_Data* const data = elf_getdata(section, nullptr);
  if (data == nullptr || header.sh_entsize == 0) return false;
  const auto count = static_cast<int>(header.sh_size / header.sh_entsize);
  for (int index = 0; index < count; ++index) {
    GElf_Dyn entry;
    if (gelf_getdyn(data, index, &entry) == nullptr) return false;
    if (entry.d_tag == DT_NULL) break;
    const bool isText = entry.d_tag == DT_NEEDED || entry.d_tag == DT_RUNPATH || entry.d_tag == DT_RPATH;
    const char* const text = isText ? elf_strptr(elf, header.sh_link, entry.d_un.d_val) : nullptr;
    if (isText && text == nullptr) return false;
    if (entry.d_tag == DT_NEEDED) module.needed.emplace_back(text);
    if (entry.d_tag == DT_TEXTREL || (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_TEXTREL) != 0)) {
      module.hasTextRelocations = true;
    }
    if (entry.d_tag == DT_FLAGS_1 && (entry.d_un.d_val & DF_1_NODELETE) != 0) module.isPinned = true;
    if (entry.d_tag == DT_FLAGS_1 && (entry.d_un.d_val & DF_1_PIE) != 0) module.isLoadable = false;
    if (entry.d_tag == DT_RUNPATH || entry.d_tag == DT_RPATH) {
      std::istringstream folders(text);
      for (std::string folder; std::getline(folders, folder, ':');) {
        for (const char* const origin : {"${ORIGIN}", "$ORIGIN"}) {
          const std::size_t at = folder.find(origin);
          if (at != std::string::npos) folder.replace(at, std::strlen(origin), file.parent_path().string());
        }
        if (!folder.empty()) module.searched.emplace_back(folder);
      }
    }
  }
  return true;
}

static bool ReadSymbols(Elf* elf, Elf_Scn* section, const GElf_Shdr& header, ModuleFile& module) {
  Elf_Data* const data = elf_getdata(section, nullptr);
  if (data == nullptr || header.sh_entsize == 0) return false;
  const auto count = static_cast<int>(header.sh_size / header.sh_entsize);
  for (int index = 1; index < count; ++index) {   // the first symbol is empty
    GElf_Sym symbol;
    if (gelf_getsym(data, index, &symbol) == nullptr) return false;
    const char* const name = elf_strptr(elf, header.sh_link, symbol.st_name);
    if (name == nullptr) return false;
    const unsigned binding = GELF_ST_BIND(symbol.st_info), visibility = GELF_ST_VISIBILITY(symbol.st_other);
    if (symbol.st_shndx == SHN_UNDEF) {
      if (binding == STB_GLOBAL) module.undefined.emplace_back(name);
    } else if (binding != STB_LOCAL && (visibility == STV_DEFAULT || visibility == STV_PROTECTED)) {
      module.exports.emplace_back(name);
      if (binding == STB_GNU_UNIQUE) module.uniqueSymbols.emplace_back(name);
    }
  }
  return true;
}

bool ReadModuleFile(const std::filesystem::path& file, ModuleFile& module, std::string& reason) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    reason = error ? error.message() : "not a regular file";
    return false;
  }
  const CElf elf(file);
  if (!elf.IsOpen()) {
    reason = std::strerror(errno);
    return false;
  }
  if (elf.Get() == nullptr || elf_kind(elf.Get()) != ELF_K_ELF) {
    reason = "not a shared library: the file is not in ELF format";
    return false;
  }
  static constexpr const char* kTruncated = "the file is truncated or damaged";
  GElf_Ehdr header;
  if (gelf_getehdr(elf.Get(), &header) == nullptr) {
    reason = kTruncated;
    return false;
  }
  module.processor = NameOfProcessor(header.e_machine);
  module.isLoadable = header.e_type == ET_DYN;
  // The sections are at the end of the file, so a file that was cut off lacks them.
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (header.e_shoff == 0 || header.e_shoff + std::uintmax_t{header.e_shnum} * header.e_shentsize > size) {
    reason = kTruncated;
    return false;
  }
  std::size_t segments = 0;
  if (elf_getphdrnum(elf.Get(), &segments) != 0) {
    reason = kTruncated;
    return false;
  }
  for (std::size_t index = 0; index < segments; ++index) {
    GElf_Phdr segment;
    if (gelf_getphdr(elf.Get(), static_cast<int>(index), &segment) == nullptr ||
        (segment.p_type == PT_LOAD && segment.p_offset + segment.p_filesz > size)) {
      reason = kTruncated;
      return false;
    }
    if (segment.p_type == PT_GNU_STACK) module.hasExecutableStack = (segment.p_flags & PF_X) != 0;
  }
  for (Elf_Scn* section = elf_nextscn(elf.Get(), nullptr); section != nullptr;
       section = elf_nextscn(elf.Get(), section)) {
    GElf_Shdr sectionHeader;
    const bool isRead =
        gelf_getshdr(section, &sectionHeader) != nullptr &&
        (sectionHeader.sh_type != SHT_DYNAMIC || ReadDynamic(elf.Get(), section, sectionHeader, file, module)) &&
        (sectionHeader.sh_type != SHT_DYNSYM || ReadSymbols(elf.Get(), section, sectionHeader, module));
    if (!isRead) {
      reason = kTruncated;
      return false;
    }
  }
  return true;
}

// The folders of a file such as /etc/ld.so.conf, which may include others by a pattern of the form FOLDER/*.conf.
static void AddConfiguredFolders(const std::filesystem::path& file, std::vector<std::filesystem::path>& folders) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    line.erase(std::min(line.find('#'), line.size()));
    std::istringstream words(line);
    std::string word, pattern;
    if (!(words >> word)) continue;
    if (word != "include") {
      folders.emplace_back(word);
    } else if (words >> pattern) {
      std::error_code error;
      const std::filesystem::path folder = std::filesystem::path(pattern).parent_path();
      for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".conf") AddConfiguredFolders(entry.path(), folders);
      }
    }
  }
}

std::filesystem::path FindLibrary(const std::string& name, const std::filesystem::path&, const ModuleFile& module) {
  std::error_code error;
  if (name.find('/') != std::string::npos) return std::filesystem::exists(name, error) ? name : "";
  std::vector<std::filesystem::path> folders = module.searched;
  if (const char* const variable = std::getenv("LD_LIBRARY_PATH")) {
    std::istringstream entries(variable);
    for (std::string folder; std::getline(entries, folder, ':');) folders.emplace_back(folder.empty() ? "." : folder);
  }
  AddConfiguredFolders("/etc/ld.so.conf", folders);
  folders.insert(folders.end(), {"/lib", "/usr/lib", "/lib64", "/usr/lib64"});
  for (const std::filesystem::path& folder : folders) {
    ModuleFile found;
    std::string reason;
    if (std::filesystem::exists(folder / name, error) && ReadModuleFile(folder / name, found, reason) &&
        found.processor == module.processor) {
      return folder / name;
    }
  }
  return {};
}
