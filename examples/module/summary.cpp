// Summarises a column. Counts come first. Then, if the type has an order, the values are converted to 64-bit integers
// or to doubles, whichever can represent the type, and the smallest, the largest and the mean are computed from those.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "body_table.h"
#include "module/column.h"

static bool IsDateOrTime(uint16_t type) { return type == ZR_VT_DATETIME || type == ZR_VT_TIME; }

static bool IsReal(uint16_t type) { return type == ZR_VT_R4 || type == ZR_VT_R8; }

// The types whose values all fit into a signed 64-bit integer.
static bool IsInteger(uint16_t type) { return (type >= ZR_VT_I1 && type <= ZR_VT_UI4) || IsDateOrTime(type); }

static ZRVARIANT VariantOf(std::int64_t number) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  variant.Type = ZR_VT_I8;
  variant.Value.i8 = number;
  return variant;
}

static ZRVARIANT VariantOf(double number) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  variant.Type = ZR_VT_R8;
  variant.Value.r8 = number;
  return variant;
}

// fmin and fmax ignore NaN, so NaN is neither the smallest nor the largest value.
static double Lesser(double a, double b) { return std::fmin(a, b); }
static double Greater(double a, double b) { return std::fmax(a, b); }
static std::int64_t Lesser(std::int64_t a, std::int64_t b) { return std::min(a, b); }
static std::int64_t Greater(std::int64_t a, std::int64_t b) { return std::max(a, b); }

// Returns value - base; `base` must not be greater than `value`. The difference of two signed integers may need all 64
// bits, so it is computed without a sign.
static double Difference(double base, double value) { return value - base; }
static double Difference(std::int64_t base, std::int64_t value) {
  return static_cast<double>(static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(base));
}

static void Put(ZRSAFEARRAY summary, uint32_t row, uint32_t cell, const ZRVARIANT& value, uint16_t type) {
  CVariantOwner converted;
  // A value that is out of range of the type leaves the cell empty.
  if (ZR_FAILED(ZrVariantChangeType(converted.Address(), &value, 0, type))) return;
  const uint32_t indices[] = {row, cell};
  (void)ZrSafeArrayPutElement(summary, indices, &converted.Get());
}

template <class Number>
static void PutLeastMostMean(const TableColumn& column, uint16_t wideType, ZRSAFEARRAY summary, uint32_t row) {
  const ArrayOwner wide = CopyArray(column.values.Array());
  (void)ZrSafeArrayChangeType(wide.get(), 0, wideType);
  const CElements<Number> numbers(wide.get());
  const CElements<int32_t> codes(column.codes.Array());

  bool isFirst = true;
  Number least = 0;
  Number most = 0;
  for (uint32_t i = 0; i < numbers.Count(); ++i) {
    if (codes[i] != ZR_R_OK) continue;
    least = isFirst ? numbers[i] : Lesser(least, numbers[i]);
    most = isFirst ? numbers[i] : Greater(most, numbers[i]);
    isFirst = false;
  }
  if (isFirst) return;

  double mean = 0;  // of the differences to `least`, which are smaller and so keep their precision
  double count = 0;
  for (uint32_t i = 0; i < numbers.Count(); ++i) {
    if (codes[i] == ZR_R_OK) mean += (Difference(least, numbers[i]) - mean) / ++count;
  }
  Put(summary, row, kSummaryLeast, VariantOf(least), column.type);
  Put(summary, row, kSummaryMost, VariantOf(most), column.type);
  if (IsDateOrTime(column.type)) {
    Put(summary, row, kSummaryMean, VariantOf(static_cast<std::int64_t>(least) + static_cast<std::int64_t>(mean)),
        column.type);
  } else {
    Put(summary, row, kSummaryMean, VariantOf(static_cast<double>(least) + mean), ZR_VT_R8);
  }
}

void Summarize(const TableColumn& column, ZRSAFEARRAY summary, uint32_t row) {
  std::int64_t good = 0;
  std::int64_t missing = 0;
  std::int64_t failed = 0;
  {
    const CElements<int32_t> codes(column.codes.Array());
    for (uint32_t i = 0; i < codes.Count(); ++i) {
      ++(codes[i] == ZR_R_OK ? good : codes[i] == ZR_R_EMPTY_VALUE ? missing : failed);
    }
  }
  ZRVARIANT title = ZR_VARIANT_INIT;  // borrows the title: don't clear it
  title.Type = ZR_VT_STR;
  title.Value.string = column.title.get();
  Put(summary, row, kSummaryTitle, title, ZR_VT_STR);
  Put(summary, row, kSummaryCount, VariantOf(good), ZR_VT_UI4);
  Put(summary, row, kSummaryMissing, VariantOf(missing), ZR_VT_UI4);
  Put(summary, row, kSummaryFailed, VariantOf(failed), ZR_VT_UI4);
  if (IsReal(column.type)) PutLeastMostMean<double>(column, ZR_VT_R8, summary, row);
  if (IsInteger(column.type)) PutLeastMostMean<std::int64_t>(column, ZR_VT_I8, summary, row);
}
