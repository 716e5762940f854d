// Modules as ELF files. What the loader reads is read, by the program headers and the dynamic section: the section
// headers may be missing. libelf checks every position against the size of the file, and converts from other byte
// orders.

#include "zrmodule/module_file.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gelf.h>
#include <libelf.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "zrcore/base.h"
#include "zrmodule/text.h"

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

// ---- Processors
// ------------------------------------------------------------------------------------------------------

struct ProcessorName {
  unsigned machine;
  int elfClass;
  int byteOrder;
  const char* name;
};
static constexpr std::array<ProcessorName, 10> kProcessors = {{{EM_X86_64, ELFCLASS64, ELFDATA2LSB, "x86-64"},
                                                               {EM_X86_64, ELFCLASS32, ELFDATA2LSB, "x32"},
                                                               {EM_386, ELFCLASS32, ELFDATA2LSB, "x86 (32 bits)"},
                                                               {EM_AARCH64, ELFCLASS64, ELFDATA2LSB, "arm64"},
                                                               {EM_ARM, ELFCLASS32, ELFDATA2LSB, "arm (32 bits)"},
                                                               {EM_RISCV, ELFCLASS64, ELFDATA2LSB, "riscv64"},
                                                               {EM_LOONGARCH, ELFCLASS64, ELFDATA2LSB, "loong64"},
                                                               {EM_PPC64, ELFCLASS64, ELFDATA2LSB, "ppc64el"},
                                                               {EM_PPC64, ELFCLASS64, ELFDATA2MSB, "ppc64"},
                                                               {EM_S390, ELFCLASS64, ELFDATA2MSB, "s390x"}}};

static std::string NameOfProcessor(const GElf_Ehdr& header) {
  const int elfClass = header.e_ident[EI_CLASS], byteOrder = header.e_ident[EI_DATA];
  for (const ProcessorName& row : kProcessors) {
    if (row.machine == header.e_machine && row.elfClass == elfClass && row.byteOrder == byteOrder) return row.name;
  }
  return "processor number " + std::to_string(header.e_machine) + " (" + (elfClass == ELFCLASS32 ? "32" : "64") +
         " bits, " + (byteOrder == ELFDATA2MSB ? "big" : "little") + "-endian)";
}

std::string OwnProcessor() {
#if defined(__x86_64__)
  return "x86-64";
#elif defined(__aarch64__)
  return "arm64";
#else
#error "name the processor as kProcessors does"
#endif
}

LibraryName OwnLibrary() { return {"libzrcore.so." + std::to_string(ZRCORE_VERSION_MAJOR), "libzrcore.so"}; }

// ---- The dynamic section -------------------------------------------------------------------------------------------

// What CReader throws if the file contradicts itself. It never leaves this file.
struct Damaged {};

// So many bytes of names per byte of a file are more than any compiler writes.
static constexpr std::uintmax_t kTextsPerByte = 64;

class CReader {
 public:
  CReader(Elf* elf, ModuleFile& module) : elf_(elf), module_(module) {}

  // Throws Damaged.
  void Read(std::uintmax_t fileSize) {
    GElf_Ehdr header;
    if (gelf_getehdr(elf_, &header) == nullptr) throw Damaged();
    textsLeft_ = kTextsPerByte * fileSize;
    module_.processor = NameOfProcessor(header);
    ReadSegments(fileSize);
    module_.isLibrary = header.e_type == ET_DYN && dynamic_.p_filesz != 0;
    if (dynamic_.p_filesz == 0) return;
    ReadDynamic();
    if (module_.processor == OwnProcessor()) ReadVersions();
    ReadSymbols();
  }

 private:
  void ReadSegments(std::uintmax_t fileSize) {
    std::size_t count = 0;
    if (elf_getphdrnum(elf_, &count) != 0) throw Damaged();
    for (std::size_t index = 0; index < count; ++index) {
      GElf_Phdr segment;
      if (gelf_getphdr(elf_, static_cast<int>(index), &segment) == nullptr) throw Damaged();
      const bool isInFile =
          segment.p_filesz == 0 || (segment.p_offset <= fileSize && segment.p_filesz <= fileSize - segment.p_offset);
      if ((segment.p_type == PT_LOAD || segment.p_type == PT_DYNAMIC) && !isInFile) throw Damaged();
      if (segment.p_type == PT_LOAD) loaded_.push_back(segment);
      if (segment.p_type == PT_DYNAMIC) dynamic_ = segment;
      if (segment.p_type == PT_GNU_STACK) module_.hasExecutableStack = (segment.p_flags & PF_X) != 0;
    }
  }

