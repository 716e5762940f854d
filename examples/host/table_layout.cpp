// Each cell passes through these forms: code units -> paragraphs of glyphs, with control characters made visible ->
// lines that fit into the column -> code units, padded with spaces to the display width of the column.

#include "host/table_layout.h"

#include <algorithm>
#include <limits>

#include "code_units.h"
#include "host/display_width.h"

struct Glyph {
  char32_t codePoint;
  unsigned width;
};
using GlyphLine = std::vector<Glyph>;
using Cell = std::vector<GlyphLine>;

struct Column {
  std::size_t width = 1;
  std::size_t minWidth = 1;  // Narrow must not go below this
  bool isNumeric = false;
  Alignment alignment = Alignment::ByContent;
};

static constexpr std::size_t kMinTextWidth = 6;
static constexpr std::size_t kMinAlignedWidth = 16;
static constexpr std::size_t kAnyWidth = std::numeric_limits<std::size_t>::max();
static constexpr char32_t kReplacement = 0xFFFD;
static constexpr WCHAR kLeftToRightMark = 0x200E;

static bool IsHighSurrogate(char32_t unit) { return (unit & 0xFFFFFC00u) == 0xD800u; }
static bool IsLowSurrogate(char32_t unit) { return (unit & 0xFFFFFC00u) == 0xDC00u; }

// A control character would move the cursor and break the table, so it is replaced by its visible symbol.
static char32_t Visible(char32_t codePoint) {
  if (codePoint < 0x20) return 0x2400 + codePoint;
  if (codePoint == 0x7F) return 0x2421;
  if (codePoint < 0xA0 && codePoint >= 0x80) return kReplacement;
  if (IsHighSurrogate(codePoint) || IsLowSurrogate(codePoint)) return kReplacement;  // unpaired
  return codePoint;
}

// Splits a text into paragraphs: one, plus one for each line break in it.
static Cell Paragraphs(const WideText& text) {
  Cell paragraphs(1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t codePoint = text[i];
    const char32_t next = i + 1 < text.size() ? text[i + 1] : U'\0';
    if (codePoint == U'\r' && next == U'\n') continue;
    if (codePoint == U'\n' || codePoint == 0x2028 || codePoint == 0x2029) {
      paragraphs.emplace_back();
      continue;
    }
    if (IsHighSurrogate(codePoint) && IsLowSurrogate(next)) {
      codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (next - 0xDC00);
      ++i;
    }
    const char32_t visible = Visible(codePoint);
    paragraphs.back().push_back({visible, DisplayWidth(visible)});
  }
  return paragraphs;
}

static std::size_t Width(const GlyphLine& line) {
  std::size_t width = 0;
  for (const Glyph& glyph : line) width += glyph.width;
  return width;
}

static std::size_t Width(const Cell& cell) {
  std::size_t width = 0;
  for (const GlyphLine& line : cell) width = std::max(width, Width(line));
  return width;
}

// A number is an optional sign, digits with at most one decimal point, and an optional exponent.
static bool IsNumber(const WideText& text) {
  static constexpr WCHAR kMinusSign = 0x2212;
  std::size_t at = 0;
  const auto skipSign = [&] {
    if (at < text.size() && (text[at] == W('+') || text[at] == W('-') || text[at] == kMinusSign)) ++at;
  };
  const auto skipDigits = [&] {
    const std::size_t begin = at;
    while (at < text.size() && text[at] >= W('0') && text[at] <= W('9')) ++at;
    return at - begin;
  };
  skipSign();
  std::size_t digits = skipDigits();
  if (at < text.size() && text[at] == W('.')) {
    ++at;
    digits += skipDigits();
  }
  if (digits == 0) return false;
  if (at < text.size() && (text[at] == W('e') || text[at] == W('E'))) {
    ++at;
    skipSign();
    if (skipDigits() == 0) return false;
  }
  return at == text.size();
}

// Breaks a paragraph into lines of at most `limit` columns. A line breaks at a space, which is dropped, or inside a
// word that is wider than the line. A combining mark stays with its character. A line has at least one character, even
// if that is wider than the limit.
static void Wrap(const GlyphLine& paragraph, std::size_t limit, Cell& lines) {
  constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  std::size_t begin = 0;
  std::size_t width = 0;
  std::size_t space = kNone;  // the position of the last space in the line
  for (std::size_t i = 0; i < paragraph.size(); ++i) {
    if (width > 0 && width + paragraph[i].width > limit) {
      const bool isSpace = paragraph[i].codePoint == U' ';
      const std::size_t end = isSpace || space == kNone ? i : space;
      const bool dropsSpace = isSpace || space != kNone;
      lines.emplace_back(paragraph.begin() + static_cast<std::ptrdiff_t>(begin),
                         paragraph.begin() + static_cast<std::ptrdiff_t>(end));
      begin = end + (dropsSpace ? 1 : 0);
      space = kNone;
      width = 0;
      for (std::size_t k = begin; k < i; ++k) width += paragraph[k].width;
      if (isSpace) continue;
    }
    if (paragraph[i].codePoint == U' ' && i > begin) space = i;
    width += paragraph[i].width;
  }
  lines.emplace_back(paragraph.begin() + static_cast<std::ptrdiff_t>(begin), paragraph.end());
}

