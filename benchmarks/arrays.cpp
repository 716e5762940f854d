// Safe arrays, compared with std::vector and the containers of the frameworks. The time of a row is for all elements,
// except in the rows that get or put one element.

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "array_fixtures.h"

// ---- Creation, copy, resize -----------------------------------------------------------------------------------------

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
  Row(operation, "lower bound", [count] {
    void* block = std::calloc(count, sizeof(double));
    Consume(block);
    std::free(block);
  });
}

template <class Container>
static void CopyRow(const std::string& operation, const std::string& library, const Container& original) {
  Row(operation, library, [original = std::make_shared<const Container>(original)] {
    const Container copy = DeepCopy(*original);
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
  Row(operation, "lower bound", [count, original = std::make_shared<const std::vector<double>>(count)] {
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
  Row(operation, "lower bound by contract",
      [count, counts = std::make_shared<std::vector<std::atomic<uint64_t>>>(count * 5)] {
        const std::unique_ptr<std::atomic<uint64_t>*[]> copy(new std::atomic<uint64_t>*[count]);
        for (uint32_t index = 0; index < count; ++index) (copy[index] = &(*counts)[index * 5])->fetch_add(1);
        Consume(copy.get());
        for (uint32_t index = 0; index < count; ++index) copy[index]->fetch_sub(1);
      });
}

// Integers, reals and texts in turn.
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
  const std::string operation = Elements(count, "doubles, resize to 1.5x+destroy");
  const uint32_t more = count + count / 2;
  RowOnCopies(
      operation, "ZrCore", count, [count] { return FilledArray<double>(ZR_VT_R8, count, RealAt); },
      [more](CArray array) {
        const ZrSafeArrayBound bound = {more, 0};
        Consume(ZrSafeArrayRedim(array.Get(), 1, &bound));
      });
  const auto resize = [more](auto container) {
    container.resize(more);
    Consume(container);
  };
  RowOnCopies(
      operation, "std::vector", count, [count] { return Filled<std::vector<double>>(count, RealAt); }, resize);
#if BENCH_QT
  RowOnCopies(
      operation, "QList", count, [count] { return Filled<QList<double>>(count, RealAt); }, resize);
#endif
#if BENCH_GLIB
  RowOnCopies(
      operation, "GArray", count, [count] { return HoldGArray<double>(count); },
      [more](GArrayHolder array) { Consume(g_array_set_size(array.get(), more)); });
#endif
  RowOnCopies(
      operation, "lower bound", count, [count] { return std::vector<double>(count); },
      [count, more](std::vector<double> old) {
        auto* block = static_cast<double*>(std::malloc(more * sizeof(double)));
        std::memcpy(block, old.data(), count * sizeof(double));
        std::memset(block + count, 0, (more - count) * sizeof(double));
        Consume(block);
        std::free(block);
      });
}

// ---- Elements and blocks --------------------------------------------------------------------------------------------

// The offset of an element, computed from the bounds. Every get and put must do this, and set and clear the access
// flag.
template <std::size_t dimensions>
static uint32_t LowerBoundOffset(const std::array<ZrSafeArrayBound, dimensions>& bounds, const uint32_t* indices) {
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
          "an array returns the element that was stored");
  const uint32_t at = LowerBoundOffset(bounds, indices.data()),
                 count = bounds[0].elementCount * (dimensions == 1 ? 1 : 100);
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
  Row(operation, "lower bound by contract", [numbers, bounds, indices, flag] {
    if (flag->exchange(1) != 0) return;
    Consume(indices);
    Consume((*numbers)[LowerBoundOffset(bounds, indices.data())]);
    flag->exchange(0);
  });

  operation = what + "put";
  Row(operation, "ZrCore", [array, indices, written] {
    Consume(indices);
    Consume(ZrSafeArrayPutElement(array->Get(), indices.data(), &written));
  });
  Row(operation, "std::vector::at (inlined)", [numbers, at] {
    numbers->at(at) = written;
    Consume(numbers->data());
  });
#if BENCH_QT
  Row(operation, "QVariantList", [list, at] {
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
  Row(operation, "lower bound by contract", [numbers, bounds, indices, flag] {
    if (flag->exchange(1) != 0) return;
    Consume(indices);
    (*numbers)[LowerBoundOffset(bounds, indices.data())] = written;
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
  Row(operation, "lower bound",
      [count, numbers, others] { Consume(std::memcmp(numbers->data(), others->data(), count * sizeof(double))); });
}

void ArrayRows() {
  for (const uint32_t count : {kFew, kMany}) {
    CreateRows(count);
    CopyNumberRows(count);
    RedimRows(count);
    WalkRows(count);
    CompareRows(count);
  }
  for (const uint32_t count : {kFew, kManyTexts}) CopyTextRows(count);
  CopyVariantRows(kFew);
  ElementRows<1>({{{kFew, -5}}}, {10});
  ElementRows<3>({{{10, 0}, {10, 1}, {10, -1}}}, {3, 4, 5});
}
