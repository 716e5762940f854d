// Converting all elements of a safe array to another type. The peers convert element by element into a new container
// whose memory is reserved beforehand.

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "array_fixtures.h"

#if BENCH_FMT
#include <fmt/format.h>
#endif

static void ZrCoreConvertRow(const std::string& operation, uint32_t count, CArray (*make)(uint32_t), uint16_t target) {
  Require(ZrSafeArrayChangeType(make(10).Get(), 0, target) == ZR_R_OK, "the elements convert");
  RowOnCopies(
      operation, "ZrCore", count, [make, count] { return make(count); },
      [target](CArray array) { Consume(ZrSafeArrayChangeType(array.Get(), 0, target)); });
}

// Registers a row that converts one container to another, element by element.
template <class From, class To, class At, class Convert>
static void ConvertRow(const std::string& operation, const std::string& library, uint32_t count, At at,
                       Convert convert) {
  RowOnCopies(
      operation, library, count, [count, at] { return Filled<From>(count, at); },
      [convert](From source) {
        To made;
        made.reserve(source.size());
        for (const auto& element : std::as_const(source)) made.push_back(convert(element));
        Consume(made);
      });
}

#if BENCH_QT
template <class At>
static void QtConvertRow(const std::string& operation, uint32_t count, At at, QMetaType::Type target) {
  ConvertRow<QVariantList, QVariantList>(operation, "QVariantList", count, at,
                                         [type = QMetaType(target)](const QVariant& element) {
                                           QVariant converted(element);
                                           converted.convert(type);
                                           return converted;
                                         });
}
#endif

#if BENCH_POCO
template <class Target, class At>
static void PocoConvertRow(const std::string& operation, const std::string& remark, uint32_t count, At at) {
  using Variables = std::vector<Poco::Dynamic::Var>;
  ConvertRow<Variables, std::vector<Target>>(
      operation, "Poco convert" + remark, count, at,
      [](const Poco::Dynamic::Var& element) { return element.convert<Target>(); });
}
#endif

static bool FitsInt32(double value) { return value >= -2147483648.0 && value <= 2147483647.0; }

// The lower bound: a loop that writes into memory that is not zeroed first. It also frees the source, as ZrCore frees
// the old elements.
template <class From, class To, class At, class Convert>
static void LoopRow(const std::string& operation, uint32_t count, At at, Convert convert) {
  RowOnCopies(
      operation, "lower bound", count, [count, at] { return Filled<std::vector<From>>(count, at); },
      [count, convert](std::vector<From> source) {
        auto* made = static_cast<To*>(std::malloc(count * sizeof(To)));
        const From* from = source.data();
        unsigned refused = 0;
        for (uint32_t index = 0; index < count; ++index) made[index] = convert(from[index], refused);
        Consume(refused);
        Consume(made);
        std::free(made);
      });
}

static void NumberRows(uint32_t count) {
  std::string operation = Elements(count, "int32 to double");
  ZrCoreConvertRow(
      operation, count, [](uint32_t some) { return FilledArray<int32_t>(ZR_VT_I4, some, IntegerAt); }, ZR_VT_R8);
  RowOnCopies(
      operation, "std::vector", count, [count] { return Filled<std::vector<int32_t>>(count, IntegerAt); },
      [](std::vector<int32_t> source) {
        const std::vector<double> made(source.begin(), source.end());
        Consume(made.data());
      });
#if BENCH_QT
  RowOnCopies(
      operation, "QList", count, [count] { return Filled<QList<int32_t>>(count, IntegerAt); },
      [](QList<int32_t> source) {
        const QList<double> made(source.cbegin(), source.cend());
        Consume(made.data());
      });
  QtConvertRow(operation, count, IntegerAt, QMetaType::Double);
#endif
#if BENCH_POCO
  PocoConvertRow<double>(operation, "", count, IntegerAt);
#endif
  LoopRow<int32_t, double>(operation, count, IntegerAt, [](int32_t value, unsigned&) { return double{1} * value; });

  operation = Elements(count, "doubles to int32");
  ZrCoreConvertRow(
      operation, count, [](uint32_t some) { return FilledArray<double>(ZR_VT_R8, some, RealAt); }, ZR_VT_I4);
  ConvertRow<std::vector<double>, std::vector<int32_t>>(operation, "std::vector", count, RealAt, [](double value) {
    return FitsInt32(value) ? static_cast<int32_t>(value) : 0;
  });
#if BENCH_QT
  QtConvertRow(operation, count, RealAt, QMetaType::Int);
#endif
#if BENCH_POCO
  PocoConvertRow<int32_t>(operation, "", count, RealAt);
#endif
  LoopRow<double, int32_t>(operation, count, RealAt, [](double value, unsigned& refused) {
    const bool fits = (value >= -2147483648.0) & (2147483647.0 >= value);
    refused |= fits ? 0u : 1u;
    return static_cast<int32_t>(fits ? value : 0.0);
  });
}

template <class Number>
static Number LowerBoundRead(const std::u16string& text) {
  std::array<char, 48> narrow;
  const std::size_t length = std::min(text.size(), narrow.size());
  for (std::size_t at = 0; at < length; ++at) narrow[at] = static_cast<char>(text[at]);
  Number number{};
  std::from_chars(narrow.data(), narrow.data() + length, number);
  return number;
}

