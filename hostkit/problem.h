// A problem: something in a folder or file that the kit can't use. Problems are collected, and never thrown.

#ifndef HOSTKIT_PROBLEM_H
#define HOSTKIT_PROBLEM_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "zrhost/host.h"

enum class Severity : uint32_t { Warning = ZRHOST_WARNING, Error = ZRHOST_ERROR };

/// A place in a text: line and column in bytes, both from 1; 0 for the whole file.
struct TextPlace {
  uint32_t line = 0;
  uint32_t column = 0;
};

struct Problem {
  std::filesystem::path file;
  TextPlace place;
  Severity severity;
  std::string reason;  ///< in UTF-8, one sentence without a period
};

/// CProblems collects the problems of one reading.
class CProblems {
 public:
  void Add(Severity severity, const std::filesystem::path& file, TextPlace place, std::string reason) {
    rows_.push_back({file, place, severity, std::move(reason)});
  }
  void AddError(const std::filesystem::path& file, TextPlace place, std::string reason) {
    Add(Severity::Error, file, place, std::move(reason));
  }
  void AddWarning(const std::filesystem::path& file, TextPlace place, std::string reason) {
    Add(Severity::Warning, file, place, std::move(reason));
  }
  [[nodiscard]] const std::vector<Problem>& Rows() const noexcept { return rows_; }

 private:
  std::vector<Problem> rows_;
};

/// The text in quotation marks, for a reason.
inline std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

#endif
