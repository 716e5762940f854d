// The contract between the host and the module "bodies": one class and one interface. Host and module share nothing
// else, so either can be replaced without the other.

#ifndef EXAMPLES_BODY_TABLE_H
#define EXAMPLES_BODY_TABLE_H

#include <zr/zr.hpp>

/// kBodyTableClass identifies the class "Astronomy.BodyTable".
inline constexpr zr::Uuid kBodyTableClass("93E729DC-1C62-4556-A228-F17BF7EAF2B5");

/// SummaryCell numbers the cells in a row of the summary. The last three are empty if the type has no order or the
/// column has no values.
enum SummaryCell : uint32_t {
  kSummaryTitle,    // ZR_VT_STR
  kSummaryCount,    // ZR_VT_UI4: the number of values
  kSummaryMissing,  // ZR_VT_UI4: the number of cells without a text
  kSummaryFailed,   // ZR_VT_UI4: the number of cells whose text doesn't convert to the column's type
  kSummaryLeast,    // the smallest value, in the column's type
  kSummaryMost,     // the largest value, in the column's type
  kSummaryMean,     // ZR_VT_R8; for a column of dates or times, its type
  kSummaryCells
};

/// IBodyTable converts columns of texts to columns of values, each of one type. Whole columns cross the boundary, as
/// arrays in variants.
///
/// An operation that fails changes neither the table nor its out-values. Out-values are overwritten, so pass empty
/// variants, as zr::Variant::Put does. Calling operations of one object at the same time is a data race.
struct IBodyTable : IZrUnknown {
  static constexpr zr::Uuid kId{"8E8CD166-1274-4280-9A6A-A8B98CECC85C"};

  /// AddColumn adds a column after the last one and converts all its texts. A text that doesn't convert is not a
  /// failure of AddColumn: Column and Summary report it.
  ///
  /// @param title  reads a string.
  /// @param type   the type of the column: a tag from zrcore/variant.h, without flags, that a text converts to.
  /// @param texts  reads an array of strings with one dimension and as many elements as the other columns have. An
  ///               empty string is a missing value.
  /// @return ZR_R_INVALID_ARGUMENTS for a null pointer or another shape; ZR_R_NOT_SUPPORTED if `texts` is not an array
  ///         of strings or arrays can't have elements of `type`.
  virtual ZRRESULT AddColumn(ZRSTR title, uint16_t type, const ZRVARIANT* texts) = 0;

  /// Column returns the values of a column. Columns count from 0.
  ///
  /// @param values  gives an array of the column's type. An element without a value is zero or null.
  /// @param codes   gives an array of ZR_VT_I4 with as many elements: ZR_R_OK for a value, ZR_R_EMPTY_VALUE for a
  ///                missing value, otherwise the result of the failed conversion.
  /// @return ZR_R_INVALID_ARGUMENTS for a null pointer; ZR_R_NOT_EXISTING if there is no such column.
  virtual ZRRESULT Column(uint32_t column, ZRVARIANT* values, ZRVARIANT* codes) = 0;

  /// Summary gives an array of variants with two dimensions: the columns, then the cells of SummaryCell.
  /// ZR_R_INVALID_ARGUMENTS for a null pointer.
  virtual ZRRESULT Summary(ZRVARIANT* summary) = 0;

 protected:
  ~IBodyTable() = default;
};

#endif
