// What the host and the module "bodies" agree on: one class, one interface. Neither knows more of the other.

#ifndef EXAMPLES_BODY_TABLE_H
#define EXAMPLES_BODY_TABLE_H

#include <zrcore/zrcore.h>

/// kBodyTableClass names the class "Astronomy.BodyTable": {93E729DC-1C62-4556-A228-F17BF7EAF2B5}.
inline constexpr ZRUUID kBodyTableClass = {
    0x93E729DC, 0x1C62, 0x4556, {0xA2, 0x28, 0xF1, 0x7B, 0xF7, 0xEA, 0xF2, 0xB5}};

/// kBodyTableInterface names IBodyTable: {483DC16E-1322-45B9-ADF5-555BC0A80645}.
inline constexpr ZRUUID kBodyTableInterface = {
    0x483DC16E, 0x1322, 0x45B9, {0xAD, 0xF5, 0x55, 0x5B, 0xC0, 0xA8, 0x06, 0x45}};

/// IBodyTable takes columns, each of one type, then rows of values, which it converts to the types of their columns;
/// and gives back the values, and all of them as one text: the table.
///
/// An operation that fails leaves the table as it was. Strings are shared, not copied. References: any thread, any
/// time; the rest: any thread, one at a time for an object.
struct IBodyTable : IZrUnknown {
  /// AddColumn adds a column at the right, while there are no rows yet.
  ///
  /// @param title  lent for the call; the object takes a reference of its own.
  /// @param type   a tag of zrcore/variant.h, without flags.
  /// @return ZR_R_OK; ZR_R_INVALID_OBJECT_STATE if there are rows; ZR_R_NO_MEMORY.
  virtual ZRRESULT AddColumn(ZRSTR title, uint16_t type) = 0;

  /// AddRow adds a row. A cell that doesn't convert to the type of its column is no failure: Cell tells about it.
  ///
  /// @param cells  reads one for each column. An empty text stands for a missing value and is not converted.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `cells` is null or `count` is not the number of columns;
  ///         ZR_R_NO_MEMORY.
  virtual ZRRESULT AddRow(uint32_t count, const ZRVARIANT* cells) = 0;

  /// Cell gives the value of a cell: of its column's type; empty if it is missing; as it came if it didn't convert.
  ///
  /// @param row, column  from 0.
  /// @param value        holds a variant, which is released, and receives another, which the caller clears. Untouched
  ///                     after a failure.
  /// @param conversion   receives what the conversion answered: ZR_R_OK, or why the value is as it came.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if a pointer is null; ZR_R_NOT_EXISTING if there is no such cell.
  virtual ZRRESULT Cell(uint32_t row, uint32_t column, ZRVARIANT* value, ZRRESULT* conversion) = 0;

  /// Render gives the table as lines of text, each with a line feed at its end, aligned for a terminal.
  ///
  /// What is too wide for its column goes on in the next line. A cell that didn't convert is shown as it came, with a
  /// mark behind it.
  ///
  /// @param width  the columns of the terminal to fit into if at all possible; 0 means as wide as it gets.
  /// @param text   receives a string, which the caller destroys; null after a failure.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `text` is null; ZR_R_EMPTY_VALUE if there are no columns;
  ///         ZR_R_NO_MEMORY.
  virtual ZRRESULT Render(uint32_t width, ZRSTR* text) = 0;

 protected:
  ~IBodyTable() = default;
};

#endif
