#pragma once

#include <cstddef>
#include <string>

// Poco's loader knows classes by 8-bit names.
inline std::string PocoName(std::size_t index) { return "Benchmark.Widget." + std::to_string(index); }
