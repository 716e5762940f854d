// A problem: something in a folder or file that the kit can't use. Problems are collected, and never thrown.

#ifndef HOSTKIT_PROBLEM_H
#define HOSTKIT_PROBLEM_H

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/text.h"
#include "zr/string.hpp"
#include "zrhost/host.h"

enum class Severity : uint32_t { Warning = ZRHOST_WARNING, Error = ZRHOST_ERROR };

/// A place in a text: line and column in bytes, both from 1; 0 for the whole file.
struct TextPlace {
  uint32_t line = 0;
  uint32_t column = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the defaulted operator for a comparison with 0
  friend auto operator<=>(const TextPlace&, const TextPlace&) = default;
};

struct Problem {
  zr::String file;
  TextPlace place;
  Severity severity;
  zr::String reason;  ///< one sentence without a period
};

/// CProblems collects the problems of one reading.
class CProblems {
 public:
  void AddError(const zr::String& file, TextPlace place, std::string_view reason) {
    rows_.push_back({file, place, Severity::Error, TextOf(reason)});
  }
  void AddWarning(const zr::String& file, TextPlace place, std::string_view reason) {
    rows_.push_back({file, place, Severity::Warning, TextOf(reason)});
  }
  [[nodiscard]] const std::vector<Problem>& Rows() const noexcept { return rows_; }

  /// Ends a file: sorts the rows from `first` on, which are those of the file, by their places. If there are too many,
  /// the last one says so, because a hostile file could contain hundreds of thousands.
  void EndFile(std::size_t first) {
    const auto begin = rows_.begin() + static_cast<std::ptrdiff_t>(first);
    std::stable_sort(begin, rows_.end(),
                     [](const Problem& left, const Problem& right) { return left.place < right.place; });
    const std::ptrdiff_t count = rows_.end() - begin;
    if (count <= kMostOfFile) return;
    rows_.erase(begin + kMostOfFile, rows_.end());
    rows_.back().severity = Severity::Error;
    rows_.back().reason = TextOf("from here on, there are " + std::to_string(count - kMostOfFile + 1) + " problems");
    rows_.shrink_to_fit();
  }

 private:
  static constexpr std::ptrdiff_t kMostOfFile = 100;

  std::vector<Problem> rows_;
};

#endif
