// The output of all commands: text for people, or one JSON document for programs, with the same findings and exit
// codes.

#ifndef ZRMODULE_OUTPUT_H
#define ZRMODULE_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zrmodule/json.h"

/// The exit status of the tool. Of two, the greater one counts.
enum class ExitCode : int { Good = 0, Findings = 1, Usage = 2, Unreadable = 3 };

enum class Level : uint8_t { Note, Warning, Error };

/// Where something was found.
struct Place {
  std::string file;   ///< a file or folder; empty if the finding concerns none
  uint32_t line = 0;  ///< from 1; 0 for the whole file
  uint32_t column = 0;
};

/// COutput collects what a command prints. In text, a line appears at once; in JSON, Finish prints the document.
/// docs/zrmodule.schema.json describes the documents.
class COutput {
 public:
  COutput(bool isJson, std::string command);

  [[nodiscard]] bool IsJson() const noexcept { return isJson_; }

  /// Adds a member to the document. Ignored in text.
  void Set(const std::string& key, const CJson& value);
  /// Prints a line. Ignored in JSON.
  void Line(const std::string& text) const;
  /// Prints a line, bold on a terminal. Ignored in JSON.
  void Heading(const std::string& text) const;

  /// Reports a finding as "FILE:LINE:COLUMN: error: REASON [KIND]". A warning or an error makes the exit status at
  /// least Findings.
  ///
  /// @param kind    a word by which programs distinguish findings; the manual page lists all.
  /// @param reason  one sentence without a period, with the remedy if there is one.
  void Finding(Level level, const char* kind, const Place& place, const std::string& reason);
  void Error(const char* kind, const Place& place, const std::string& reason) {
    Finding(Level::Error, kind, place, reason);
  }

  /// Sets the exit status, unless it is a greater one already.
  void Raise(ExitCode code) noexcept;

  /// How many warnings and errors were reported.
  [[nodiscard]] std::size_t Count() const noexcept { return count_; }

  /// Prints the document in JSON. Returns the exit status.
  [[nodiscard]] int Finish();

 private:
  bool isJson_;
  bool isColoured_;
  std::vector<JsonMember> document_;
  std::vector<CJson> findings_;
  std::size_t count_ = 0;
  ExitCode code_ = ExitCode::Good;
};

#endif
