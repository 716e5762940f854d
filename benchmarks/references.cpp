// References to text and back. ZrCore returns records on the heap and 16-bit text. A peer with the remark "(char)"
// writes 8-bit text.

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>

#include "row.h"
#include "texts.h"
#include "zrcore/reference.h"

#if BENCH_FMT
#include <fmt/compile.h>
#include <fmt/format.h>
#endif
#if BENCH_QT
#include <QList>
#include <QString>
#include <QStringView>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif

using Words = std::array<uint32_t, 6>;

static std::string TextOf(const Words& w) {
  char text[72];
  std::snprintf(text, sizeof text, "%u.%u.%u.%u.%u.%u", w[0], w[1], w[2], w[3], w[4], w[5]);
  return text;
}

// ---- Lower bounds ---------------------------------------------------------------------------------------------------

static char* LowerBoundWrite(const Words& words, char* at) {
  for (uint32_t word : words) {
    at = std::to_chars(at, at + 10, word).ptr;
    *at++ = '.';
  }
  return at - 1;
}

static const char* LowerBoundRead(const char* at, const char* end, Words& words) {
  for (uint32_t& word : words) at = std::from_chars(at, end, word).ptr + 1;
  return at - 1;
}

// ---- Rows -----------------------------------------------------------------------------------------------------------

static void WriteRows(const std::string& kind, const Words& words) {
  const std::string operation = "reference to text " + kind;
  const std::string expected = TextOf(words);
  char lowerBoundText[80];
  Require(std::string(lowerBoundText, LowerBoundWrite(words, lowerBoundText)) == expected,
          "the lower bound writes the same text");

  ZRREF value;
  std::memcpy(value.words, words.data(), sizeof value.words);
  Row(operation, "ZrCore", [value] {
    ZRSTR text = nullptr;
    Consume(ZrREFToString(&value, &text));
    Consume(text);
    ZrDestroyString(text);
  });
#if BENCH_FMT
  Row(operation, "fmt compiled",
      [w = words] { Consume(fmt::format(FMT_COMPILE("{}.{}.{}.{}.{}.{}"), w[0], w[1], w[2], w[3], w[4], w[5])); });
  Row(operation, "fmt compiled (char, no heap)", [w = words] {
    char text[80];
    Consume(fmt::format_to(text, FMT_COMPILE("{}.{}.{}.{}.{}.{}"), w[0], w[1], w[2], w[3], w[4], w[5]));
    Consume(text);
  });
#endif
  Row(operation, "snprintf (char, no heap)", [w = words] {
    char text[80];
    Consume(std::snprintf(text, sizeof text, "%u.%u.%u.%u.%u.%u", w[0], w[1], w[2], w[3], w[4], w[5]));
    Consume(text);
  });
  Row(operation, "swprintf", [w = words] {
    wchar_t text[80];
    Consume(std::swprintf(text, 80, L"%u.%u.%u.%u.%u.%u", w[0], w[1], w[2], w[3], w[4], w[5]));
    Consume(text);
  });
#if BENCH_GLIB
  Row(operation, "g_strdup_printf", [w = words] {
    char* text = g_strdup_printf("%u.%u.%u.%u.%u.%u", w[0], w[1], w[2], w[3], w[4], w[5]);
    Consume(text);
    g_free(text);
  });
#endif
#if BENCH_QT
  Row(operation, "QString::asprintf",
      [w = words] { Consume(QString::asprintf("%u.%u.%u.%u.%u.%u", w[0], w[1], w[2], w[3], w[4], w[5])); });
#endif
  Row(operation, "lower bound", [words] {
    char text[80];
    Consume(LowerBoundWrite(words, text));
    Consume(text);
  });
  Row(operation, "lower bound by contract", [words] {
    char text[80];
    const std::size_t length = static_cast<std::size_t>(LowerBoundWrite(words, text) - text);
    char* block = static_cast<char*>(std::malloc(8 + (length + 1) * sizeof(WCHAR)));
    auto* units = reinterpret_cast<WCHAR*>(block + 8);
    for (std::size_t at = 0; at < length; ++at) units[at] = static_cast<WCHAR>(text[at]);
    units[length] = 0;
    Consume(block);
    std::free(block);
  });
}

static void ReadRows(const std::string& kind, const Words& words) {
  const std::string operation = "reference from text+destroy " + kind;
  const std::string text = TextOf(words);
  Words read{};
  Require(LowerBoundRead(text.data(), text.data() + text.size(), read) == text.data() + text.size() && read == words,
          "the lower bound reads the same reference");

  std::shared_ptr<WCHAR> string(ZrCreateString(Widened(text).c_str()), ZrDestroyString);
  ZRREF* checked = nullptr;
  Require(ZR_SUCCEEDED(ZrStringToREF(string.get(), &checked)), "the text is read");
  ZrDestroyREF(checked);
  Row(operation, "ZrCore", [string] {
    ZRREF* ref = nullptr;
    Consume(ZrStringToREF(string.get(), &ref));
    Consume(ref);
    ZrDestroyREF(ref);
  });
  Row(operation, "strtoul", [text] {
    Words w;
    const char* at = text.c_str();
    for (uint32_t& word : w) {
      char* end;
      word = static_cast<uint32_t>(std::strtoul(at, &end, 10));
      at = end + (*end == '.');
    }
    Consume(w);
  });
  Row(operation, "sscanf", [text] {
    Words w;
    Consume(std::sscanf(text.c_str(), "%u.%u.%u.%u.%u.%u", &w[0], &w[1], &w[2], &w[3], &w[4], &w[5]));
    Consume(w);
  });
#if BENCH_QT
  Row(operation, "QStringView::split", [text = QString::fromStdString(text)] {
    Words w;
    std::size_t at = 0;
    for (QStringView field : QStringView(text).split(u'.')) w[at++] = field.toUInt();
    Consume(w);
  });
#endif
#if BENCH_GLIB
  Row(operation, "g_strsplit", [text] {
    Words w;
    char** fields = g_strsplit(text.c_str(), ".", 6);
    for (std::size_t at = 0; at < w.size(); ++at) w[at] = static_cast<uint32_t>(std::strtoul(fields[at], nullptr, 10));
    g_strfreev(fields);
    Consume(w);
  });
#endif
  Row(operation, "lower bound", [text] {
    Words w;
    Consume(LowerBoundRead(text.data(), text.data() + text.size(), w));
    Consume(w);
  });
  Row(operation, "lower bound by contract", [text = Widened(text)] {
    char narrow[80];
    for (std::size_t at = 0; at < text.size(); ++at) narrow[at] = static_cast<char>(text[at]);
    auto* record = static_cast<Words*>(std::malloc(sizeof(Words)));
    Consume(LowerBoundRead(narrow, narrow + text.size(), *record));
    Consume(record);
    std::free(record);
  });
}

void ReferenceRows() {
  const std::pair<const char*, Words> kKinds[] = {{"11 units", {1, 2, 3, 4, 5, 6}},
                                                  {"42 units", {4294967295, 12345, 65535, 1234567, 54321, 98765}}};
  for (const auto& [kind, words] : kKinds) {
    Require(TextOf(words).size() == static_cast<std::size_t>(std::atoi(kind)),
            "the text has the length in the row's name");
    WriteRows(kind, words);
  }
  for (const auto& [kind, words] : kKinds) ReadRows(kind, words);
}
