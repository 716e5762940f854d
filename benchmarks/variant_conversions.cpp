// Converting variants, compared with the frameworks and with a visitor of std::variant. A row converts into an empty
// variant and clears it if the result owns memory. GValue can't convert text to numbers. GValue and Poco use 8-bit
// text.

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <system_error>
#include <type_traits>
#include <variant>

#include "variant_fixtures.h"

// ---- Lower bounds ---------------------------------------------------------------------------------------------------

// Parses a number. Returns false if any part of the text is not part of the number.
template <class Number>
static bool LowerBoundRead(const std::u16string& text, Number& number) {
  std::array<char, 48> narrow;
  if (text.size() > narrow.size()) return false;
  for (std::size_t at = 0; at < text.size(); ++at) narrow[at] = static_cast<char>(text[at]);
  const char* end = narrow.data() + text.size();
  const auto [stop, error] = std::from_chars(narrow.data(), end, number);
  return stop == end && error == std::errc();
}

static char* LowerBoundWrite(char* at, char* end, int32_t value) { return std::to_chars(at, end, value).ptr; }

static char* LowerBoundWrite(char* at, char* end, double value) {
  return std::to_chars(at, end, value, std::chars_format::fixed, 6).ptr;
}

// Writes six digits after the point, computed from a whole number of millionths. This is exact enough only for values
// like the one in the rows.
static char* LowerBoundWriteScaled(char* at, char* end, double value) {
  const auto millionths = static_cast<uint64_t>(value * 1e6 + 0.5);
  at = std::to_chars(at, end, millionths / 1'000'000).ptr;
  std::to_chars(at, end, 1'000'000 + millionths % 1'000'000);  // seven digits; the point replaces the first
  *at = '.';
  return at + 7;
}

static WCHAR* LowerBoundWiden(const char* text, const char* end) {
  const auto length = static_cast<std::size_t>(end - text);
  auto* units = static_cast<WCHAR*>(std::malloc(8 + (length + 1) * sizeof(WCHAR)));
  for (std::size_t at = 0; at < length; ++at) units[at + 4] = static_cast<WCHAR>(text[at]);
  units[length + 4] = 0;
  return units;
}

static bool FitsInt32(double value) { return value >= -2147483648.0 && value <= 2147483647.0; }

// ---- Conversion -----------------------------------------------------------------------------------------------------

static void ZrCoreNumberRow(const std::string& operation, const Holder& source, uint16_t target) {
  ZRVARIANT checked = ZR_VARIANT_INIT;
  Require(ZrVariantChangeType(&checked, source.get(), 0, target) == ZR_R_OK && checked.Type == target, "it converts");
  Row(operation, "ZrCore", [source, target] {
    ZRVARIANT converted = ZR_VARIANT_INIT;
    Consume(ZrVariantChangeType(&converted, source.get(), 0, target));
    Consume(converted);
  });
}

static void ZrCoreOwnedRow(const std::string& operation, const Holder& source, uint16_t target) {
  const Holder checked = HoldConverted(source, target);
  Row(operation, "ZrCore", [source, target] {
    ZRVARIANT converted = ZR_VARIANT_INIT;
    Consume(ZrVariantChangeType(&converted, source.get(), 0, target));
    ZrVariantClear(&converted);
  });
}

// The visitor learns the types of the source and of the result only when it runs.
template <class Target>
static void VisitorRow(const std::string& operation, const Visited& source) {
  struct CVisitor {
    bool operator()(std::monostate) const { return false; }
    bool operator()(double value) const {
      if constexpr (std::is_same_v<Target, int32_t>) {
        if (!FitsInt32(value)) return false;
      }
      result = static_cast<Target>(value);
      return true;
    }
    bool operator()(int64_t value) const { return (*this)(static_cast<double>(value)); }
    bool operator()(int32_t value) const { return (*this)(static_cast<double>(value)); }
    bool operator()(bool value) const { return (*this)(static_cast<double>(value)); }
    bool operator()(const SharedText& text) const {
      Target number;
      if (!LowerBoundRead(*text, number)) return false;
      result = number;
      return true;
    }
    Visited& result;
  };
  Row(operation, "std::variant visitor", [source] {
    Visited result;
    Consume(source);
    Consume(std::visit(CVisitor{result}, source));
    Consume(result);
  });
}

