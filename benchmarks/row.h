// How a measurement comes into the table: one line, Row("operation", "library", callable).
//
//   - The operation's name is the same in all rows that compete. ZrCore comes first, then the peers, then the floors.
//   - A library name with a remark in parentheses, "std::string (char)", does an easier job than the others: it is
//     measured and shown, but nobody is measured against it. "floor" is a few lines of our own: the least that the
//     operation costs by physics; "floor by contract" adds the calls, locks and blocks that the contract asks for.
//   - What creates also destroys. Results go through Consume, which also makes the compiler forget what it knows of
//     memory, so nothing moves out of the loop.
//   - The callable owns what it works on, by value or by shared pointer, and is called as const: on two threads both
//     call the same one.
//
// A family is one file with one function, declared below and called by main.cpp.

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
void StringRows();
void UnicodeRows();
void UuidRows();
void MemoryRows();
void ReferenceRows();
void ResultCodeRows();
void TimeRows();
void VariantConversionRows();
void VariantRows();
void LockRows();
void AtomicRows();
void ComponentRows();
void ComponentGrowthRows();
void ModuleLoadingRows();

template <class Value>
inline void Consume(const Value& value) {
  benchmark::DoNotOptimize(value);
}

// Set-up that fails ends the program: a call that only answers an error would look splendid in the table.
inline void Require(bool claim, const char* text) {
  if (claim) return;
  std::fprintf(stderr, "benchmarks: not so: %s\n", text);
  std::exit(2);
}

// Registers a row whose `measure` iterates over the state itself. Most rows need only Row.
template <class Measure>
benchmark::internal::Benchmark* RegisterRow(const std::string& operation, const std::string& library, Measure measure) {
  return benchmark::RegisterBenchmark((operation + "/" + library).c_str(),
                                      [measure = std::move(measure), runs = CRunCounter()](auto& state) mutable {
                                        std::as_const(measure)(state);
                                        runs.Count(state);
                                      });
}

template <class Operation>
benchmark::internal::Benchmark* Row(const std::string& operation, const std::string& library, Operation run) {
  return RegisterRow(operation, library, [run = std::move(run)](benchmark::State& state) {
    for (auto _ : state) run();
  });
}

// Each run constructs a `Scope` before the measured loop and destroys it afterwards. Use it for global state that the
// next row must find clean.
template <class Scope, class Operation>
benchmark::internal::Benchmark* RowWithin(const std::string& operation, const std::string& library, Operation run) {
  return RegisterRow(operation, library, [run = std::move(run)](benchmark::State& state) {
    [[maybe_unused]] Scope scope{};
    for (auto _ : state) run();
  });
}

// Wall time: the time that a thread waits for the other one is what these rows are about.
template <class Operation>
void RowOnTwoThreads(const std::string& operation, const std::string& library, Operation run) {
  Row(operation + ", 2 threads", library, std::move(run))->Threads(2)->UseRealTime();
}

template <class Operation>
void RowOnOneAndTwoThreads(const std::string& operation, const std::string& library, const Operation& run) {
  Row(operation, library, run);
  RowOnTwoThreads(operation, library, run);
}
