// Shows the progress of the program in one line on a terminal: "1234 of 5310 runs, 9 min left". A run is one repetition
// of one row.

#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

// From now on the line is written to file descriptor 3. `runs` is the number of runs that the program will do.
void ShowProgress(std::uint64_t runs);

// Counts the runs of one row. Google Benchmark calls the row more often than that: before the first run it makes
// attempts, which find out how many iterations a run needs.
class CRunCounter {
 public:
  // Call this at the end of each call of the row, on each of its threads.
  void Count(const benchmark::State& state);

 private:
  benchmark::IterationCount iterations_ = 0;
};