template <class Number>
static void VisitorTextRow(const std::string& operation, const Visited& source) {
  Row(operation, "std::variant visitor (to_chars)", [source] {
    Visited result;
    Consume(source);
    std::array<char, 48> text;
    const auto write = [&text, &result](auto value) {
      if constexpr (std::is_arithmetic_v<decltype(value)> && !std::is_same_v<decltype(value), bool>) {
        char* end = LowerBoundWrite(text.data(), text.data() + text.size(), static_cast<Number>(value));
        result = std::make_shared<const std::u16string>(text.data(), end);
      }
    };
    std::visit(write, source);
    Consume(result);
  });
}

#if BENCH_QT
static void QtConvertRow(const std::string& operation, const QVariant& source, QMetaType::Type target) {
  Row(operation, "QVariant::convert", [source, type = QMetaType(target)] {
    QVariant copy(source);
    Consume(copy.convert(type));
    Consume(copy);
  });
}
#endif

#if BENCH_GLIB
static void TransformRow(const std::string& operation, const GValueHolder& source, GType target) {
  Row(operation, "g_value_transform", [source, target] {
    GValue result = G_VALUE_INIT;
    g_value_init(&result, target);
    Consume(g_value_transform(source.get(), &result));
    Consume(result);
    g_value_unset(&result);
  });
}
#endif

#if BENCH_POCO
template <class Target>
static void PocoRow(const std::string& operation, const std::string& remark, const Poco::Dynamic::Var& source) {
  Row(operation, "Poco convert" + remark, [source] { Consume(source.convert<Target>()); });
}
#endif

static void NumberRows() {
  std::string operation = "variant int32 to double";
  ZrCoreNumberRow(operation, HoldInteger(kInteger), ZR_VT_R8);
#if BENCH_QT
  QtConvertRow(operation, QVariant(kInteger), QMetaType::Double);
  Row(operation, "QVariant::toDouble", [source = QVariant(kInteger)] { Consume(source.toDouble()); });
#endif
#if BENCH_GLIB
  TransformRow(operation, HoldGValue(G_TYPE_INT, g_value_set_int, kInteger), G_TYPE_DOUBLE);
#endif
#if BENCH_POCO
  PocoRow<double>(operation, "", Poco::Dynamic::Var(kInteger));
#endif
  VisitorRow<double>(operation, kInteger);
  Row(operation, "lower bound", [value = kInteger] {
    Consume(value);
    Consume(static_cast<double>(value));
  });

  operation = "variant double to int32";
  ZrCoreNumberRow(operation, HoldReal(kReal), ZR_VT_I4);
#if BENCH_QT
  QtConvertRow(operation, QVariant(kReal), QMetaType::Int);
#endif
#if BENCH_GLIB
  TransformRow(operation, HoldGValue(G_TYPE_DOUBLE, g_value_set_double, kReal), G_TYPE_INT);
#endif
#if BENCH_POCO
  PocoRow<Poco::Int32>(operation, "", Poco::Dynamic::Var(kReal));
#endif
  VisitorRow<int32_t>(operation, kReal);
  Row(operation, "lower bound", [value = kReal] {
    Consume(value);
    if (FitsInt32(value)) Consume(static_cast<int32_t>(value));
  });
}

template <class Number>
static void ReadLowerBoundRow(const std::string& operation, const char* text) {
  Row(operation, "lower bound", [text = Widened(text)] {
    Number number;
    Consume(LowerBoundRead(text, number));
    Consume(number);
  });
}

