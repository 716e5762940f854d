// The benchmark program: registers all rows and runs those that are selected. It accepts Google Benchmark's options,
// and one more:
//
//   --progress=RUNS   shows progress on file descriptor 3. RUNS is the number of rows times the number of repetitions.
//
// Google Benchmark's own output doesn't show progress: it reports a row after the last repetition of that row, and in
// random order the last repetitions all run near the end.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <future>
#include <thread>

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

int main(int argc, char** argv) {
  CSecondThread secondThread;
  benchmark::Initialize(&argc, argv);
  const char progress[] = "--progress=";
  if (argc == 2 && std::strncmp(argv[1], progress, sizeof progress - 1) == 0) {
    ShowProgress(std::strtoull(argv[1] + sizeof progress - 1, nullptr, 10));
    argc = 1;
  }
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  for (auto addRows : {CallRows,      StringRows,          UnicodeRows,       UuidRows,    ReferenceRows,
                       TimeRows,      ResultCodeRows,      BlobRows,          VariantRows, VariantConversionRows,
                       ArrayRows,     ArrayConversionRows, MemoryRows,        LockRows,    AtomicRows,
                       ComponentRows, ComponentGrowthRows, ModuleLoadingRows, HostKitRows, LayerRows})
    addRows();
  const std::size_t count = benchmark::RunSpecifiedBenchmarks();

  benchmark::ClearRegisteredBenchmarks();  // destroys what the rows own while the libraries can still release it
  benchmark::Shutdown();
  return count == 0 ? 1 : 0;
}
