// Loads one shared library and prints what that costs, for start_up.cpp, which runs this program in a new process each
// time:
//
//   benchmark_load_probe LIBRARY
//
// It prints the time to load in microseconds, the increase of resident and of private memory in KiB, the number of
// relocations and the number of initialiser entries. All of them include the libraries that LIBRARY needs, except those
// that each C++ program has. The initialiser entries are those of DT_INIT_ARRAY: one entry initialises all global
// objects of a source file, or of several with link-time optimisation.

#include <dlfcn.h>
#include <link.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <set>
#include <string>

struct Memory {
  double resident = 0, isPrivate = 0;  // in KiB
};

// Unlike /proc/self/statm, this file is exact.
static Memory MeasureMemory() {
  std::ifstream rollup("/proc/self/smaps_rollup");
  Memory memory;
  for (std::string word; rollup >> word;) {
    if (word == "Rss:") rollup >> memory.resident;
    if (word == "Private_Dirty:") rollup >> memory.isPrivate;
  }
  return memory;
}

struct Objects {
  std::set<ElfW(Addr)> known;  // the addresses of the loaded files
  std::size_t relocations = 0, initialisers = 0;
};

// Counts the entries of DT_RELR: an even word is one relocation, an odd word is a bitmap of 63.
static std::size_t CountPacked(const ElfW(Addr) * words, std::size_t count) {
  std::size_t relocations = 0;
  for (std::size_t at = 0; at < count; ++at) {
    relocations += words[at] % 2 == 0 ? 1 : static_cast<std::size_t>(__builtin_popcountll(words[at] >> 1));
  }
  return relocations;
}

static void CountEntries(const dl_phdr_info& object, const ElfW(Dyn) * entry, Objects& objects) {
  const ElfW(Addr)* packed = nullptr;
  std::size_t packedBytes = 0;
  for (; entry->d_tag != DT_NULL; ++entry) {
    const std::size_t value = entry->d_un.d_val;
    switch (entry->d_tag) {
      case DT_RELASZ:
      case DT_PLTRELSZ:
        objects.relocations += value / sizeof(ElfW(Rela));
        break;
      case DT_INIT_ARRAYSZ:
        objects.initialisers += value / sizeof(void*);
        break;
      case DT_RELR:
        packed = reinterpret_cast<const ElfW(Addr)*>(object.dlpi_addr + value);
        break;
      case DT_RELRSZ:
        packedBytes = value;
        break;
      default:
        break;
    }
  }
  if (packed != nullptr) objects.relocations += CountPacked(packed, packedBytes / sizeof(ElfW(Addr)));
}

static int AddKnown(dl_phdr_info* object, std::size_t, void* known) {
  static_cast<Objects*>(known)->known.insert(object->dlpi_addr);
  return 0;
}

static int CountUnknown(dl_phdr_info* object, std::size_t, void* context) {
  auto& objects = *static_cast<Objects*>(context);
  if (objects.known.count(object->dlpi_addr) != 0) return 0;
  for (int at = 0; at < object->dlpi_phnum; ++at) {
    const ElfW(Phdr)& segment = object->dlpi_phdr[at];
    if (segment.p_type != PT_DYNAMIC) continue;
    CountEntries(*object, reinterpret_cast<const ElfW(Dyn)*>(object->dlpi_addr + segment.p_vaddr), objects);
  }
  return 0;
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  using Clock = std::chrono::steady_clock;
  using Microseconds = std::chrono::duration<double, std::micro>;
  Objects objects;
  dl_iterate_phdr(AddKnown, &objects);
  (void)MeasureMemory();  // so that the memory for reading the file is there
  const Memory before = MeasureMemory();

  const Clock::time_point start = Clock::now();
  // Each library decides itself when its calls are bound, as at the start of a program. All libraries that start_up.cpp
  // measures ask for binding at once (-z now); a few of those that they need do not.
  void* library = dlopen(argv[1], RTLD_LAZY | RTLD_LOCAL);
  const Clock::time_point loaded = Clock::now();
  if (library == nullptr) {
    std::fprintf(stderr, "benchmark_load_probe: %s\n", dlerror());
    return 1;
  }
  const Memory after = MeasureMemory();
  dl_iterate_phdr(CountUnknown, &objects);

  std::printf("%.3f %.0f %.0f %zu %zu\n", Microseconds(loaded - start).count(), after.resident - before.resident,
              after.isPrivate - before.isPrivate, objects.relocations, objects.initialisers);
  return 0;
}
