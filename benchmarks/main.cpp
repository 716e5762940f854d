// Runs the rows. Google Benchmark's options apply, and one of our own:
//
//   --progress=RUNS   shows progress on file descriptor 3. RUNS is the number of rows times the number of repetitions.
//
// Google Benchmark's own output can't serve as progress: it reports a row after the last repetition of that row, and in
// random order those all come near the end.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <future>
#include <thread>

#include "row.h"

// A process with a single thread gets cheaper counts and locks from the C++ runtime, which no host of components would
// have. So a second thread exists for as long as anything is measured, and sleeps.
class CCompany {
 public:
  CCompany() : thread_([end = end_.get_future()] { end.wait(); }) {}
  CCompany(const CCompany&) = delete;
  CCompany& operator=(const CCompany&) = delete;
  ~CCompany() {
    end_.set_value();
    thread_.join();
  }

 private:
  std::promise<void> end_;
  std::thread thread_;
};

int main(int argc, char** argv) {
  CCompany company;
  benchmark::Initialize(&argc, argv);
  const char progress[] = "--progress=";
  if (argc == 2 && std::strncmp(argv[1], progress, sizeof progress - 1) == 0) {
    ShowProgress(std::strtoull(argv[1] + sizeof progress - 1, nullptr, 10));
    argc = 1;
  }
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  for (auto addRows : {CallRows, StringRows, UnicodeRows, UuidRows, ReferenceRows, TimeRows, ResultCodeRows, BlobRows,
                       VariantRows, VariantConversionRows, ArrayRows, ArrayConversionRows, MemoryRows, LockRows,
                       AtomicRows, ComponentRows, ComponentGrowthRows, ModuleLoadingRows})
    addRows();
  const std::size_t count = benchmark::RunSpecifiedBenchmarks();

  benchmark::ClearRegisteredBenchmarks();  // and with them what the rows own, while the libraries are still up
  benchmark::Shutdown();
  return count == 0 ? 1 : 0;
}