  // How many entries of a type fill so many bytes.
  [[nodiscard]] std::size_t CountIn(Elf_Type type, std::size_t bytes) const {
    const std::size_t size = gelf_fsize(elf_, type, 1, EV_CURRENT);
    return size != 0 ? bytes / size : 0;
  }

  // The data at an address of the loaded file: so many entries of the type, or all up to the end of the segment.
  [[nodiscard]] Elf_Data* At(GElf_Addr address, Elf_Type type, std::optional<std::size_t> count = std::nullopt) const {
    for (const GElf_Phdr& segment : loaded_) {
      if (address < segment.p_vaddr || address - segment.p_vaddr >= segment.p_filesz) continue;
      const GElf_Xword skipped = address - segment.p_vaddr;
      const std::size_t most = CountIn(type, segment.p_filesz - skipped);
      const std::size_t wanted = count.value_or(most);
      if (wanted > most) break;
      const std::size_t size = wanted * gelf_fsize(elf_, type, 1, EV_CURRENT);
      Elf_Data* const data = elf_getdata_rawchunk(elf_, static_cast<int64_t>(segment.p_offset + skipped), size, type);
      if (data != nullptr) return data;
      break;
    }
    throw Damaged();
  }

  [[nodiscard]] std::optional<GElf_Xword> Tag(GElf_Sxword tag) const {
    const auto found = tags_.find(tag);
    return found != tags_.end() ? std::optional(found->second) : std::nullopt;
  }

  [[nodiscard]] std::string TextAt(GElf_Xword offset) const {
    if (texts_ == nullptr || offset >= texts_->d_size) throw Damaged();
    const char* const text = static_cast<const char*>(texts_->d_buf) + offset;
    const void* const end = std::memchr(text, 0, texts_->d_size - offset);
    if (end == nullptr) throw Damaged();
    const auto size = static_cast<std::size_t>(static_cast<const char*>(end) - text);
    if (size > textsLeft_) throw Damaged();  // the same long text for many symbols
    textsLeft_ -= size;
    return {text, size};
  }

  void ReadDynamic() {
    Elf_Data* const data =
        elf_getdata_rawchunk(elf_, static_cast<int64_t>(dynamic_.p_offset), dynamic_.p_filesz, ELF_T_DYN);
    if (data == nullptr) throw Damaged();
    std::vector<GElf_Dyn> texts;
    const std::size_t count = CountIn(ELF_T_DYN, data->d_size);
    for (std::size_t index = 0; index < count; ++index) {
      GElf_Dyn entry;
      if (gelf_getdyn(data, static_cast<int>(index), &entry) == nullptr) throw Damaged();
      if (entry.d_tag == DT_NULL) break;
      tags_[entry.d_tag] = entry.d_un.d_val;
      if (entry.d_tag == DT_NEEDED || entry.d_tag == DT_RPATH || entry.d_tag == DT_RUNPATH) texts.push_back(entry);
    }
    const std::optional<GElf_Xword> strings = Tag(DT_STRTAB), size = Tag(DT_STRSZ);
    if (strings && size) texts_ = At(*strings, ELF_T_BYTE, *size);
    for (const GElf_Dyn& entry : texts) {
      const std::string text = TextAt(entry.d_un.d_val);
      if (entry.d_tag == DT_NEEDED) module_.needed.push_back(text);
      if (entry.d_tag == DT_RUNPATH) AddFolders(text, module_.searchedLater);
      if (entry.d_tag == DT_RPATH && !Tag(DT_RUNPATH)) AddFolders(text, module_.searchedFirst);
    }
    const GElf_Xword flags = Tag(DT_FLAGS).value_or(0), flags1 = Tag(DT_FLAGS_1).value_or(0);
    module_.hasTextRelocations = Tag(DT_TEXTREL).has_value() || (flags & DF_TEXTREL) != 0;
    module_.isNeverUnloaded = (flags1 & DF_1_NODELETE) != 0;
    if ((flags1 & DF_1_PIE) != 0) module_.isLibrary = false;
  }

  void AddFolders(const std::string& text, std::vector<std::filesystem::path>& folders) const {
    std::istringstream entries(text);
    for (std::string folder; std::getline(entries, folder, ':');) {
      for (const std::string_view origin : {"${ORIGIN}", "$ORIGIN"}) {
        const std::size_t at = folder.find(origin);
        if (at != std::string::npos) folder.replace(at, origin.size(), module_.file.parent_path().string());
      }
      if (!folder.empty()) folders.emplace_back(folder);
    }
  }

