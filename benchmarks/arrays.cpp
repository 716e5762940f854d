// Safe arrays beside the containers of the frameworks and std::vector. Whole arrays: a row's time is for all elements.
//
// What a row changes or converts is a copy of its own that was made outside the measured time; its release counts, as
// does that of the result. Peers convert element by element into a new container that has room for all.

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "row.h"
#include "zrcore/array.h"

#if BENCH_QT
#include <QList>
#include <QString>
#include <QVariant>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif
#if BENCH_POCO
#include <Poco/Dynamic/Var.h>
#endif
#if BENCH_FMT
#include <fmt/format.h>
#endif

static constexpr uint32_t kFew = 1000;
static constexpr uint32_t kManyTexts = 100'000;
static constexpr uint32_t kMany = 1'000'000;

static std::string Elements(uint32_t count, const std::string& what) {
  return "array of " + std::to_string(count) + " " + what;
}

// ---- Elements -------------------------------------------------------------------------------------------------------

static int32_t IntegerAt(uint32_t index) { return static_cast<int32_t>(index * 2'654'435'761u); }
static double RealAt(uint32_t index) { return IntegerAt(index) / 1000.0; }
static std::string IntegerTextAt(uint32_t index) { return std::to_string(IntegerAt(index)); }
static std::string RealTextAt(uint32_t index) { return std::to_string(RealAt(index)); }
static std::string SentenceAt(uint32_t index) { return "a sentence with the number " + std::to_string(10'000 + index); }

static std::u16string Widened(const std::string& text) { return std::u16string(text.begin(), text.end()); }

using SharedText = std::shared_ptr<const std::u16string>;

// An element as each library has it.
template <class Element, class Value>
static Element As(const Value& value) {
  if constexpr (std::is_constructible_v<Element, const Value&>) {
    return Element(value);
  } else if constexpr (std::is_same_v<Element, ZRSTR>) {
    return ZrCreateString(Widened(value).c_str());
  } else if constexpr (std::is_same_v<Element, std::u16string>) {
    return Widened(value);
  } else if constexpr (std::is_constructible_v<Element, SharedText>) {
    return std::make_shared<const std::u16string>(Widened(value));
  } else {
#if BENCH_QT
    return QString::fromStdString(value);
#endif
  }
}

template <class Container, class At>
static Container Filled(uint32_t count, At at) {
  Container container;
  container.reserve(count);
  using Element = typename Container::value_type;
  for (uint32_t index = 0; index < count; ++index) container.push_back(As<Element>(at(index)));
  return container;
}

// ---- Containers -----------------------------------------------------------------------------------------------------

// Copies with the array, as a container of the standard library does.
class CArray {
 public:
  CArray(uint16_t tag, std::vector<ZrSafeArrayBound> bounds)
      : array_(ZrSafeArrayCreate(tag, static_cast<uint32_t>(bounds.size()), bounds.data())) {}
  CArray(uint16_t tag, uint32_t count) : CArray(tag, {{count, 0}}) {}
  CArray(const CArray& other) {
    Require(ZrSafeArrayCopy(other.array_, &array_) == ZR_R_OK && array_ != nullptr, "an array is copied");
  }
  CArray(CArray&& other) noexcept : array_(std::exchange(other.array_, nullptr)) {}
  CArray& operator=(const CArray&) = delete;
  ~CArray() { ZrSafeArrayDestroy(array_); }

  ZRSAFEARRAY Get() const { return array_; }
  // Calls `write` with the elements.
  template <class Element, class Write>
  void Access(Write write) const {
    void* data = nullptr;
    Require(ZrSafeArrayAccessData(array_, &data) == ZR_R_OK && data != nullptr, "an array lends its elements");
    write(static_cast<Element*>(data));
    ZrSafeArrayUnaccessData(array_);
  }

 private:
  ZRSAFEARRAY array_ = nullptr;
};

// No other block is made on the way, which would leave a hole in the heap in front of the array.
template <class Element, class At>
static CArray FilledArray(uint16_t tag, uint32_t count, At at) {
  CArray array(tag, count);
  array.Access<Element>([=](Element* elements) {
    for (uint32_t index = 0; index < count; ++index) elements[index] = As<Element>(at(index));
  });
  return array;
}

// A copy that shares no block with the original.
template <class Container>
static Container Apart(const Container& container) {
  return container;
}

#if BENCH_QT
template <class Element>
static QList<Element> Apart(const QList<Element>& list) {
  QList<Element> copy(list);
  copy.detach();
  return copy;
}
#endif

#if BENCH_GLIB
struct CGArrayRelease {
  void operator()(GArray* array) const { g_array_unref(array); }
};
using GArrayHolder = std::unique_ptr<GArray, CGArrayRelease>;

template <class Element>
static GArrayHolder HoldGArray(uint32_t count) {
  GArrayHolder array(g_array_sized_new(FALSE, TRUE, sizeof(Element), count));
  g_array_set_size(array.get(), count);
  return array;
}

static GArrayHolder Apart(const GArrayHolder& array) { return GArrayHolder(g_array_copy(array.get())); }

using GVariantHolder = std::shared_ptr<GVariant>;

static GVariantHolder HoldGVariant(const GVariantType* type, const void* data, gsize count, gsize width) {
  return GVariantHolder(g_variant_ref_sink(g_variant_new_fixed_array(type, data, count, width)), g_variant_unref);
}
#endif

// Calls `use` with a copy of what `make` made; see above. Of the small ones some are made at once, so that stopping the
// clock doesn't show.
template <class Make, class Use>
static void ApartRow(const std::string& operation, const std::string& library, uint32_t count, Make make, Use use) {
  benchmark::RegisterBenchmark((operation + "/" + library).c_str(), [=](benchmark::State& state) {
    const auto original = make();
    const uint32_t atOnce = count <= kFew ? 16 : 1;
    std::vector<std::remove_const_t<decltype(original)>> copies;
    copies.reserve(atOnce);
    while (state.KeepRunningBatch(atOnce)) {
      state.PauseTiming();
      copies.clear();
      for (uint32_t copy = 0; copy < atOnce; ++copy) copies.push_back(Apart(original));
      state.ResumeTiming();
      for (auto& copy : copies) use(std::move(copy));
    }
  });
}

// ---- Life -----------------------------------------------------------------------------------------------------------

static void CreateRows(uint32_t count) {
  const std::string operation = Elements(count, "doubles, create+destroy");
  Row(operation, "ZrCore", [count] {
    const CArray array(ZR_VT_R8, count);
    Consume(array);
  });
  Row(operation, "std::vector", [count] {
    const std::vector<double> vector(count);
    Consume(vector.data());
  });
#if BENCH_QT
  Row(operation, "QList", [count] {
    const QList<double> list(count);
    Consume(list.data());
  });
  Row(operation, "QVariantList", [count] {
    const QVariantList list(count, QVariant(0.0));
    Consume(list.data());
  });
#endif
#if BENCH_GLIB
  Row(operation, "GArray", [count] {
    const GArrayHolder array = HoldGArray<double>(count);
    Consume(array->data);
  });
#endif
  Row(operation, "floor", [count] {
    void* block = std::calloc(count, sizeof(double));
    Consume(block);
    std::free(block);
  });
}

template <class Container>
static void CopyRow(const std::string& operation, const std::string& library, const Container& original) {
  Row(operation, library, [original = std::make_shared<const Container>(original)] {
    const Container copy = Apart(*original);
    Consume(copy);
  });
}

static void CopyNumberRows(uint32_t count) {
  const std::string operation = Elements(count, "doubles, copy+destroy");
  CopyRow(operation, "ZrCore", FilledArray<double>(ZR_VT_R8, count, RealAt));
  CopyRow(operation, "std::vector", Filled<std::vector<double>>(count, RealAt));
#if BENCH_QT
  CopyRow(operation, "QList", Filled<QList<double>>(count, RealAt));
  CopyRow(operation, "QVariantList", Filled<QVariantList>(count, RealAt));
#endif
#if BENCH_GLIB
  Row(operation, "GArray", [array = std::shared_ptr<GArray>(HoldGArray<double>(count).release(), g_array_unref)] {
    GArray* copy = g_array_copy(array.get());
    Consume(copy->data);
    g_array_unref(copy);
  });
#endif
  Row(operation, "floor", [count, original = std::make_shared<const std::vector<double>>(count)] {
    void* block = std::malloc(count * sizeof(double));
    std::memcpy(block, original->data(), count * sizeof(double));
    Consume(block);
    std::free(block);
  });
}

static void CopyTextRows(uint32_t count) {
  const std::string operation = Elements(count, "texts, copy+destroy");
  CopyRow(operation, "ZrCore", FilledArray<ZRSTR>(ZR_VT_STR, count, SentenceAt));
  CopyRow(operation, "std::vector of shared_ptr", Filled<std::vector<SharedText>>(count, SentenceAt));
  CopyRow(operation, "std::vector of u16string", Filled<std::vector<std::u16string>>(count, SentenceAt));
#if BENCH_QT
  CopyRow(operation, "QList of QString", Filled<QList<QString>>(count, SentenceAt));
#endif
  Row(operation, "floor by contract",
      [count, counts = std::make_shared<std::vector<std::atomic<uint64_t>>>(count * 5)] {
        const std::unique_ptr<std::atomic<uint64_t>*[]> copy(new std::atomic<uint64_t>*[count]);
        for (uint32_t index = 0; index < count; ++index) (copy[index] = &(*counts)[index * 5])->fetch_add(1);
        Consume(copy.get());
        for (uint32_t index = 0; index < count; ++index) copy[index]->fetch_sub(1);
      });
}

// Integers, reals and texts by turns.
template <class Container>
static Container Mixed(uint32_t count) {
  Container container;
  container.reserve(count);
  using Element = typename Container::value_type;
  for (uint32_t index = 0; index < count; ++index) {
    container.push_back(index % 3 == 0   ? As<Element>(IntegerAt(index))
                        : index % 3 == 1 ? As<Element>(RealAt(index))
                                         : As<Element>(SentenceAt(index)));
  }
  return container;
}

static CArray MixedArray(uint32_t count) {
  return FilledArray<ZRVARIANT>(ZR_VT_VARIANT, count, [](uint32_t index) {
    ZRVARIANT variant = ZR_VARIANT_INIT;
    if (index % 3 == 0) {
      variant.Type = ZR_VT_I4;
      variant.Value.i4 = IntegerAt(index);
    } else if (index % 3 == 1) {
      variant.Type = ZR_VT_R8;
      variant.Value.r8 = RealAt(index);
    } else {
      variant.Type = ZR_VT_STR;
      variant.Value.string = As<ZRSTR>(SentenceAt(index));
    }
    return variant;
  });
}

static void CopyVariantRows(uint32_t count) {
  const std::string operation = Elements(count, "variants, copy+destroy");
  CopyRow(operation, "ZrCore", MixedArray(count));
  CopyRow(operation, "std::vector of std::variant",
          Mixed<std::vector<std::variant<std::monostate, int32_t, double, SharedText>>>(count));
#if BENCH_QT
  CopyRow(operation, "QVariantList", Mixed<QVariantList>(count));
#endif
#if BENCH_POCO
  CopyRow(operation, "std::vector of Poco::Dynamic::Var", Mixed<std::vector<Poco::Dynamic::Var>>(count));
#endif
}

static void RedimRows(uint32_t count) {
  const std::string operation = Elements(count, "doubles, larger by half+destroy");
  const uint32_t more = count + count / 2;
  ApartRow(
      operation, "ZrCore", count, [count] { return FilledArray<double>(ZR_VT_R8, count, RealAt); },
      [more](CArray array) {
        const ZrSafeArrayBound bound = {more, 0};
        Consume(ZrSafeArrayRedim(array.Get(), 1, &bound));
      });
  const auto resize = [more](auto container) {
    container.resize(more);
    Consume(container);
  };
  ApartRow(
      operation, "std::vector", count, [count] { return Filled<std::vector<double>>(count, RealAt); }, resize);
#if BENCH_QT
  ApartRow(
      operation, "QList", count, [count] { return Filled<QList<double>>(count, RealAt); }, resize);
#endif
#if BENCH_GLIB
  ApartRow(
      operation, "GArray", count, [count] { return HoldGArray<double>(count); },
      [more](GArrayHolder array) { Consume(g_array_set_size(array.get(), more)); });
#endif
  ApartRow(
      operation, "floor", count, [count] { return std::vector<double>(count); },
      [count, more](std::vector<double> old) {
        auto* block = static_cast<double*>(std::malloc(more * sizeof(double)));
        std::memcpy(block, old.data(), count * sizeof(double));
        std::memset(block + count, 0, (more - count) * sizeof(double));
        Consume(block);
        std::free(block);
      });
}

// ---- Elements and blocks --------------------------------------------------------------------------------------------

// What one call must do: tests for null, the flag taken and left, the offset from the bounds.
template <std::size_t dimensions>
static uint32_t FloorOffset(const std::array<ZrSafeArrayBound, dimensions>& bounds, const uint32_t* indices) {
  uint32_t offset = 0;
  for (std::size_t at = 0; at < dimensions; ++at) {
    offset = offset * bounds[at].elementCount + (indices[at] - static_cast<uint32_t>(bounds[at].lowerBound));
  }
  return offset;
}

template <std::size_t dimensions>
static void ElementRows(const std::array<ZrSafeArrayBound, dimensions>& bounds,
                        const std::array<uint32_t, dimensions>& indices) {
  const std::string what = "array element, int32, " + std::to_string(dimensions) + "d, ";
  std::string operation = what + "get";
  const auto array = std::make_shared<const CArray>(ZR_VT_I4, std::vector(bounds.begin(), bounds.end()));
  const int32_t written = 77;
  int32_t read = 0;
  Require(ZrSafeArrayPutElement(array->Get(), indices.data(), &written) == ZR_R_OK &&
              ZrSafeArrayGetElement(array->Get(), indices.data(), &read) == ZR_R_OK && read == written,
          "an array gives back what it got");
  const uint32_t at = FloorOffset(bounds, indices.data()), count = bounds[0].elementCount * (dimensions == 1 ? 1 : 100);
  const auto numbers = std::make_shared<std::vector<int32_t>>(count);
  const auto flag = std::make_shared<std::atomic<int32_t>>(0);

  Row(operation, "ZrCore", [array, indices] {
    int32_t value;
    Consume(indices);
    Consume(ZrSafeArrayGetElement(array->Get(), indices.data(), &value));
    Consume(value);
  });
  Row(operation, "std::vector::at (inlined)", [numbers, at] { Consume(numbers->at(at)); });
#if BENCH_QT
  const auto list = std::make_shared<QVariantList>(count, QVariant(1));
  Row(operation, "QVariantList", [list, at] { Consume(list->at(at).toInt()); });
#endif
#if BENCH_GLIB
  Row(operation, "GVariant", [variant = HoldGVariant(G_VARIANT_TYPE_INT32, numbers->data(), count, 4), at] {
    gint32 value;
    g_variant_get_child(variant.get(), at, "i", &value);
    Consume(value);
  });
#endif
#if BENCH_POCO
  const auto variables = std::make_shared<std::vector<Poco::Dynamic::Var>>(count, 1);
  Row(operation, "std::vector of Poco::Dynamic::Var",
      [variables, at] { Consume((*variables)[at].convert<int32_t>()); });
#endif
  Row(operation, "floor by contract", [numbers, bounds, indices, flag] {
    if (flag->exchange(1) != 0) return;
    Consume(indices);
    Consume((*numbers)[FloorOffset(bounds, indices.data())]);
    flag->exchange(0);
  });

  operation = what + "put";
  Row(operation, "ZrCore", [array, indices, written] {
    Consume(indices);
    Consume(ZrSafeArrayPutElement(array->Get(), indices.data(), &written));
  });
  Row(operation, "std::vector::at (inlined)", [numbers, at, written] {
    numbers->at(at) = written;
    Consume(numbers->data());
  });
#if BENCH_QT
  Row(operation, "QVariantList", [list, at, written] {
    (*list)[at] = written;
    Consume(list->data());
  });
#endif
#if BENCH_POCO
  Row(operation, "std::vector of Poco::Dynamic::Var", [variables, at, written] {
    (*variables)[at] = written;
    Consume(variables->data());
  });
#endif
  Row(operation, "floor by contract", [numbers, bounds, indices, flag, written] {
    if (flag->exchange(1) != 0) return;
    Consume(indices);
    (*numbers)[FloorOffset(bounds, indices.data())] = written;
    flag->exchange(0);
  });
}

static int64_t Sum(const int32_t* numbers, uint32_t count) {
  int64_t sum = 0;
  for (uint32_t index = 0; index < count; ++index) sum += numbers[index];
  return sum;
}

static void WalkRows(uint32_t count) {
  const std::string operation = Elements(count, "int32, sum by direct access");
  const auto numbers = std::make_shared<const std::vector<int32_t>>(Filled<std::vector<int32_t>>(count, IntegerAt));
  Row(operation, "ZrCore",
      [count, array = std::make_shared<const CArray>(FilledArray<int32_t>(ZR_VT_I4, count, IntegerAt))] {
        void* data = nullptr;
        if (ZrSafeArrayAccessData(array->Get(), &data) == ZR_R_OK) Consume(Sum(static_cast<int32_t*>(data), count));
        ZrSafeArrayUnaccessData(array->Get());
      });
  Row(operation, "std::vector", [count, numbers] { Consume(Sum(numbers->data(), count)); });
#if BENCH_QT
  Row(operation, "QList",
      [count, list = Filled<QList<int32_t>>(count, IntegerAt)] { Consume(Sum(list.constData(), count)); });
#endif
#if BENCH_GLIB
  Row(operation, "GVariant", [variant = HoldGVariant(G_VARIANT_TYPE_INT32, numbers->data(), count, 4)] {
    gsize length = 0;
    const void* data = g_variant_get_fixed_array(variant.get(), &length, 4);
    Consume(Sum(static_cast<const int32_t*>(data), static_cast<uint32_t>(length)));
  });
#endif
}

static void CompareRows(uint32_t count) {
  const std::string operation = Elements(count, "doubles, compare equal");
  const auto numbers = std::make_shared<const std::vector<double>>(Filled<std::vector<double>>(count, RealAt));
  const auto others = std::make_shared<const std::vector<double>>(*numbers);
  Row(operation, "ZrCore",
      [left = std::make_shared<const CArray>(FilledArray<double>(ZR_VT_R8, count, RealAt)),
       right = std::make_shared<const CArray>(FilledArray<double>(ZR_VT_R8, count, RealAt))] {
        uint8_t equal = 0;
        Consume(ZrSafeArrayCompare(left->Get(), right->Get(), &equal));
        Consume(equal);
      });
  Row(operation, "std::vector", [numbers, others] { Consume(*numbers == *others); });
#if BENCH_QT
  Row(operation, "QList", [left = Filled<QList<double>>(count, RealAt), right = Filled<QList<double>>(count, RealAt)] {
    Consume(left == right);
  });
#endif
#if BENCH_GLIB
  Row(operation, "GVariant",
      [left = HoldGVariant(G_VARIANT_TYPE_DOUBLE, numbers->data(), count, 8),
       right = HoldGVariant(G_VARIANT_TYPE_DOUBLE, others->data(), count, 8)] {
        Consume(g_variant_equal(left.get(), right.get()));
      });
#endif
  Row(operation, "floor",
      [count, numbers, others] { Consume(std::memcmp(numbers->data(), others->data(), count * sizeof(double))); });
}

// ---- Conversion -----------------------------------------------------------------------------------------------------

static void ZrCoreConvertRow(const std::string& operation, uint32_t count, CArray (*make)(uint32_t), uint16_t target) {
  Require(ZrSafeArrayChangeType(make(10).Get(), 0, target) == ZR_R_OK, "the elements convert");
  ApartRow(
      operation, "ZrCore", count, [make, count] { return make(count); },
      [target](CArray array) { Consume(ZrSafeArrayChangeType(array.Get(), 0, target)); });
}

// From container to container, by a function of one element.
template <class From, class To, class At, class Convert>
static void ConvertRow(const std::string& operation, const std::string& library, uint32_t count, At at,
                       Convert convert) {
  ApartRow(
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

static bool FloorIsInt32(double value) { return value >= -2147483648.0 && value <= 2147483647.0; }

// A loop into memory that nobody zeroed before. The source is gone with it, as an array's old elements are.
template <class From, class To, class At, class Convert>
static void LoopRow(const std::string& operation, uint32_t count, At at, Convert convert) {
  ApartRow(
      operation, "floor", count, [count, at] { return Filled<std::vector<From>>(count, at); },
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
  ApartRow(
      operation, "std::vector", count, [count] { return Filled<std::vector<int32_t>>(count, IntegerAt); },
      [](std::vector<int32_t> source) {
        const std::vector<double> made(source.begin(), source.end());
        Consume(made.data());
      });
#if BENCH_QT
  ApartRow(
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
    return FloorIsInt32(value) ? static_cast<int32_t>(value) : 0;
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
static Number FloorRead(const std::u16string& text) {
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
  ConvertRow<std::vector<std::u16string>, std::vector<int32_t>>(operation, "floor", count, IntegerTextAt,
                                                                FloorRead<int32_t>);

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
  ConvertRow<std::vector<std::u16string>, std::vector<double>>(operation, "floor", count, RealTextAt,
                                                               FloorRead<double>);
}

// A text in a block as a string has it.
struct CFree {
  void operator()(void* block) const { std::free(block); }
};
using CFloorText = std::unique_ptr<WCHAR, CFree>;

template <class... Format>
static CFloorText FloorWrite(Format... format) {
  std::array<char, 64> narrow;
  const char* end = std::to_chars(narrow.data(), narrow.data() + narrow.size(), format...).ptr;
  const auto length = static_cast<std::size_t>(end - narrow.data());
  auto* units = static_cast<WCHAR*>(std::malloc(8 + (length + 1) * sizeof(WCHAR)));
  for (std::size_t at = 0; at < length; ++at) units[at + 4] = static_cast<WCHAR>(narrow[at]);
  units[length + 4] = 0;
  return CFloorText(units);
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
  ConvertRow<Integers, std::vector<CFloorText>>(operation, "floor by contract", count, at,
                                                [](int32_t value) { return FloorWrite(value); });
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
  ConvertRow<Reals, std::vector<CFloorText>>(operation, "floor by contract", count, RealAt, [](double value) {
    return FloorWrite(value, std::chars_format::fixed, 6);
  });
}

void ArrayRows() {
  for (const uint32_t count : {kFew, kMany}) {
    CreateRows(count);
    CopyNumberRows(count);
    RedimRows(count);
    WalkRows(count);
    CompareRows(count);
    NumberRows(count);
  }
  for (const uint32_t count : {kFew, kManyTexts}) {
    CopyTextRows(count);
    ReadRows(count);
    WriteRows(count);
  }
  CopyVariantRows(kFew);
  ElementRows<1>({{{kFew, -5}}}, {10});
  ElementRows<3>({{{10, 0}, {10, 1}, {10, -1}}}, {3, 4, 5});
}