static void ReadRows() {
  std::string operation = "variant text to int32";
  ZrCoreNumberRow(operation, HoldText(kIntegerText), ZR_VT_I4);
#if BENCH_QT
  QtConvertRow(operation, QVariant(QString(kIntegerText)), QMetaType::Int);
  Row(operation, "QVariant::toInt", [source = QVariant(QString(kIntegerText))] { Consume(source.toInt()); });
#endif
#if BENCH_POCO
  PocoRow<Poco::Int32>(operation, "", Poco::Dynamic::Var(std::string(kIntegerText)));
#endif
  VisitorRow<int32_t>(operation, VisitedText(kIntegerText));
  ReadLowerBoundRow<int32_t>(operation, kIntegerText);

  operation = "variant text to double";
  ZrCoreNumberRow(operation, HoldText(kRealText), ZR_VT_R8);
#if BENCH_QT
  QtConvertRow(operation, QVariant(QString(kRealText)), QMetaType::Double);
  Row(operation, "QVariant::toDouble", [source = QVariant(QString(kRealText))] { Consume(source.toDouble()); });
#endif
#if BENCH_POCO
  PocoRow<double>(operation, "", Poco::Dynamic::Var(std::string(kRealText)));
#endif
  Row(operation, "strtod (char)", [text = std::string(kRealText)] { Consume(std::strtod(text.c_str(), nullptr)); });
  VisitorRow<double>(operation, VisitedText(kRealText));
  ReadLowerBoundRow<double>(operation, kRealText);

  // No framework has references, so the lower bound is the library's own parser without the variant.
  operation = "variant text to reference+clear";
  ZrCoreOwnedRow(operation, HoldText(kReferenceText), ZR_VT_REF);
  Row(operation, "lower bound by contract", [text = HoldText(kReferenceText)] {
    ZRREF* ref = nullptr;
    Consume(ZrStringToREF(text->Value.string, &ref));
    ZrDestroyREF(ref);
  });

  operation = "variant text to date-time";
  ZrCoreNumberRow(operation, HoldText(kDateTimeText), ZR_VT_DATETIME);
#if BENCH_QT
  QtConvertRow(operation, QVariant(QString(kDateTimeText)), QMetaType::QDateTime);
#endif
  Row(operation, "lower bound by contract", [text = HoldText(kDateTimeText)] {
    ZRDATETIMESTRUCT record;
    ZRDATETIME value;
    Consume(ZrDateTimeStringToDateTimeStruct(text->Value.string, &record));
    ZrDateTimeFromStruct(&record, &value);
    Consume(value);
  });
}

// The lower bound by contract writes into a memory block with the layout of a counted string.
template <class Number, class Write>
static void WriteLowerBoundRows(const std::string& operation, Number number, const char* expected, Write write) {
  std::array<char, 64> text;
  char* const end = text.data() + text.size();
  Require(std::string(text.data(), write(text.data(), end, number)) == expected,
          "the lower bound writes the same text");
  Row(operation, "lower bound", [number, write] {
    std::array<char, 64> buffer;
    Consume(number);
    Consume(write(buffer.data(), buffer.data() + buffer.size(), number));
    Consume(buffer);
  });
  Row(operation, "lower bound by contract", [number, write] {
    std::array<char, 64> buffer;
    Consume(number);
    WCHAR* block = LowerBoundWiden(buffer.data(), write(buffer.data(), buffer.data() + buffer.size(), number));
    Consume(block);
    std::free(block);
  });
}

static void WriteRows() {
  std::string operation = "variant int32 to text+clear";
  ZrCoreOwnedRow(operation, HoldInteger(kInteger), ZR_VT_STR);
#if BENCH_QT
  QtConvertRow(operation, QVariant(kInteger), QMetaType::QString);
  Row(operation, "QString::number", [value = kInteger] { Consume(QString::number(value)); });
#endif
#if BENCH_GLIB
  TransformRow(operation, HoldGValue(G_TYPE_INT, g_value_set_int, kInteger), G_TYPE_STRING);
#endif
#if BENCH_POCO
  PocoRow<std::string>(operation, "", Poco::Dynamic::Var(kInteger));
#endif
  VisitorTextRow<int32_t>(operation, kInteger);
  WriteLowerBoundRows(operation, kInteger, kIntegerText,
                      [](char* at, char* end, int32_t value) { return LowerBoundWrite(at, end, value); });

  operation = "variant double to text+clear";
  ZrCoreOwnedRow(operation, HoldReal(kReal), ZR_VT_STR);
#if BENCH_QT
  QtConvertRow(operation, QVariant(kReal), QMetaType::QString);
  Row(operation, "QString::number 'f' 6", [value = kReal] { Consume(QString::number(value, 'f', 6)); });
#endif
#if BENCH_GLIB
  TransformRow(operation, HoldGValue(G_TYPE_DOUBLE, g_value_set_double, kReal), G_TYPE_STRING);
#endif
#if BENCH_POCO
  PocoRow<std::string>(operation, " (shortest)", Poco::Dynamic::Var(kReal));
#endif
  VisitorTextRow<double>(operation, kReal);
  WriteLowerBoundRows(operation, kReal, kRealText, LowerBoundWriteScaled);
}

void VariantConversionRows() {
  NumberRows();
  ReadRows();
  WriteRows();
}