  // The records of versions are two lists in one block, each record with the distance to the next one. A damaged file
  // could lead through the same records again and again, so no more are read than the block has space for.
  void ReadVersions() {
    if (const std::optional<GElf_Xword> address = Tag(DT_VERNEED)) {
      Elf_Data* const data = At(*address, ELF_T_BYTE);
      std::size_t space = data->d_size / sizeof(GElf_Vernaux);
      GElf_Verneed library;
      for (std::size_t at = 0, left = Tag(DT_VERNEEDNUM).value_or(0); left != 0; --left, at += library.vn_next) {
        CopyRecord(data, at, &library, sizeof library);
        GElf_Vernaux version;
        for (std::size_t next = at + library.vn_aux, count = library.vn_cnt; count != 0;
             --count, next += version.vna_next) {
          CopyRecord(data, next, &version, sizeof version);
          if (space-- == 0) throw Damaged();
          const std::string name = TextAt(version.vna_name);
          versions_[version.vna_other & kVersionIndex] = name;
          if ((version.vna_flags & VER_FLG_WEAK) == 0) {
            module_.requiredVersions.push_back({TextAt(library.vn_file), name});
          }
          if (version.vna_next == 0) break;
        }
        if (library.vn_next == 0) break;
      }
    }
    if (const std::optional<GElf_Xword> address = Tag(DT_VERDEF)) {
      Elf_Data* const data = At(*address, ELF_T_BYTE);
      GElf_Verdef version;
      for (std::size_t at = 0, left = Tag(DT_VERDEFNUM).value_or(0); left != 0; --left, at += version.vd_next) {
        GElf_Verdaux name;
        CopyRecord(data, at, &version, sizeof version);
        CopyRecord(data, at + version.vd_aux, &name, sizeof name);
        const std::string text = TextAt(name.vda_name);
        if ((version.vd_flags & VER_FLG_BASE) == 0) versions_[version.vd_ndx & kVersionIndex] = text;
        module_.definedVersions.push_back(text);
        if (version.vd_next == 0) break;
      }
    }
  }

  // These records are the same in files of 32 and 64 bits.
  static void CopyRecord(const Elf_Data* data, std::size_t at, void* record, std::size_t size) {
    if (at > data->d_size || size > data->d_size - at) throw Damaged();
    std::memcpy(record, static_cast<const char*>(data->d_buf) + at, size);
  }

  // The symbols have no count of their own. The loader finds them by a hash table, which knows it.
  [[nodiscard]] std::size_t CountSymbols() const {
    if (const std::optional<GElf_Xword> address = Tag(DT_HASH)) return Words(At(*address, ELF_T_WORD, 2))[1];
    const std::optional<GElf_Xword> address = Tag(DT_GNU_HASH);
    if (!address) return 0;
    // Four words, the filter, the buckets, and then the chains. The last symbol is at the end of the last chain.
    const Elf_Data* const header = At(*address, ELF_T_WORD, 4);
    const std::size_t buckets = Words(header)[0], first = Words(header)[1], filter = Words(header)[2];
    const GElf_Addr bucketsAt = *address + 16 + filter * gelf_fsize(elf_, ELF_T_ADDR, 1, EV_CURRENT);
    const uint32_t* const starts = Words(At(bucketsAt, ELF_T_WORD, buckets));
    std::size_t last = buckets != 0 ? *std::max_element(starts, starts + buckets) : 0;
    if (last < first) return first;
    const Elf_Data* const chains = At(bucketsAt + buckets * 4, ELF_T_WORD);
    for (;; ++last) {
      if (last - first >= chains->d_size / 4) throw Damaged();
      if ((Words(chains)[last - first] & 1) != 0) return last + 1;
    }
  }

  static const uint32_t* Words(const Elf_Data* data) { return static_cast<const uint32_t*>(data->d_buf); }

  void ReadSymbols() {
    const std::size_t count = CountSymbols();
    const std::optional<GElf_Xword> address = Tag(DT_SYMTAB), versionsAt = Tag(DT_VERSYM);
    if (count == 0 || !address) return;
    Elf_Data* const data = At(*address, ELF_T_SYM, count);
    Elf_Data* const indices = versionsAt ? At(*versionsAt, ELF_T_HALF, count) : nullptr;
    for (std::size_t index = 1; index < count; ++index) {  // the first symbol is empty
      GElf_Sym symbol;
      if (gelf_getsym(data, static_cast<int>(index), &symbol) == nullptr) throw Damaged();
      const unsigned binding = GELF_ST_BIND(symbol.st_info), visibility = GELF_ST_VISIBILITY(symbol.st_other);
      const bool isDefined = symbol.st_shndx != SHN_UNDEF;
      const bool isVisible = visibility == STV_DEFAULT || visibility == STV_PROTECTED;
      if (isDefined ? binding == STB_LOCAL || !isVisible : binding != STB_GLOBAL) continue;
      const std::string name = TextAt(symbol.st_name);
      const auto found = indices ? versions_.find(VersionOf(indices, index)) : versions_.end();
      const std::string version = found != versions_.end() ? found->second : "";
      if (symbol.st_shndx == SHN_ABS && name == version) continue;  // linkers define the names of versions
      (isDefined ? module_.exports : module_.undefined).push_back({name, version, ""});
      if (isDefined && binding == STB_GNU_UNIQUE) module_.uniqueSymbols.push_back(name);
    }
  }

