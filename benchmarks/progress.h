// Shows the progress of the program in one line on a terminal: "1234 of 5310 runs, 9 min left". A run is one repetition
// of one row.

#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

// Starts writing the line to file descriptor 3. `runs` is the total number of runs.
void ShowProgress(std::uint64_t runs);

// Counts the runs of one row. Google Benchmark also calls the row before the first run, to find out how many iterations
// a run needs. Those attempts are not counted.
class CRunCounter {
 public:
  // Call this at the end of each call of the row, on each of its threads.
  void Count(const benchmark::State& state);

 private:
  benchmark::IterationCount iterations_ = 0;
};
