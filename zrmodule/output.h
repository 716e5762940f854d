// The output of all commands: text for people, or one JSON document for programs, with the same findings and exit codes.

#ifndef ZRMODULE_OUTPUT_H
#define ZRMODULE_OUTPUT_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using Json = nlohmann::ordered_json;

/// The exit status of the tool. Usage and Unreadable win over Findings.
enum class ExitCode : int { Good = 0, Findings = 1, Usage = 2, Unreadable = 3 };

enum class Level : uint8_t { Note, Warning, Error };

/// COutput collects what a command prints. In text, a line appears at once; in JSON, Finish prints the document.
class COutput {
 public:
  COutput(bool isJson, const std::string& command);

  [[nodiscard]] bool IsJson() const noexcept { return isJson_; }

  /// The document. Keys are added to it in the order of the output; text output ignores it.
  [[nodiscard]] Json& Document() noexcept { return document_; }

  /// Prints a line of text. Ignored in JSON.
  void Line(const std::string& text) const;
  /// Prints a heading of text, bold on a terminal. Ignored in JSON.
  void Heading(const std::string& text) const;

  /// Reports a finding of a file as "FILE:LINE:COLUMN: error: REASON", and adds it to "findings" of the document. A line
  /// of 0 is not shown. A warning or an error makes the exit status at least Findings.
  void Finding(Level level, const std::string& file, uint32_t line, uint32_t column, const std::string& reason);

  /// Sets the exit status, unless it is a greater one already.
  void Raise(ExitCode code) noexcept;

  [[nodiscard]] ExitCode Status() const noexcept { return code_; }

  /// Prints the document in JSON. Returns the exit status.
  [[nodiscard]] int Finish();

 private:
  bool isJson_;
  bool isColoured_;
  Json document_;
  ExitCode code_ = ExitCode::Good;
};

/// Replaces control characters, so that a text from a file can't change the terminal.
[[nodiscard]] std::string Printable(const std::string& utf8);

#endif
