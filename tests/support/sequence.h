// A sequence of operations on the library's objects and on a plain model of them. Bytes choose the operations and their
// arguments: random bytes in the tests, a fuzzer's bytes in fuzz/. Each step performs one operation and compares the
// library with the model.
//
// No text is formatted while both agree. After a difference, the same bytes run once more up to the step that failed.
// That step then describes its operation and the objects that it starts from.

#pragma once

#include <concepts>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/support/random_seed.h"
#include "tests/support/result_names.h"

template <class Sequence>
class CSequence {
 public:
  // Runs steps until no bytes are left. Returns the first difference from the model, or an empty string.
  static std::string Run(const uint8_t* data, std::size_t size) {
    Sequence sequence(data, size);
    while (sequence.difference_.empty() && sequence.at_ != sequence.end_) sequence.RunStep();
    if (sequence.difference_.empty()) sequence.CheckAll();
    return sequence.difference_.empty() ? std::string() : sequence.Explain(data, size);
  }

  // Runs `rounds` sequences of `size` random bytes. Returns the first difference, or an empty string.
  static std::string RunRandomly(uint32_t rounds, std::size_t size, uint32_t seed) {
    std::vector<uint8_t> bytes(size);
    for (uint32_t round = 0; round < rounds; ++round) {
      std::mt19937 random(seed + round);
      for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
      const std::string difference = Run(bytes.data(), size);
      if (!difference.empty()) return DescribeRound(seed, round) + "\n" + difference;
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

  // Adds a line to the description of the current step. Only the run that explains a difference calls `text`.
  template <std::invocable Text>
  void Note(Text&& text) {
    if (isExplaining_) notes_ += "\n  " + text();
  }

  // Claims that a condition holds. `difference` describes the failure and is called only if the claim fails.
  template <std::invocable Text>
  void Claim(bool claim, Text&& difference) {
    if (!claim && difference_.empty()) difference_ = difference();
  }
  void ClaimResult(const char* function, ZRRESULT returned, ZRRESULT expected) {
    Claim(returned == expected, [&] {
      return std::string(function) + " returned " + ResultName(returned) + ", the model expects " +
             ResultName(expected);
    });
  }
  template <std::integral Number>
  void ClaimNumber(const char* what, Number found, std::type_identity_t<Number> expected) {
    Claim(found == expected, [&] {
      return std::string(what) + " is " + std::to_string(found) + ", the model expects " + std::to_string(expected);
    });
  }

 private:
  void RunStep() {
    ++steps_;
    static_cast<Sequence*>(this)->Step();
  }

  std::string Explain(const uint8_t* data, std::size_t size) const {
    Sequence again(data, size);
    while (again.steps_ + 1 < steps_) again.RunStep();
    again.isExplaining_ = true;
    if (steps_ != 0) again.RunStep();
    if (again.difference_.empty()) again.CheckAll();
    std::string text = "step " + std::to_string(steps_) + " of a sequence of " + std::to_string(size) + " bytes:";
    text += again.notes_ + "\n  " + difference_;
    if (again.difference_ != difference_) {
      text += "\n  a second run of the same bytes differs: ";
      text += again.difference_.empty() ? "the library and the model agree" : again.difference_;
    }
    return text;
  }

  const uint8_t* at_;
  const uint8_t* end_;
  uint32_t steps_ = 0;
  bool isExplaining_ = false;
  std::string notes_, difference_;
};