static void ReadRows(uint32_t count) {
  std::string operation = Elements(count, "texts to int32");
  ZrCoreConvertRow(
      operation, count, [](uint32_t some) { return FilledArray<ZRSTR>(ZR_VT_STR, some, IntegerTextAt); }, ZR_VT_I4);
#if BENCH_QT
  ConvertRow<QList<QString>, QList<int32_t>>(operation, "QString::toInt", count, IntegerTextAt,
                                             [](const QString& text) { return text.toInt(); });
  QtConvertRow(operation, count, IntegerTextAt, QMetaType::Int);
#endif
#if BENCH_POCO
  PocoConvertRow<int32_t>(operation, " (char)", count, IntegerTextAt);
#endif
  ConvertRow<std::vector<std::string>, std::vector<int32_t>>(
      operation, "strtol (char)", count, IntegerTextAt,
      [](const std::string& text) { return static_cast<int32_t>(std::strtol(text.c_str(), nullptr, 10)); });
  ConvertRow<std::vector<std::u16string>, std::vector<int32_t>>(operation, "lower bound", count, IntegerTextAt,
                                                                LowerBoundRead<int32_t>);

  operation = Elements(count, "texts to double");
  ZrCoreConvertRow(
      operation, count, [](uint32_t some) { return FilledArray<ZRSTR>(ZR_VT_STR, some, RealTextAt); }, ZR_VT_R8);
#if BENCH_QT
  ConvertRow<QList<QString>, QList<double>>(operation, "QString::toDouble", count, RealTextAt,
                                            [](const QString& text) { return text.toDouble(); });
  QtConvertRow(operation, count, RealTextAt, QMetaType::Double);
#endif
#if BENCH_POCO
  PocoConvertRow<double>(operation, " (char)", count, RealTextAt);
#endif
  ConvertRow<std::vector<std::string>, std::vector<double>>(
      operation, "strtod (char)", count, RealTextAt,
      [](const std::string& text) { return std::strtod(text.c_str(), nullptr); });
  ConvertRow<std::vector<std::u16string>, std::vector<double>>(operation, "lower bound", count, RealTextAt,
                                                               LowerBoundRead<double>);
}

// A text in a memory block with the layout of a counted string.
struct CFree {
  void operator()(void* block) const { std::free(block); }
};
using CLowerBoundText = std::unique_ptr<WCHAR, CFree>;

template <class... Format>
static CLowerBoundText LowerBoundWrite(Format... format) {
  std::array<char, 64> narrow;
  const char* end = std::to_chars(narrow.data(), narrow.data() + narrow.size(), format...).ptr;
  const auto length = static_cast<std::size_t>(end - narrow.data());
  auto* units = static_cast<WCHAR*>(std::malloc(8 + (length + 1) * sizeof(WCHAR)));
  for (std::size_t at = 0; at < length; ++at) units[at + 4] = static_cast<WCHAR>(narrow[at]);
  units[length + 4] = 0;
  return CLowerBoundText(units);
}

static void WriteIntegerRows(const std::string& what, uint32_t count, int32_t (*at)(uint32_t),
                             CArray (*make)(uint32_t)) {
  const std::string operation = Elements(count, what);
  using Integers = std::vector<int32_t>;
  ZrCoreConvertRow(operation, count, make, ZR_VT_STR);
#if BENCH_QT
  ConvertRow<QList<int32_t>, QList<QString>>(operation, "QString::number", count, at,
                                             [](int32_t value) { return QString::number(value); });
  QtConvertRow(operation, count, at, QMetaType::QString);
#endif
#if BENCH_POCO
  PocoConvertRow<std::string>(operation, " (char)", count, at);
#endif
  ConvertRow<Integers, std::vector<std::string>>(operation, "std::to_string (char)", count, at,
                                                 [](int32_t value) { return std::to_string(value); });
  ConvertRow<Integers, std::vector<CLowerBoundText>>(operation, "lower bound by contract", count, at,
                                                     [](int32_t value) { return LowerBoundWrite(value); });
}

static void WriteRows(uint32_t count) {
  WriteIntegerRows("int32 to text", count, IntegerAt,
                   [](uint32_t some) { return FilledArray<int32_t>(ZR_VT_I4, some, IntegerAt); });
  static constexpr auto boolean = [](uint32_t index) { return static_cast<int32_t>(index % 2); };
  WriteIntegerRows("booleans to text", count, boolean,
                   [](uint32_t some) { return FilledArray<uint8_t>(ZR_VT_BOOL, some, boolean); });

  const std::string operation = Elements(count, "doubles to text");
  using Reals = std::vector<double>;
  ZrCoreConvertRow(
      operation, count, [](uint32_t some) { return FilledArray<double>(ZR_VT_R8, some, RealAt); }, ZR_VT_STR);
#if BENCH_QT
  ConvertRow<QList<double>, QList<QString>>(operation, "QString::number", count, RealAt,
                                            [](double value) { return QString::number(value, 'f', 6); });
  QtConvertRow(operation, count, RealAt, QMetaType::QString);
#endif
#if BENCH_POCO
  PocoConvertRow<std::string>(operation, " (char)", count, RealAt);
#endif
#if BENCH_FMT
  ConvertRow<Reals, std::vector<std::string>>(operation, "fmt (char)", count, RealAt,
                                              [](double value) { return fmt::format("{:f}", value); });
#endif
  ConvertRow<Reals, std::vector<CLowerBoundText>>(
      operation, "lower bound by contract", count, RealAt,
      [](double value) { return LowerBoundWrite(value, std::chars_format::fixed, 6); });
}

void ArrayConversionRows() {
  for (const uint32_t count : {kFew, kMany}) NumberRows(count);
  for (const uint32_t count : {kFew, kManyTexts}) {
    ReadRows(count);
    WriteRows(count);
  }
}
