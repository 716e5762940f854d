// The class names in the Poco library.

#pragma once

#include <cstddef>
#include <string>

// Poco's loader identifies classes by 8-bit names.
inline std::string PocoName(std::size_t index) { return "Benchmark.Widget." + std::to_string(index); }
