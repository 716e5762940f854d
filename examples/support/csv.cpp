// Reads a file as bytes: the characters with a meaning are ASCII, and no byte of another character looks like those.

#include "support/csv.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "support/utf8.h"

static std::string ReadBytes(const std::string& path) {
  errno = 0;
  std::ifstream file(std::filesystem::u8path(path), std::ios::binary);
  std::string bytes;
  char block[16384];
  while (file.read(block, sizeof block) || file.gcount() > 0) {
    bytes.append(block, static_cast<std::size_t>(file.gcount()));
  }
  if (!file.eof()) {
    throw std::runtime_error("can't read the file \"" + path +
                             "\": " + std::generic_category().message(errno != 0 ? errno : EIO));
  }
  return bytes;
}

// Reads the field that begins at `at`, and moves `at` to its end: a comma, a line feed, or the end of the text.
static std::string ReadField(std::string_view text, std::size_t& at) {
  if (at == text.size() || text[at] != '"') {
    const std::size_t begin = at;
    at = std::min(text.find_first_of(",\n", begin), text.size());
    return std::string(text.substr(begin, at - begin));
  }
  std::string field;
  for (++at;; ++at) {
    const std::size_t quote = text.find('"', at);
    if (quote == text.npos) throw std::runtime_error("has no closing quotation mark; add it");
    field += text.substr(at, quote - at);
    at = quote + 1;
    if (at == text.size() || text[at] != '"') break;
    field += '"';
  }
  if (at < text.size() && text[at] != ',' && text[at] != '\n') {
    throw std::runtime_error("continues after its closing quotation mark; double a quotation mark in a field");
  }
  return field;
}

static CsvLine ReadLine(std::string_view text, std::size_t& at, std::size_t number) {
  CsvLine line{number, {}};
  try {
    line.fields.push_back(ReadField(text, at));
    while (at < text.size() && text[at] == ',') line.fields.push_back(ReadField(text, ++at));
  } catch (const std::runtime_error& problem) {
    throw std::runtime_error("field " + std::to_string(line.fields.size() + 1) + " " + problem.what());
  }
  return line;
}

static std::string WithPlainLineEnds(const std::string& bytes) {
  std::string text;
  for (std::size_t i = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0; i < bytes.size(); ++i) {
    if (bytes[i] != '\r' || (i + 1 < bytes.size() && bytes[i + 1] != '\n')) text += bytes[i];
  }
  return text;
}

static std::size_t LineBreaks(std::string_view text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

std::vector<CsvLine> ReadCsv(const std::string& path) {
  const std::string content = WithPlainLineEnds(ReadBytes(path));
  const std::string_view text = content;
  std::vector<CsvLine> lines;
  std::size_t number = 1;
  try {
    for (std::string_view rest = text; !rest.empty();) {
      const char32_t codePoint = TakeCodePoint(rest);
      if (codePoint == kNotUtf8) throw std::runtime_error("this is not UTF-8; save the file as UTF-8");
      if (codePoint == U'\n') ++number;
    }
    number = 1;
    for (std::size_t at = 0; at < text.size(); ++at) {
      const std::size_t begin = at;
      if (text[at] != '\n') {
        CsvLine line = ReadLine(text, at, number);
        const std::size_t count = line.fields.size();
        if (!lines.empty() && count != lines[0].fields.size()) {
          throw std::runtime_error(std::to_string(count) + (count == 1 ? " field" : " fields") +
                                   ", but the title line has " + std::to_string(lines[0].fields.size()));
        }
        lines.push_back(std::move(line));
      }
      number += 1 + LineBreaks(text.substr(begin, at - begin));
    }
  } catch (const std::runtime_error& problem) {
    throw std::runtime_error("\"" + path + "\", line " + std::to_string(number) + ": " + problem.what());
  }
  if (lines.empty()) {
    throw std::runtime_error("\"" + path + "\" contains no line of titles; its first line must contain them");
  }
  return lines;
}