  static constexpr unsigned kVersionIndex = 0x7FFF;  // the other bit hides a version from unversioned references
  static unsigned VersionOf(const Elf_Data* indices, std::size_t index) {
    return static_cast<const uint16_t*>(indices->d_buf)[index] & kVersionIndex;
  }

  Elf* elf_;
  ModuleFile& module_;
  std::vector<GElf_Phdr> loaded_;
  GElf_Phdr dynamic_ = {};
  std::map<GElf_Sxword, GElf_Xword> tags_;
  Elf_Data* texts_ = nullptr;
  mutable std::uintmax_t textsLeft_ = 0;  // how many more bytes of names may be copied
  std::map<unsigned, std::string> versions_;
};

bool ReadModuleFile(const std::filesystem::path& file, ModuleFile& module, std::string& reason) {
  std::error_code error;
  module.file = file;
  if (!std::filesystem::is_regular_file(file, error)) {
    reason = error ? error.message() : "is not a regular file";
    return false;
  }
  const CElf elf(file);
  if (!elf.IsOpen()) {
    reason = std::strerror(errno);
    return false;
  }
  if (elf.Get() == nullptr || elf_kind(elf.Get()) != ELF_K_ELF) {
    reason = "is not a shared library, but " + DescribeFile(file);
    return false;
  }
  try {
    CReader(elf.Get(), module).Read(std::filesystem::file_size(file, error));
  } catch (const Damaged&) {
    reason = "is truncated or damaged; build or copy the file again";
    return false;
  }
  return true;
}

// ---- Libraries -----------------------------------------------------------------------------------------------------

static constexpr const char* kLoaderConfiguration = "/etc/ld.so.conf";

// The folders of a configuration file of the loader. The first file may include others by a pattern FOLDER/*.conf.
static void AddConfiguredFolders(const std::filesystem::path& file, std::vector<std::filesystem::path>& folders) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string word, pattern;
    if (!(words >> word)) continue;
    if (word != "include") {
      folders.emplace_back(word);
    } else if (file == kLoaderConfiguration && words >> pattern) {
      std::error_code error;
      const std::filesystem::path folder = (file.parent_path() / pattern).parent_path();
      for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".conf") AddConfiguredFolders(entry.path(), folders);
      }
    }
  }
}

// A library that this process has loaded, such as libzrcore: every host has it, and the loader takes the loaded one.
static std::filesystem::path LoadedLibrary(const std::string& name) {
  void* const library = dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (library == nullptr) return {};
  link_map* map = nullptr;
  std::filesystem::path file;
  if (dlinfo(library, RTLD_DI_LINKMAP, static_cast<void*>(&map)) == 0 && map->l_name[0] == '/') file = map->l_name;
  (void)dlclose(library);
  return file;
}

std::filesystem::path FindLibrary(const std::string& name, const ModuleFile& neededBy, const ModuleFile& module) {
  std::error_code error;
  if (name.find('/') != std::string::npos) return std::filesystem::exists(name, error) ? PathOf(name) : PathOf("");
  if (std::filesystem::path loaded = LoadedLibrary(name); !loaded.empty()) return loaded;
  std::vector<std::filesystem::path> folders;
  if (neededBy.searchedLater.empty()) {  // a RUNPATH turns every RPATH off
    folders = neededBy.searchedFirst;
    folders.insert(folders.end(), module.searchedFirst.begin(), module.searchedFirst.end());
  }
  if (const char* const variable = std::getenv("LD_LIBRARY_PATH")) {
    std::istringstream entries(variable);
    for (std::string folder; std::getline(entries, folder, ':');) folders.emplace_back(folder.empty() ? "." : folder);
  }
  folders.insert(folders.end(), neededBy.searchedLater.begin(), neededBy.searchedLater.end());
  AddConfiguredFolders(kLoaderConfiguration, folders);
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
