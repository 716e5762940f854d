// What the host and the module "bodies" agree on: one class, one interface. Neither knows more of the other.

#ifndef EXAMPLES_BODY_TABLE_H
#define EXAMPLES_BODY_TABLE_H

#include <zrcore/zrcore.h>

/// kBodyTableClass names the class "Astronomy.BodyTable": {93E729DC-1C62-4556-A228-F17BF7EAF2B5}.
inline constexpr ZRUUID kBodyTableClass = {
    0x93E729DC, 0x1C62, 0x4556, {0xA2, 0x28, 0xF1, 0x7B, 0xF7, 0xEA, 0xF2, 0xB5}};

/// kBodyTableInterface names IBodyTable: {8E8CD166-1274-4280-9A6A-A8B98CECC85C}.
inline constexpr ZRUUID kBodyTableInterface = {
    0x8E8CD166, 0x1274, 0x4280, {0x9A, 0x6A, 0xA8, 0xB9, 0x8C, 0xEC, 0xC8, 0x5C}};

/// SummaryCell is what a row of the summary holds, in this order.
enum SummaryCell : uint32_t {
  kSummaryTitle,    // ZR_VT_STR
  kSummaryCount,    // ZR_VT_UI4: the values
  kSummaryMissing,  // ZR_VT_UI4: the cells without a text
  kSummaryFailed,   // ZR_VT_UI4: the cells whose text is no value of the column's type
  kSummaryLeast,    // of the column's type; empty where the type has no order or the column no value, as the next two
  kSummaryMost,     // of the column's type
  kSummaryMean,     // ZR_VT_R8, or a date or time
  kSummaryCells
};

/// IBodyTable takes columns of texts and makes them columns of values, each of one type. Whole columns cross the
/// boundary, as arrays in variants; what becomes of them on a screen is the caller's business.
///
/// An operation that fails leaves the table, and what its pointers point at, as it was. References: any thread, any
/// time; the rest: any thread, one at a time for an object.
struct IBodyTable : IZrUnknown {
  /// AddColumn adds a column at the right and converts its texts, all at once. One that doesn't convert is no failure:
  /// Column and Summary tell about it. A date or time converts only if it reads back as it was written.
  ///
  /// @param title  lent for the call; the object takes a reference of its own, as on the texts of a column of texts.
  /// @param type   of the column: a tag of zrcore/variant.h, without flags, that a text converts to.
  /// @param texts  reads an array of strings of one dimension, of the length of the other columns. An empty one stands
  ///               for a missing value.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `texts` is no such array; ZR_R_NOT_SUPPORTED if there are no arrays of
  ///         `type`; ZR_R_INVALID_OBJECT_STATE if the array's flag is taken; ZR_R_NO_MEMORY.
  virtual ZRRESULT AddColumn(ZRSTR title, uint16_t type, const ZRVARIANT* texts) = 0;

  /// Column gives the values of a column.
  ///
  /// @param column  from 0.
  /// @param values  holds a variant, which is released, and receives an array of the column's type, which the caller
  ///                clears. Where there is no value, an element is zero or null.
  /// @param codes   likewise; an array of ZR_VT_I4, as long: ZR_R_OK for a value, ZR_R_EMPTY_VALUE for a missing
  ///                one, and what the conversion answered for a text that is none.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if a pointer is null; ZR_R_NOT_EXISTING if there is no such column;
  ///         ZR_R_NO_MEMORY.
  virtual ZRRESULT Column(uint32_t column, ZRVARIANT* values, ZRVARIANT* codes) = 0;

  /// Summary gives an array of variants with two dimensions, the columns and the cells of SummaryCell, both from 0.
  ///
  /// @param summary  holds a variant, which is released, and receives the array, which the caller clears.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `summary` is null; ZR_R_NO_MEMORY.
  virtual ZRRESULT Summary(ZRVARIANT* summary) = 0;

 protected:
  ~IBodyTable() = default;
};

#endif
