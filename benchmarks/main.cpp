// The benchmark program: registers all rows and runs those that are selected. It accepts Google Benchmark's options,
// and two more:
//
//   --progress=RUNS   shows progress on file descriptor 3. RUNS is the sum of the repetitions of all rows.
//   --figure=NAME     prints the figure of one row that is not a time, and nothing else; the program calls itself so
//
// Google Benchmark's own output doesn't show progress: it reports a row after the last repetition of that row, and in
// random order the last repetitions all run near the end.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <future>
#include <thread>

#include "figure.h"
#include "machine.h"
#include "row.h"

// The C++ runtime uses cheaper reference counts and locks while a process has only one thread. A host of components has
// several, so a second thread exists during all measurements. It only sleeps.
class CSecondThread {
 public:
  CSecondThread() : thread_([end = end_.get_future()] { end.wait(); }) {}
  CSecondThread(const CSecondThread&) = delete;
  CSecondThread& operator=(const CSecondThread&) = delete;
  ~CSecondThread() {
    end_.set_value();
    thread_.join();
  }

 private:
  std::promise<void> end_;
  std::thread thread_;
};

struct Family {
  const char* name;
  void (*addRows)();
};
static constexpr Family kFamilies[] = {{"Calls", CallRows},
                                       {"Strings", StringRows},
                                       {"UTF-8 and UTF-16", UnicodeRows},
                                       {"UUIDs", UuidRows},
                                       {"References", ReferenceRows},
                                       {"Dates and times", TimeRows},
                                       {"Result codes", ResultCodeRows},
                                       {"Blobs", BlobRows},
                                       {"Variants", VariantRows},
                                       {"Conversions of variants", VariantConversionRows},
                                       {"Arrays", ArrayRows},
                                       {"Conversions of arrays", ArrayConversionRows},
                                       {"Memory blocks", MemoryRows},
                                       {"Locks", LockRows},
                                       {"Atomics", AtomicRows},
                                       {"Components", ComponentRows},
                                       {"Many components", ComponentGrowthRows},
                                       {"Modules", ModuleLoadingRows},
                                       {"Host kit", HostKitRows},
                                       {"C++ layer", LayerRows},
                                       {"Bytes per object", ObjectSizeRows},
                                       {"Peak of a conversion", ConversionPeakRows},
                                       {"Start-up", StartUpRows}};

static bool SkipPrefix(const char** text, const char* prefix) {
  const std::size_t length = std::strlen(prefix);
  if (std::strncmp(*text, prefix, length) != 0) return false;
  *text += length;
  return true;
}

int main(int argc, char** argv) {
  const char* value = argc == 2 ? argv[1] : "";
  if (SkipPrefix(&value, "--figure=")) {
    ObjectSizeRows();
    ConversionPeakRows();
    const bool isKnown = PrintFigure(value);
    std::fflush(stdout);
    std::_Exit(isKnown ? 0 : 1);  // without destructors: the objects are many, and they are not released
  }

  CSecondThread secondThread;
  benchmark::Initialize(&argc, argv);
  value = argc == 2 ? argv[1] : "";
  if (SkipPrefix(&value, "--progress=")) {
    ShowProgress(std::strtoull(value, nullptr, 10));
    argc = 1;
  }
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  RecordMachine();
  for (const Family& family : kFamilies) {
    g_family = family.name;
    family.addRows();
  }
  const std::size_t count = benchmark::RunSpecifiedBenchmarks();

  benchmark::ClearRegisteredBenchmarks();  // destroys what the rows own while the libraries can still release it
  benchmark::Shutdown();
  return count == 0 ? 1 : 0;
}
