// Data for the rows on arrays: the same elements in the containers of each library, and copies to work on.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "row.h"
#include "texts.h"
#include "zrcore/array.h"

// The peers' headers, for all files that include this one.
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

inline constexpr uint32_t kFew = 1000;
inline constexpr uint32_t kManyTexts = 100'000;
inline constexpr uint32_t kMany = 1'000'000;

inline std::string Elements(uint32_t count, const std::string& what) {
  return "array of " + std::to_string(count) + " " + what;
}

// ---- Elements -------------------------------------------------------------------------------------------------------

inline int32_t IntegerAt(uint32_t index) { return static_cast<int32_t>(index * 2'654'435'761u); }
inline double RealAt(uint32_t index) { return IntegerAt(index) / 1000.0; }
inline std::string IntegerTextAt(uint32_t index) { return std::to_string(IntegerAt(index)); }
inline std::string RealTextAt(uint32_t index) { return std::to_string(RealAt(index)); }
inline std::string SentenceAt(uint32_t index) { return "a sentence with the number " + std::to_string(10'000 + index); }

// Converts an element to the type that a library uses for it.
template <class Element, class Value>
Element As(const Value& value) {
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
Container Filled(uint32_t count, At at) {
  Container container;
  container.reserve(count);
  using Element = typename Container::value_type;
  for (uint32_t index = 0; index < count; ++index) container.push_back(As<Element>(at(index)));
  return container;
}

// ---- Containers -----------------------------------------------------------------------------------------------------

// Owns a safe array. Copying it copies the array and its elements, as for a container of the standard library.
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
  // Calls `write` with a pointer to the first element.
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

// Allocates only the array and its elements. A temporary block would leave a gap in the heap before the array.
template <class Element, class At>
CArray FilledArray(uint16_t tag, uint32_t count, At at) {
  CArray array(tag, count);
  array.Access<Element>([=](Element* elements) {
    for (uint32_t index = 0; index < count; ++index) elements[index] = As<Element>(at(index));
  });
  return array;
}

// Returns a copy that shares no memory with the original.
template <class Container>
Container DeepCopy(const Container& container) {
  return container;
}

#if BENCH_QT
template <class Element>
QList<Element> DeepCopy(const QList<Element>& list) {
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
GArrayHolder HoldGArray(uint32_t count) {
  GArrayHolder array(g_array_sized_new(FALSE, TRUE, sizeof(Element), count));
  g_array_set_size(array.get(), count);
  return array;
}

inline GArrayHolder DeepCopy(const GArrayHolder& array) { return GArrayHolder(g_array_copy(array.get())); }

using GVariantHolder = std::shared_ptr<GVariant>;

inline GVariantHolder HoldGVariant(const GVariantType* type, const void* data, gsize count, gsize width) {
  return GVariantHolder(g_variant_ref_sink(g_variant_new_fixed_array(type, data, count, width)), g_variant_unref);
}
#endif

// Registers a row that calls `use` with a copy of the result of `make`. Making the copy is not measured; `use` releases
// the copy and its result within the measured time. Small copies are made 16 at a time, because stopping the clock for
// each of them would distort the result.
template <class Make, class Use>
void RowOnCopies(const std::string& operation, const std::string& library, uint32_t count, Make make, Use use) {
  RegisterRow(operation, library, [=](benchmark::State& state) {
    const auto original = make();
    const uint32_t atOnce = count <= kFew ? 16 : 1;
    std::vector<std::remove_const_t<decltype(original)>> copies;
    copies.reserve(atOnce);
    while (state.KeepRunningBatch(atOnce)) {
      state.PauseTiming();
      copies.clear();
      for (uint32_t copy = 0; copy < atOnce; ++copy) copies.push_back(DeepCopy(original));
      state.ResumeTiming();
      for (auto& copy : copies) use(std::move(copy));
    }
  });
}
