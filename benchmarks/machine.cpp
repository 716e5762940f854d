#include "machine.h"

#include <benchmark/benchmark.h>
#include <sys/utsname.h>

#include <fstream>
#include <string>

// Returns the value of the first line "KEY<separator>VALUE", without quotes, or an empty text.
static std::string ValueIn(const char* file, const std::string& key, char separator) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t at = line.find(separator);
    if (at == std::string::npos || line.compare(0, key.size(), key) != 0) continue;
    const std::size_t first = line.find_first_not_of(" \t\"", at + 1);
    return first == std::string::npos ? "" : line.substr(first, line.find_last_not_of(" \t\"") + 1 - first);
  }
  return "";
}

void RecordMachine() {
  utsname system{};
  (void)uname(&system);
  std::string processor = ValueIn("/proc/cpuinfo", "model name", ':');
  if (processor.empty()) processor = system.machine;  // Linux doesn't name ARM processors
  benchmark::AddCustomContext("processor", processor);
  benchmark::AddCustomContext("kernel", std::string(system.sysname) + " " + system.release);
  benchmark::AddCustomContext("system", ValueIn("/etc/os-release", "PRETTY_NAME", '='));
  benchmark::AddCustomContext("compiler", BENCH_COMPILER);
  benchmark::AddCustomContext("peers", BENCH_PEERS);
}
