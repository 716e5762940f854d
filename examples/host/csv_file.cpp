// Reads a CSV file: checks that the bytes are UTF-8, decodes them, finds the lines (a line break in quotation marks is
// part of a field), and splits each line into fields.

#include "host/csv_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "code_units.h"
#include "host/column_title.h"
#include "host/csv_line.h"
#include "host/environment.h"
#include "host/utf8.h"

struct FileClose {
  void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }  // only read, so no data can be lost
};

static std::string ReadBytes(const std::string& path) {
  const auto fail = [&](int reason) {
    throw std::runtime_error("can't read the file \"" + path + "\": " + std::generic_category().message(reason));
  };
  const std::unique_ptr<std::FILE, FileClose> file(OpenToRead(path));
  if (file == nullptr) fail(errno);
  std::string bytes;
  char block[16384];
  for (std::size_t count = 1; count > 0;) {
    count = std::fread(block, 1, sizeof block, file.get());
    bytes.append(block, count);
  }
  if (std::ferror(file.get()) != 0) fail(errno);  // for example because the path names a directory
  return bytes;
}

// Returns the end of the line that begins at `begin`: the position of its line feed, or the end of the text. Quotation
// marks have a meaning only in a field that begins with one.
static std::size_t FindLineEnd(WideView text, std::size_t begin) {
  bool isFieldQuoted = false;
  bool isInQuotes = false;
  bool isAtFieldStart = true;
  for (std::size_t i = begin; i < text.size(); ++i) {
    const WCHAR unit = text[i];
    if (unit == W('\n') && !isInQuotes) return i;
    if (unit == W('"') && (isAtFieldStart || isFieldQuoted)) {
      isFieldQuoted = true;
      isInQuotes = !isInQuotes;
    }
    isAtFieldStart = unit == W(',') && !isInQuotes;
    if (isAtFieldStart) isFieldQuoted = false;
  }
  return text.size();
}

static std::string FieldCount(std::size_t count) { return std::to_string(count) + (count == 1 ? " field" : " fields"); }

static void AddLine(CsvTable& table, WideView text, std::size_t number, CStringTracker& strings) {
  const CsvLine line = SplitCsvLine(text);
  const std::string last = "field " + std::to_string(line.fields.size());
  if (line.problem == CsvProblem::OpenQuotes) throw std::runtime_error(last + " has no closing quotation mark; add it");
  if (line.problem == CsvProblem::TextAfterQuotes) {
    throw std::runtime_error(last + " continues after its closing quotation mark; double a quotation mark in a field");
  }
  if (table.columns.empty()) {
    for (const CsvField& field : line.fields) {
      const WideText content = FieldText(text, field);
      const ColumnTitle title = ReadColumnTitle(content);
      table.columns.push_back({strings.Create(title.text), title.type});
    }
    return;
  }
  if (line.fields.size() != table.columns.size()) {
    throw std::runtime_error(FieldCount(line.fields.size()) + ", but the title line has " +
                             std::to_string(table.columns.size()));
  }
  CsvRow& row = table.rows.emplace_back();
  row.line = number;
  for (const CsvField& field : line.fields) row.cells.push_back(strings.Create(FieldText(text, field)));
}

CsvTable ReadCsvFile(const std::string& path, CStringTracker& strings) {
  const std::string bytes = ReadBytes(path);
  const auto fail = [&](std::size_t number, const std::string& problem) {
    throw std::runtime_error("\"" + path + "\", line " + std::to_string(number) + ": " + problem);
  };
  if (const std::size_t fault = FindInvalidUtf8(bytes); fault != std::string::npos) {
    const auto breaks = std::count(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(fault), '\n');
    fail(1 + static_cast<std::size_t>(breaks), "this is not UTF-8; save the file as UTF-8");
  }
  const StringOwner decoded = FromUtf8(bytes);
  WideView text = Units(decoded.get());
  if (!text.empty() && text.front() == 0xFEFF) text.remove_prefix(1);

  CsvTable table;
  std::size_t number = 1;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = FindLineEnd(text, begin);
    WideView line = text.substr(begin, end - begin);
    const auto breaks = static_cast<std::size_t>(std::count(line.begin(), line.end(), W('\n')));
    if (!line.empty() && line.back() == W('\r')) line.remove_suffix(1);
    try {
      if (!line.empty()) AddLine(table, line, number, strings);
    } catch (const std::runtime_error& problem) {
      fail(number, problem.what());
    }
    number += breaks + 1;
    begin = end + 1;
  }
  if (table.columns.empty()) {
    throw std::runtime_error("\"" + path + "\" contains no line of titles; its first line must contain them");
  }
  return table;
}
