// What it costs a program to have the library: loading it in a new process, with the libraries that it needs. The lower
// bound is a library with one function. Unloading is not measured, because some of the peers stay loaded.
//
// The files are in the page cache. The memory includes pages that all processes share; private memory is what each
// process adds.

#include <algorithm>
#include <vector>

#include "figure.h"
#include "row.h"

struct Column {
  const char* operation;
  const char* unit;
  std::size_t index;  // in the output of the probe
};
static constexpr Column kColumns[] = {{"start-up: resident memory", "KiB", 1},
                                      {"start-up: private memory", "KiB", 2},
                                      {"start-up: relocations", "relocations", 3},
                                      {"start-up: initialiser entries", "constructors", 4}};
static constexpr int kProcesses = 7;

static void LibraryRows(const std::string& library, const std::string& path) {
  RegisterRow("start-up: load", library, [path](benchmark::State& state) {
    std::vector<double> times;
    for (int process = 0; process < kProcesses; ++process) {
      times.push_back(NumbersPrintedBy(BENCH_LOAD_PROBE, path).at(0));
    }
    for (auto _ : state) {
    }
    std::nth_element(times.begin(), times.begin() + kProcesses / 2, times.end());
    state.counters["us"] = times[kProcesses / 2];
  })->Iterations(1);

  for (const Column& column : kColumns) {
    RegisterRow(column.operation, library, [path, column](benchmark::State& state) {
      const double number = NumbersPrintedBy(BENCH_LOAD_PROBE, path).at(column.index);
      for (auto _ : state) {
      }
      state.counters[column.unit] = number;
    })->Iterations(1);
  }
}

void StartUpRows() {
  LibraryRows("ZrCore", BENCH_ZRCORE_LIBRARY);
#if BENCH_QT
  LibraryRows("Qt Core", BENCH_QT_LIBRARY);
#endif
#if BENCH_GLIB
  LibraryRows("GObject and GLib", "libgobject-2.0.so");
#endif
#if BENCH_ICU
  LibraryRows("ICU", "libicuuc.so");
#endif
#if BENCH_POCO
  LibraryRows("Poco Foundation", BENCH_POCO_LIBRARY);
#endif
  LibraryRows("lower bound", BENCH_EMPTY_LIBRARY);
}
