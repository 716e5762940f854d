// A run of operations that bytes tell, on the library's objects and on a plain model of them: random bytes in the
// tests, a fuzzer's in fuzz/. A sequence takes one step after the other, and claims on the way what has to hold.

#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

template <class Sequence>
class CSequence {
 public:
  // Steps until the bytes are used up; answers what differed from the model first, or nothing.
  static std::string Run(const uint8_t* data, std::size_t size) {
    Sequence sequence(data, size);
    while (sequence.difference_.empty() && sequence.at_ != sequence.end_) sequence.Step();
    return sequence.difference_;
  }

  static std::string RunRandomly(int rounds, std::size_t size, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> bytes(size);
    for (int round = 0; round < rounds; ++round) {
      for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
      const std::string difference = Run(bytes.data(), size);
      if (!difference.empty()) return difference + " in round " + std::to_string(round);
    }
    return "";
  }

 protected:
  CSequence(const uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

  uint32_t NextBelow(uint32_t limit) {
    uint32_t next = 0;
    for (int byte = 0; byte < (limit > 256 ? 2 : 1) && at_ != end_; ++byte) next = next * 256 + *at_++;
    return next % limit;
  }

  void Claim(bool claim, std::string_view what) {
    if (!claim && difference_.empty()) difference_ = what;
  }

 private:
  const uint8_t* at_;
  const uint8_t* end_;
  std::string difference_;
};
