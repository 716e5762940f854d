// A row is one measurement in the table: Row("operation", "library", callable) registers it.
//
//   - Rows that compete have the same operation name. Register ZrCore first, then the peers, then the lower bounds.
//   - A remark in parentheses after the library name, as in "std::string (char)", means that this library does less
//     work. It is measured and shown, but ZrCore is not compared with it.
//   - "lower bound" is a few lines written here: the least work that does the job. "lower bound by contract" adds the
//     calls, locks and memory blocks that the library's contract requires.
//   - The C++ layer is compared with calls of the C boundary: its library names are "zr layer" and "by hand". Their
//     operations begin with "layer: ".
//   - A row that creates a value also destroys it. Pass every result to Consume: it keeps the compiler from removing
//     the work or moving it out of the loop.
//   - The callable must own the data it works on, by value or by shared pointer. It is called as const. On two threads
//     both call the same callable: data that it changes without synchronisation is a data race.
//
// Each family of rows is one file with one function, which is declared below and called by main.cpp. The name of the
// family is the label of its rows.

#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "progress.h"

void ArrayConversionRows();
void ArrayRows();
void BlobRows();
void CallRows();
void ConversionPeakRows();
void StringRows();
void UnicodeRows();
void UuidRows();
void MemoryRows();
void ObjectSizeRows();
void ReferenceRows();
void ResultCodeRows();
void StartUpRows();
void TimeRows();
void VariantConversionRows();
void VariantRows();
void LockRows();
void AtomicRows();
void ComponentRows();
void ComponentGrowthRows();
void ModuleLoadingRows();
void LayerRows();
void HostKitRows();

template <class Value>
inline void Consume(const Value& value) {
  benchmark::DoNotOptimize(value);
}

// Ends the program if `claim` is false. Rows check their set-up with it, because a call that only returns an error is
// fast and would look good in the table.
inline void Require(bool claim, const char* text) {
  if (claim) return;
  std::fprintf(stderr, "zrcore_benchmarks: the set-up of a row is wrong; this does not hold: %s\n", text);
  std::exit(2);
}

inline std::string g_family;  // of the rows that are registered from now on

// Registers a row whose `measure` contains the measured loop. Most rows need only Row.
template <class Measure>
benchmark::internal::Benchmark* RegisterRow(const std::string& operation, const std::string& library, Measure measure) {
  return benchmark::RegisterBenchmark(
      (operation + "/" + library).c_str(),
      [measure = std::move(measure), family = g_family, runs = CRunCounter()](auto& state) mutable {
        std::as_const(measure)(state);
        if (state.thread_index() == 0) state.SetLabel(family);
        runs.Count(state);
      });
}

template <class Operation>
benchmark::internal::Benchmark* Row(const std::string& operation, const std::string& library, Operation run) {
  return RegisterRow(operation, library, [run = std::move(run)](benchmark::State& state) {
    for (auto _ : state) run();
  });
}

// Registers a row that constructs a `Scope` before the measured loop of each run and destroys it afterwards. Use it for
// global state, which must be reset before the next row runs.
template <class Scope, class Operation>
benchmark::internal::Benchmark* RowWithin(const std::string& operation, const std::string& library, Operation run) {
  return RegisterRow(operation, library, [run = std::move(run)](benchmark::State& state) {
    [[maybe_unused]] Scope scope{};
    for (auto _ : state) run();
  });
}

// Measures wall time instead of processor time, so that the time a thread waits for the other one is included.
template <class Operation>
void RowOnTwoThreads(const std::string& operation, const std::string& library, Operation run) {
  Row(operation + ", 2 threads", library, std::move(run))->Threads(2)->UseRealTime();
}

template <class Operation>
void RowOnOneAndTwoThreads(const std::string& operation, const std::string& library, const Operation& run) {
  Row(operation, library, run);
  RowOnTwoThreads(operation, library, run);
}
