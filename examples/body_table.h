// The contract between the host and the module "bodies": one class and one interface. Host and module share nothing
// else, so either can be replaced without the other.

#ifndef EXAMPLES_BODY_TABLE_H
#define EXAMPLES_BODY_TABLE_H

#include <zrcore/zrcore.h>

/// kBodyTableClass names the class "Astronomy.BodyTable": {93E729DC-1C62-4556-A228-F17BF7EAF2B5}.
inline constexpr ZRUUID kBodyTableClass = {
    0x93E729DC, 0x1C62, 0x4556, {0xA2, 0x28, 0xF1, 0x7B, 0xF7, 0xEA, 0xF2, 0xB5}};

/// kBodyTableInterface names IBodyTable: {8E8CD166-1274-4280-9A6A-A8B98CECC85C}.
inline constexpr ZRUUID kBodyTableInterface = {
    0x8E8CD166, 0x1274, 0x4280, {0x9A, 0x6A, 0xA8, 0xB9, 0x8C, 0xEC, 0xC8, 0x5C}};

/// SummaryCell numbers the cells in a row of the summary. The last three cells are empty variants if the type has no
/// order or the column has no values.
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

/// IBodyTable converts columns of texts to columns of values, each column of one type. Whole columns cross the
/// boundary, as arrays in variants.
///
/// An operation that fails changes neither the table nor its out-values.
///
/// Threads: AddRef, Release and QueryInterface may be called on any thread, at any time. The caller must serialise all
/// other operations on one object; calling them at the same time is a data race.
struct IBodyTable : IZrUnknown {
  /// AddColumn adds a column after the last one and converts all its texts.
  ///
  /// A text that doesn't convert is not a failure of AddColumn: Column and Summary report it. A text converts to a date
  /// or time only if the date or time, written as text again, begins with that text.
  ///
  /// @param title  reads a string; the object keeps a reference of its own. If `type` is ZR_VT_STR, it also keeps
  ///               references to the texts.
  /// @param type   the type of the column: a tag from zrcore/variant.h, without flags, that a text converts to.
  /// @param texts  reads an array of strings with one dimension and as many elements as the other columns have. An
  ///               empty string is a missing value.
  /// @return
  ///   ZR_R_OK                    the column was added.
  ///   ZR_R_INVALID_ARGUMENTS     `texts` is null or not such an array.
  ///   ZR_R_NOT_SUPPORTED         arrays can't have elements of `type`.
  ///   ZR_R_INVALID_OBJECT_STATE  another call holds the array's access flag.
  ///   ZR_R_NO_MEMORY             out of memory.
  virtual ZRRESULT AddColumn(ZRSTR title, uint16_t type, const ZRVARIANT* texts) = 0;

  /// Column returns the values of a column.
  ///
  /// Both variants must be initialised before the call. Their old values are released. The caller must release the new
  /// ones with ZrVariantClear.
  ///
  /// @param column  counts from 0.
  /// @param values  gives an array of the column's type. An element without a value is zero or null.
  /// @param codes   gives an array of ZR_VT_I4 with as many elements: ZR_R_OK for a value, ZR_R_EMPTY_VALUE for a
  ///                missing value, otherwise the result of the failed conversion. ZR_R_INVALID_ARGUMENTS also stands
  ///                for a date or time that AddColumn rejected.
  /// @return
  ///   ZR_R_OK                 both arrays were returned.
  ///   ZR_R_INVALID_ARGUMENTS  a pointer is null.
  ///   ZR_R_NOT_EXISTING       there is no such column.
  ///   ZR_R_NO_MEMORY          out of memory.
  virtual ZRRESULT Column(uint32_t column, ZRVARIANT* values, ZRVARIANT* codes) = 0;

  /// Summary returns a table that summarises the columns.
  ///
  /// @param summary  gives an array of variants with two dimensions: the columns, then the cells of SummaryCell, both
  ///                 counted from 0. The variant must be initialised before the call; its old value is released. The
  ///                 caller must release the array with ZrVariantClear.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `summary` is null; ZR_R_NO_MEMORY when out of memory.
  virtual ZRRESULT Summary(ZRVARIANT* summary) = 0;

 protected:
  ~IBodyTable() = default;
};

#endif
