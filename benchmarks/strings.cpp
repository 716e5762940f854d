// Counted strings, compared with the strings of the frameworks. A peer with the remark "(char)" uses 8-bit text and so
// moves half as many bytes.

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "boundary.h"
#include "row.h"
#include "zrcore/string.h"

#if BENCH_QT
#include <QString>
#include <QStringBuilder>
#endif
#if BENCH_ICU
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif

// Shared ownership of a string reference, so that a row can keep it.
using SharedString = std::shared_ptr<WCHAR>;

static SharedString Share(const std::u16string& text) {
  return SharedString(ZrCreateString(text.c_str()), ZrDestroyString);
}

static std::u16string Text(std::size_t units) {
  std::u16string text(units, u'\0');
  for (std::size_t i = 0; i < units; ++i) text[i] = static_cast<char16_t>(u'a' + i % 26);
  return text;
}

static std::string Narrow(const std::u16string& text) {
  std::string narrow;
  for (char16_t unit : text) narrow += static_cast<char>(unit);
  return narrow;
}

#if BENCH_QT
static QString ToQt(const std::u16string& text) { return QString::fromStdU16String(text); }
#endif
#if BENCH_ICU
static icu::UnicodeString ToIcu(const std::u16string& text) {
  return icu::UnicodeString(text.data(), static_cast<int32_t>(text.size()));
}
#endif

static void CreateRows() {
  const std::string operation = "string create+destroy 16 units";
  const std::u16string text = Text(16);

  // All start from a zero-terminated text whose length must be determined first.
  Row(operation, "ZrCore", [text] {
    ZRSTR s = ZrCreateString(text.c_str());
    Consume(s);
    ZrDestroyString(s);
  });
  Row(operation, "std::u16string", [text] {
    std::u16string s(text.c_str());
    Consume(s);
  });
  Row(operation, "std::make_shared<u16string>", [text] {
    auto s = std::make_shared<const std::u16string>(text.c_str());
    Consume(s);
  });
  Row(operation, "std::string (char)", [narrow = Narrow(text)] {
    std::string s(narrow.c_str());
    Consume(s);
  });
#if BENCH_QT
  Row(operation, "QString", [text] {
    QString s(reinterpret_cast<const QChar*>(text.c_str()));
    Consume(s);
  });
#endif
#if BENCH_ICU
  Row(operation, "icu::UnicodeString (inline, no heap)", [text] {
    icu::UnicodeString s(text.c_str());
    Consume(s);
  });
#endif
#if BENCH_GLIB
  Row(operation, "GRefString (char)", [narrow = Narrow(text)] {
    char* s = g_ref_string_new(narrow.c_str());
    Consume(s);
    g_ref_string_release(s);
  });
#endif
  Row(operation, "lower bound", [text] {
    const std::size_t bytes = (text.size() + 1) * sizeof(WCHAR);
    void* block = std::malloc(8 + bytes);
    std::memcpy(static_cast<char*>(block) + 8, text.data(), bytes);
    Consume(block);
    std::free(block);
  });
}

static void CopyRows() {
  const std::string operation = "string copy+destroy";
  const std::u16string text = Text(16);

  RowOnOneAndTwoThreads(operation, "ZrCore", [string = Share(text)] {
    ZRSTR copy = ZrCopyString(string.get());
    Consume(copy);
    ZrDestroyString(copy);
  });
  RowOnOneAndTwoThreads(operation, "std::u16string", [text] {
    std::u16string copy(text);
    Consume(copy);
  });
  RowOnOneAndTwoThreads(operation, "std::shared_ptr<u16string>",
                        [string = std::make_shared<const std::u16string>(text)] {
                          std::shared_ptr<const std::u16string> copy(string);
                          Consume(copy);
                        });
#if BENCH_QT
  RowOnOneAndTwoThreads(operation, "QString", [string = ToQt(text)] {
    QString copy(string);
    Consume(copy);
  });
#endif
#if BENCH_ICU
  RowOnOneAndTwoThreads(operation, "icu::UnicodeString (inline, no heap)", [string = ToIcu(text)] {
    icu::UnicodeString copy(string);
    Consume(copy);
  });
#endif
#if BENCH_GLIB
  std::shared_ptr<char> counted(g_ref_string_new(Narrow(text).c_str()), g_ref_string_release);
  RowOnOneAndTwoThreads(operation, "GRefString (char)", [counted] {
    char* copy = g_ref_string_acquire(counted.get());
    Consume(copy);
    g_ref_string_release(copy);
  });
#endif
  auto count = std::make_shared<std::atomic<uint32_t>>(1);
  RowOnOneAndTwoThreads(operation, "lower bound", [count] {
    count->fetch_add(1, std::memory_order_relaxed);
    Consume(count);
    Consume(count->fetch_sub(1, std::memory_order_acq_rel) == 1);
  });
  RowOnOneAndTwoThreads(operation, "lower bound by contract", [count] {
    BoundaryRetain(count.get());
    Consume(count);
    BoundaryRelease(count.get());
  });
}