static Cell Wrap(const Cell& paragraphs, std::size_t limit) {
  Cell lines;
  for (const GlyphLine& paragraph : paragraphs) Wrap(paragraph, limit, lines);
  return lines;
}

static std::vector<Column> Measure(const std::vector<TableRow>& rows, const std::vector<Alignment>& alignments) {
  std::vector<Column> columns(rows[0].size());
  for (std::size_t c = 0; c < columns.size(); ++c) {
    Column& column = columns[c];
    column.alignment = alignments[c];
    std::size_t filled = 0;
    std::size_t numbers = 0;
    for (std::size_t r = 0; r < rows.size(); ++r) {
      const std::size_t width = Width(Paragraphs(rows[r][c]));
      column.width = std::max(column.width, width);
      if (r == 0 || rows[r][c].empty()) continue;
      ++filled;
      if (!IsNumber(rows[r][c])) continue;
      ++numbers;
      column.minWidth = std::max(column.minWidth, width);
    }
    column.isNumeric = numbers * 2 > filled;
    const std::size_t minWidth = column.alignment == Alignment::ByContent ? kMinTextWidth : kMinAlignedWidth;
    column.minWidth = std::max(column.minWidth, std::min(column.width, minWidth));
  }
  return columns;
}

// Limits the widest columns to one common width: the largest with which the table fits.
static void Narrow(std::vector<Column>& columns, std::size_t width) {
  const std::size_t frame = columns.size() * 3 + 1;
  const auto capped = [](const Column& column, std::size_t cap) {
    return std::max(column.minWidth, std::min(column.width, cap));
  };
  const auto total = [&](std::size_t cap) {
    std::size_t sum = frame;
    for (const Column& column : columns) sum += capped(column, cap);
    return sum;
  };
  if (total(kAnyWidth) <= width) return;
  std::size_t cap = width;
  while (cap > 1 && total(cap) > width) --cap;
  std::size_t spare = width - std::min(width, total(cap));  // less than the number of wide columns: one each
  for (Column& column : columns) {
    const bool isWide = column.width > cap && column.minWidth <= cap;
    column.width = capped(column, cap);
    if (isWide && spare > 0) {
      ++column.width;
      --spare;
    }
  }
}

static void Append(WideText& out, char32_t codePoint) {
  if (codePoint < 0x10000) {
    out += static_cast<WCHAR>(codePoint);
    return;
  }
  out += static_cast<WCHAR>(0xD800 + ((codePoint - 0x10000) >> 10));
  out += static_cast<WCHAR>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
}

static void AppendLine(WideText& out, const GlyphLine& line, std::size_t width, bool isRightAligned) {
  const std::size_t used = Width(line);
  const std::size_t fill = width - std::min(width, used);
  if (isRightAligned) out.append(fill, W(' '));
  bool isRightToLeft = false;
  for (const Glyph& glyph : line) {
    Append(out, glyph.codePoint);
    isRightToLeft = isRightToLeft || IsRightToLeft(glyph.codePoint);
  }
  // In a terminal that supports right-to-left text, the mark keeps the next cells from being drawn to the left of this
  // one.
  if (isRightToLeft) out += kLeftToRightMark;
  if (!isRightAligned) out.append(fill, W(' '));
}

static void AppendRule(WideText& out, const std::vector<Column>& columns, const WCHAR (&ends)[4]) {
  for (std::size_t c = 0; c < columns.size(); ++c) {
    out += c == 0 ? ends[0] : ends[1];
    out.append(columns[c].width + 2, W('─'));
  }
  out += ends[2];
  out += W('\n');
}

static void AppendRow(WideText& out, const TableRow& row, const std::vector<Column>& columns, bool isTitle) {
  std::vector<Cell> cells;
  cells.reserve(row.size());
  const GlyphLine below;  // empty: fills the lines below the last line of a cell
  std::size_t height = 1;
  for (std::size_t c = 0; c < row.size(); ++c) {
    cells.push_back(Wrap(Paragraphs(row[c]), columns[c].width));
    height = std::max(height, cells.back().size());
  }
  for (std::size_t h = 0; h < height; ++h) {
    for (std::size_t c = 0; c < cells.size(); ++c) {
      out += c == 0 ? W("│ ") : W(" │ ");
      const bool isNumber = isTitle ? columns[c].isNumeric : IsNumber(row[c]);
      const Alignment alignment = columns[c].alignment;
      const bool isRightAligned = alignment == Alignment::ByContent ? isNumber : alignment == Alignment::Right;
      AppendLine(out, h < cells[c].size() ? cells[c][h] : below, columns[c].width, isRightAligned);
    }
    out += W(" │\n");
  }
}

WideText LayOutTable(const std::vector<TableRow>& rows, const std::vector<Alignment>& alignments, std::size_t width) {
  std::vector<Column> columns = Measure(rows, alignments);
  if (width != 0) Narrow(columns, width);
  WideText out;
  AppendRule(out, columns, W("╭┬╮"));
  AppendRow(out, rows[0], columns, true);
  AppendRule(out, columns, W("├┼┤"));
  for (std::size_t r = 1; r < rows.size(); ++r) AppendRow(out, rows[r], columns, false);
  AppendRule(out, columns, W("╰┴╯"));
  return out;
}
