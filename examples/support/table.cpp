// Draws tables. Columns of text become narrower until the table fits; an ellipsis replaces the end of their cells.

#include "support/table.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "support/utf8.h"

static constexpr std::size_t kMinTextWidth = 8;
static constexpr std::size_t kAnyWidth = std::numeric_limits<std::size_t>::max();

// The number of columns that a terminal uses for a character: common combining marks, and wide East Asian characters
// and pictures. Terminals follow these widths whatever the font.
static std::size_t DisplayWidth(char32_t codePoint) {
  static constexpr char32_t kMarks[][2] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05C7}, {0x064B, 0x065F},
                                           {0x0941, 0x0948}, {0x094D, 0x094D}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},
                                           {0x200B, 0x200F}, {0x20D0, 0x20F0}, {0x302A, 0x302D}, {0x3099, 0x309A},
                                           {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}};
  static constexpr char32_t kWide[][2] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0xA4C6},  {0xAC00, 0xD7A3},
                                          {0xF900, 0xFAD9},   {0xFE30, 0xFE6B},   {0xFF01, 0xFF60},  {0xFFE0, 0xFFE6},
                                          {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
  const auto isIn = [&](const char32_t(&range)[2]) { return codePoint >= range[0] && codePoint <= range[1]; };
  if (std::any_of(std::begin(kMarks), std::end(kMarks), isIn)) return 0;
  return std::any_of(std::begin(kWide), std::end(kWide), isIn) ? 2 : 1;
}

struct Cell {
  std::string text;
  std::size_t width = 0;
};

// Returns the part of a text that fits into `limit` columns. A control character would break the table, so its symbol
// is shown instead.
static Cell Fit(std::string_view text, std::size_t limit) {
  Cell cell;
  Cell shortened{"…", 1};
  bool isRightToLeft = false;
  while (!text.empty()) {
    const std::string_view before = text;
    const char32_t codePoint = TakeCodePoint(text);
    std::string shown(before.substr(0, before.size() - text.size()));
    if (codePoint < 0x20) shown = {'\xE2', '\x90', static_cast<char>(0x80 + codePoint)};
    if ((codePoint >= 0x7F && codePoint < 0xA0) || codePoint == kNotUtf8) shown = "\xEF\xBF\xBD";
    isRightToLeft = isRightToLeft || (codePoint >= 0x590 && codePoint < 0x900);
    cell.text += shown;
    cell.width += DisplayWidth(codePoint);
    if (cell.width + 1 <= limit) shortened = {cell.text + "…", cell.width + 1};
  }
  if (cell.width > limit) cell = shortened;
  if (isRightToLeft) cell.text += "\xE2\x80\x8E";  // so that the cells after this one stay to the right of it
  return cell;
}

static void AppendRule(std::string& out, const std::vector<std::size_t>& widths, const char* left, const char* cross,
                       const char* right) {
  for (std::size_t c = 0; c < widths.size(); ++c) {
    out += c == 0 ? left : cross;
    for (std::size_t i = 0; i < widths[c] + 2; ++i) out += "─";
  }
  out += right;
  out += '\n';
}

std::string DrawTable(const std::vector<TableRow>& rows, const std::vector<ColumnKind>& columns, std::size_t width) {
  std::vector<std::size_t> widths(columns.size());
  std::size_t total = 1;
  for (std::size_t c = 0; c < columns.size(); ++c) {
    for (const TableRow& row : rows) widths[c] = std::max(widths[c], Fit(row[c], kAnyWidth).width);
    total += widths[c] + 3;
  }
  for (; total > width; --total) {
    std::size_t* widest = nullptr;
    for (std::size_t c = 0; c < columns.size(); ++c) {
      const std::size_t minWidth = std::max(kMinTextWidth, Fit(rows[0][c], kAnyWidth).width);
      const bool canShrink = columns[c] == ColumnKind::Text && widths[c] > minWidth;
      if (canShrink && (widest == nullptr || widths[c] > *widest)) widest = &widths[c];
    }
    if (widest == nullptr) break;
    --*widest;
  }
  std::string out;
  AppendRule(out, widths, "╭", "┬", "╮");
  for (const TableRow& row : rows) {
    for (std::size_t c = 0; c < columns.size(); ++c) {
      const Cell cell = Fit(row[c], widths[c]);
      const std::string fill(widths[c] - cell.width, ' ');
      out += c == 0 ? "│ " : " │ ";
      out += columns[c] == ColumnKind::Number ? fill + cell.text : cell.text + fill;
    }
    out += " │\n";
    if (&row == &rows.front()) AppendRule(out, widths, "├", "┼", "┤");
  }
  AppendRule(out, widths, "╰", "┴", "╯");
  return out;
}