static void AppendRows() {
  const std::string operation = "string append 2x32 units+destroy";
  const std::u16string text = Text(32);

  Row(operation, "ZrCore", [left = Share(text), right = Share(text)] {
    ZRSTR s = ZrAppendStrings(left.get(), right.get());
    Consume(s);
    ZrDestroyString(s);
  });
  Row(operation, "std::u16string", [left = text, right = text] {
    std::u16string s = left + right;
    Consume(s);
  });
  Row(operation, "std::string (char)", [left = Narrow(text), right = Narrow(text)] {
    std::string s = left + right;
    Consume(s);
  });
#if BENCH_QT
  Row(operation, "QString", [left = ToQt(text), right = ToQt(text)] {
    QString s = left + right;
    Consume(s);
  });
  Row(operation, "QStringBuilder", [left = ToQt(text), right = ToQt(text)] {
    QString s = left % right;
    Consume(s);
  });
#endif
#if BENCH_ICU
  Row(operation, "icu::UnicodeString", [left = ToIcu(text), right = ToIcu(text)] {
    icu::UnicodeString s = left + right;
    Consume(s);
  });
#endif
#if BENCH_GLIB
  Row(operation, "g_strconcat (char)", [left = Narrow(text), right = Narrow(text)] {
    char* s = g_strconcat(left.c_str(), right.c_str(), nullptr);
    Consume(s);
    g_free(s);
  });
#endif
  Row(operation, "lower bound", [left = text, right = text] {
    const std::size_t first = left.size() * sizeof(WCHAR), second = (right.size() + 1) * sizeof(WCHAR);
    char* block = static_cast<char*>(std::malloc(8 + first + second));
    std::memcpy(block + 8, left.data(), first);
    std::memcpy(block + 8 + first, right.data(), second);
    Consume(block);
    std::free(block);
  });
}

// Compares two strings with the same content at different addresses. In some libraries testing for equality is faster
// than determining the order, so both functions of a peer are measured.
static void CompareRows(std::size_t units) {
  const std::string operation = "string compare " + std::to_string(units) + " equal units";
  const std::u16string text = Text(units);

  Row(operation, "ZrCore", [left = Share(text), right = Share(text)] {
    int32_t order = 1;
    Consume(ZrCompareString(left.get(), right.get(), &order));
    Consume(order);
  });
  Row(operation, "std::u16string ==", [left = text, right = text] { Consume(left == right); });
#if BENCH_QT
  Row(operation, "QString ==", [left = ToQt(text), right = ToQt(text)] { Consume(left == right); });
  Row(operation, "QString::compare", [left = ToQt(text), right = ToQt(text)] { Consume(left.compare(right)); });
#endif
#if BENCH_ICU
  Row(operation, "icu::UnicodeString ==", [left = ToIcu(text), right = ToIcu(text)] { Consume(left == right); });
  Row(operation, "icu::UnicodeString compare",
      [left = ToIcu(text), right = ToIcu(text)] { Consume(left.compare(right)); });
  Row(operation, "u_strCompare", [left = text, right = text] {
    Consume(u_strCompare(left.data(), static_cast<int32_t>(left.size()), right.data(),
                         static_cast<int32_t>(right.size()), false));
  });
#endif
  Row(operation, "lower bound",
      [left = text, right = text] { Consume(std::memcmp(left.data(), right.data(), left.size() * sizeof(WCHAR))); });
}

void StringRows() {
  CreateRows();
  CopyRows();
  AppendRows();
  CompareRows(32);
  CompareRows(4096);
}
