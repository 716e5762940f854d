// Splits one line of a CSV file at its commas. Fields are returned as positions, so nothing is copied until FieldText.

#include "host/csv_line.h"

#include "code_units.h"

static constexpr std::size_t kNotFound = WideView::npos;

// Returns the position of the quotation mark that closes a field whose content begins at `begin`; kNotFound if the
// field is not closed.
static std::size_t FindClosingQuote(WideView line, std::size_t begin) {
  for (std::size_t quote = line.find(W('"'), begin); quote != kNotFound; quote = line.find(W('"'), quote + 2)) {
    const bool isDoubled = quote + 1 < line.size() && line[quote + 1] == W('"');
    if (!isDoubled) return quote;
  }
  return kNotFound;
}

CsvLine SplitCsvLine(WideView line) {
  CsvLine result;
  std::size_t begin = 0;
  for (;;) {
    std::size_t end = 0;
    if (begin < line.size() && line[begin] == W('"')) {
      const std::size_t quote = FindClosingQuote(line, begin + 1);
      const std::size_t contentEnd = quote == kNotFound ? line.size() : quote;
      result.fields.push_back({begin + 1, contentEnd - (begin + 1), true});
      if (quote == kNotFound) {
        result.problem = CsvProblem::OpenQuotes;
        return result;
      }
      end = quote + 1;
      if (end < line.size() && line[end] != W(',')) {
        result.problem = CsvProblem::TextAfterQuotes;
        return result;
      }
    } else {
      end = line.find(W(','), begin);
      if (end == kNotFound) end = line.size();
      result.fields.push_back({begin, end - begin, false});
    }
    if (end >= line.size()) return result;
    begin = end + 1;
  }
}

WideText FieldText(WideView line, const CsvField& field) {
  const WideView content = line.substr(field.begin, field.length);
  WideText text;
  text.reserve(content.size());
  for (std::size_t i = 0; i < content.size(); ++i) {
    text += content[i];
    if (field.isQuoted && content[i] == W('"')) ++i;  // skips the second of two quotation marks
  }
  return text;
}
