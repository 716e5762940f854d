#include "host/csv_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "host/environment.h"
#include "host/utf8.h"

struct FileClose {
  void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }  // only read: nothing can get lost
};

static std::string ReadBytes(const std::string& path) {
  const auto fail = [&](int reason) {
    throw std::runtime_error("can't read \"" + path + "\": " + std::generic_category().message(reason));
  };
  const std::unique_ptr<std::FILE, FileClose> file(OpenToRead(path));
  if (file == nullptr) fail(errno);
  std::string bytes;
  char block[16384];
  for (std::size_t count = 1; count > 0;) {
    count = std::fread(block, 1, sizeof block, file.get());
    bytes.append(block, count);
  }
  if (std::ferror(file.get()) != 0) fail(errno);  // such as a directory
  return bytes;
}

// The end of the line that begins at `begin`: the place of its line feed or the end of the text. Quotation marks count
// only in a field that begins with one.
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

std::vector<CsvFileLine> ReadCsvFile(const std::string& path, CStringBook& book) {
  const std::string bytes = ReadBytes(path);
  if (const std::size_t fault = FaultInUtf8(bytes); fault != std::string::npos) {
    const auto number = 1 + std::count(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(fault), '\n');
    throw std::runtime_error("\"" + path + "\", line " + std::to_string(number) + ": this is not UTF-8");
  }
  const StringOwner decoded = FromUtf8(bytes);
  WideView text = Units(decoded.get());
  if (!text.empty() && text.front() == 0xFEFF) text.remove_prefix(1);

  std::vector<CsvFileLine> lines;
  std::size_t number = 1;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = FindLineEnd(text, begin);
    WideView line = text.substr(begin, end - begin);
    const auto breaks = static_cast<std::size_t>(std::count(line.begin(), line.end(), W('\n')));
    if (!line.empty() && line.back() == W('\r')) line.remove_suffix(1);
    lines.push_back({number, book.Write(line)});
    number += breaks + 1;
    begin = end + 1;
  }
  return lines;
}
