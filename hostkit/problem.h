// A problem: something in a folder or file that the kit can't use. Problems are collected, and never thrown.

#ifndef HOSTKIT_PROBLEM_H
#define HOSTKIT_PROBLEM_H

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
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

  /// Sorts the rows from `first` on, which are those of one file, by their places.
  void SortFrom(std::size_t first) {
    std::stable_sort(rows_.begin() + static_cast<std::ptrdiff_t>(first), rows_.end(),
                     [](const Problem& left, const Problem& right) { return left.place < right.place; });
  }

 private:
  std::vector<Problem> rows_;
};

#endif
