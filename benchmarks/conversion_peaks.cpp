// The peak of the memory of a process that makes an array of ten million elements and converts it, without what the
// process had before. The source exists until the conversion ends. ZrCore converts in place: it releases the old
// elements itself.

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "array_fixtures.h"
#include "figure.h"

static constexpr uint32_t kCount = 10'000'000;

// VmRSS is the memory that the process has now, VmHWM the most it ever had. The peak that getrusage reports would be
// the one of the parent process if that was higher.
static double MemoryMiB(const std::string& key) {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != key + ":") {
  }
  double kib = 0;
  status >> kib;
  Require(kib > 0, "/proc/self/status has the memory of the process");
  return kib / 1024;
}

template <class Make, class Convert>
static void PeakRow(const std::string& operation, const std::string& library, Make make, Convert convert) {
  FigureRow(operation, library, "MiB", [make, convert] {
    const double before = MemoryMiB("VmRSS");
    auto source = make(kCount);
    const auto converted = convert(source);
    Consume(converted);
    return MemoryMiB("VmHWM") - before;
  });
}

template <class From, class To, class Convert>
static void ContainerRow(const std::string& operation, const std::string& library, Convert convert) {
  PeakRow(
      operation, library, [](uint32_t count) { return Filled<From>(count, IntegerAt); },
      [convert](const From& source) {
        To made;
        made.reserve(source.size());
        for (const auto& element : source) made.push_back(convert(element));
        return made;
      });
}

static void ZrCoreRow(const std::string& operation, uint16_t target) {
  PeakRow(
      operation, "ZrCore", [](uint32_t count) { return FilledArray<int32_t>(ZR_VT_I4, count, IntegerAt); },
      [target](const CArray& array) {
        Require(ZrSafeArrayChangeType(array.Get(), 0, target) == ZR_R_OK, "the elements convert");
        return array.Get();
      });
}

#if BENCH_QT
static void QtRow(const std::string& operation, QMetaType::Type target) {
  ContainerRow<QVariantList, QVariantList>(operation, "QVariantList",
                                           [type = QMetaType(target)](const QVariant& element) {
                                             QVariant converted(element);
                                             converted.convert(type);
                                             return converted;
                                           });
}
#endif

void ConversionPeakRows() {
  using Integers = std::vector<int32_t>;
  std::string operation = "peak of 10000000 int32 to double";
  const auto toDouble = [](int32_t value) { return static_cast<double>(value); };
  ZrCoreRow(operation, ZR_VT_R8);
  ContainerRow<Integers, std::vector<double>>(operation, "std::vector", toDouble);
#if BENCH_QT
  ContainerRow<QList<int32_t>, QList<double>>(operation, "QList", toDouble);
  QtRow(operation, QMetaType::Double);
#endif
#if BENCH_POCO
  using Variables = std::vector<Poco::Dynamic::Var>;
  ContainerRow<Variables, std::vector<double>>(
      operation, "Poco convert", [](const Poco::Dynamic::Var& element) { return element.convert<double>(); });
#endif

  operation = "peak of 10000000 int32 to text";
  ZrCoreRow(operation, ZR_VT_STR);
  ContainerRow<Integers, std::vector<std::u16string>>(operation, "std::u16string",
                                                      [](int32_t value) { return Widened(std::to_string(value)); });
  ContainerRow<Integers, std::vector<std::string>>(operation, "std::to_string (char)",
                                                   [](int32_t value) { return std::to_string(value); });
#if BENCH_QT
  ContainerRow<QList<int32_t>, QList<QString>>(operation, "QString::number",
                                               [](int32_t value) { return QString::number(value); });
  QtRow(operation, QMetaType::QString);
#endif
#if BENCH_POCO
  ContainerRow<Variables, std::vector<std::string>>(
      operation, "Poco convert (char)",
      [](const Poco::Dynamic::Var& element) { return element.convert<std::string>(); });
#endif
}
