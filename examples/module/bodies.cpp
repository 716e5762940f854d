// The module "bodies": the class Astronomy.BodyTable, a list of columns of which each has its own type.

#include <utility>
#include <vector>

#include "body_table.h"

struct TableColumn {
  zr::String title;
  zr::AnyArray values;
  zr::Array<int32_t> codes;  // ZR_R_OK, or the reason why there is no value
};

static bool IsDateOrTime(uint16_t type) { return type == ZR_VT_DATETIME || type == ZR_VT_TIME; }

// Returns whether one text converts: converting a whole array reports only that some element failed.
static ZRRESULT Check(const zr::String& text, uint16_t type) {
  if (text.IsEmpty()) return ZR_R_EMPTY_VALUE;
  zr::Variant value = text;
  if (const zr::Result<void> changed = value.ChangeType(type); !changed) return changed.Code();
  if (!IsDateOrTime(type)) return ZR_R_OK;
  // The library makes a day in March of 31 February. Here a text is valid only if the value, as text, begins with it.
  const zr::String back = value.To<zr::String>().Value();
  return back.View().substr(0, text.Length()) == text.View() ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS;
}

static TableColumn ReadColumn(ZRSTR title, uint16_t type, const zr::Array<zr::String>& texts) {
  // The library converts a whole array in one call, except an array without elements.
  const zr::Bound bound = {texts.Size(), 0};
  zr::AnyArray values = bound.elementCount == 0 ? zr::AnyArray(type, 1, &bound) : texts.Any();
  if (bound.elementCount != 0 && !values.ChangeType(type)) throw zr::Error(ZR_R_NOT_SUPPORTED);
  zr::Array<int32_t> codes(bound.elementCount);
  for (uint32_t row = 0; row < bound.elementCount; ++row) codes.Set(Check(texts.At(row).Value(), type), row).Value();
  return {zr::String::Share(title), std::move(values), std::move(codes)};
}

static void PutCell(zr::Array<zr::Variant>& summary, uint32_t row, uint32_t cell, zr::Variant value, uint16_t type) {
  if (value.ChangeType(type)) summary.Set(value, row, cell).Value();  // a value out of range leaves the cell empty
}

// The difference of two integers may need all 64 bits, so it is computed without a sign.
static double Difference(double least, double number) { return number - least; }
static double Difference(int64_t least, int64_t number) {
  return static_cast<double>(static_cast<uint64_t>(number) - static_cast<uint64_t>(least));
}

template <class Number>
static void PutOrder(const TableColumn& column, uint16_t type, zr::Array<zr::Variant>& summary, uint32_t row) {
  zr::AnyArray copy = column.values;
  if (!copy.ChangeType(zr::Array<Number>::kTag)) return;  // an array without elements
  const auto wide = zr::Array<Number>::From(std::move(copy)).Value();
  const auto numbers = wide.Lend().Value();
  const auto codes = column.codes.Lend().Value();
  std::vector<Number> good;
  for (uint32_t i = 0; i < numbers.size(); ++i) {
    if (codes[i] == ZR_R_OK) good.push_back(numbers[i]);
  }
  if (good.empty()) return;
  Number least = good[0];
  Number most = good[0];
  for (const Number number : good) {  // NaN is neither the smallest nor the largest value
    if (number < least || least != least) least = number;
    if (number > most || most != most) most = number;
  }
  double mean = 0;  // of the differences to `least`, which are smaller and so keep their precision
  double count = 0;
  for (const Number number : good) mean += (Difference(least, number) - mean) / ++count;
  PutCell(summary, row, kSummaryLeast, least, type);
  PutCell(summary, row, kSummaryMost, most, type);
  const auto ticks = static_cast<int64_t>(mean);
  if (IsDateOrTime(type)) PutCell(summary, row, kSummaryMean, static_cast<int64_t>(least) + ticks, type);
  if (!IsDateOrTime(type)) PutCell(summary, row, kSummaryMean, static_cast<double>(least) + mean, ZR_VT_R8);
}

class CBodyTable final : public zr::Object<IBodyTable> {
 public:
  ZRRESULT AddColumn(ZRSTR title, uint16_t type, const ZRVARIANT* texts) override {
    if (texts == nullptr) return ZR_R_INVALID_ARGUMENTS;
    return zr::Guard([&]() -> ZRRESULT {  // no exception leaves an operation
      const auto array = zr::Array<zr::String>::From(zr::Variant::CopyOf(*texts).Value()).Value();
      const bool fits = columns_.empty() || array.Size() == columns_[0].codes.Size();
      if (!fits || array.Bounds().count != 1) return ZR_R_INVALID_ARGUMENTS;
      columns_.push_back(ReadColumn(title, type, array));
      return ZR_R_OK;
    });
  }

  ZRRESULT Column(uint32_t column, ZRVARIANT* values, ZRVARIANT* codes) override {
    if (values == nullptr || codes == nullptr) return ZR_R_INVALID_ARGUMENTS;
    if (column >= columns_.size()) return ZR_R_NOT_EXISTING;
    return zr::Guard([&] {
      zr::Variant copy(columns_[column].values);
      *codes = zr::Variant(columns_[column].codes.Any()).Detach();
      *values = copy.Detach();
    });
  }

  ZRRESULT Summary(ZRVARIANT* summary) override {
    if (summary == nullptr) return ZR_R_INVALID_ARGUMENTS;
    return zr::Guard([&] {
      const auto columnCount = static_cast<uint32_t>(columns_.size());
      zr::Array<zr::Variant> rows({{columnCount, 0}, {kSummaryCells, 0}});
      for (uint32_t row = 0; row < columnCount; ++row) Summarise(columns_[row], rows, row);
      *summary = zr::Variant(std::move(rows).Any()).Detach();
    });
  }

 private:
  static void Summarise(const TableColumn& column, zr::Array<zr::Variant>& summary, uint32_t row) {
    uint32_t counts[] = {0, 0, 0};  // in the order of their cells
    for (int32_t code : column.codes.Lend().Value()) ++counts[code == ZR_R_OK ? 0 : code == ZR_R_EMPTY_VALUE ? 1 : 2];
    PutCell(summary, row, kSummaryTitle, column.title, ZR_VT_STR);
    for (uint32_t k = 0; k < 3; ++k) PutCell(summary, row, kSummaryCount + k, counts[k], ZR_VT_UI4);
    const uint16_t type = column.values.Tag();
    if (type == ZR_VT_R4 || type == ZR_VT_R8) PutOrder<double>(column, type, summary, row);
    if ((type >= ZR_VT_I1 && type <= ZR_VT_UI4) || IsDateOrTime(type)) PutOrder<int64_t>(column, type, summary, row);
  }

  std::vector<TableColumn> columns_;
};

ZR_MODULE(zr::Class<CBodyTable, kBodyTableClass>)
