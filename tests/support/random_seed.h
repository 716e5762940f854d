// The seeds of tests with random input. Each round of a test has its own generator, whose seed is the test's seed plus
// the number of the round. The seed that a failure reports therefore repeats the failing round as the first one:
//
//     ZRCORE_TEST_SEED=20155 build/debug/tests/zrcore_tests --gtest_filter=Array.RandomOperations*

#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

// Returns the environment variable ZRCORE_TEST_SEED if it is set, else the test's fixed seed.
inline uint32_t RandomSeed(uint32_t fixed) {
  const char* text = std::getenv("ZRCORE_TEST_SEED");
  return text != nullptr && *text != 0 ? static_cast<uint32_t>(std::strtoul(text, nullptr, 0)) : fixed;
}

inline std::string DescribeRound(uint32_t seed, uint32_t round) {
  return "round " + std::to_string(round) + " with seed " + std::to_string(seed) +
         "; to repeat it as the first round, set ZRCORE_TEST_SEED=" + std::to_string(seed + round);
}
