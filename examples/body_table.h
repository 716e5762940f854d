// What the host and the module "bodies" agree on: one class, one interface. Neither knows more of the other.

#ifndef EXAMPLES_BODY_TABLE_H
#define EXAMPLES_BODY_TABLE_H

#include <zrcore/zrcore.h>

/// kBodyTableClass names the class "Astronomy.BodyTable": {93E729DC-1C62-4556-A228-F17BF7EAF2B5}.
inline constexpr ZRUUID kBodyTableClass = {
    0x93E729DC, 0x1C62, 0x4556, {0xA2, 0x28, 0xF1, 0x7B, 0xF7, 0xEA, 0xF2, 0xB5}};

/// kBodyTableInterface names IBodyTable: {67CEFA47-E023-4371-9AC3-D4097D5FE5E5}.
inline constexpr ZRUUID kBodyTableInterface = {
    0x67CEFA47, 0xE023, 0x4371, {0x9A, 0xC3, 0xD4, 0x09, 0x7D, 0x5F, 0xE5, 0xE5}};

/// IBodyTable takes the lines of a CSV file, one by one, and gives back one text: the table. Under the titles "Body",
/// "Place", "Discovered", "Period d" and "Note" cells become values; those that don't read as such, and all others,
/// stay text.
///
/// Fields are separated by commas. A field in quotation marks may hold commas, line breaks and, doubled, quotation
/// marks. An operation that fails leaves the table as it was. References: any thread, any time; the rest: any thread,
/// one at a time for an object.
struct IBodyTable : IZrUnknown {
  /// AddLine adds a line: the first one holds the titles of the columns, each other one a row.
  ///
  /// @param line  lent for the call. If it is accepted, the object takes a reference of its own on the string and gives
  ///              it up when the object goes; the units are not copied, but for a note's.
  /// @return ZR_R_OK; ZR_R_SAME_VALUE, a success, for a line without a single character, which adds nothing;
  ///         ZR_R_REQUEST_REJECTED if the line has another number of fields than the titles or its quotation marks
  ///         don't match, and Explain tells more; ZR_R_NO_MEMORY.
  virtual ZRRESULT AddLine(ZRSTR line) = 0;

  /// Explain tells why AddLine rejected a line most recently, such as "5 fields where the titles are 7".
  ///
  /// @param text  receives a string, which the caller destroys; null after a failure.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `text` is null; ZR_R_EMPTY_VALUE if no line was rejected;
  ///         ZR_R_NO_MEMORY.
  virtual ZRRESULT Explain(ZRSTR* text) = 0;

  /// Render gives the table as lines of text, each with a line feed at its end, aligned for a terminal.
  ///
  /// What is too wide for its column goes on in the next line. A second table shows the values of two rows in full, if
  /// any row has a value under each of the five titles.
  ///
  /// @param width  the columns of the terminal to fit into if at all possible; 0 means as wide as it gets.
  /// @param text   receives a string, which the caller destroys; null after a failure.
  /// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `text` is null; ZR_R_EMPTY_VALUE if there are no titles;
  ///         ZR_R_NO_MEMORY.
  virtual ZRRESULT Render(uint32_t width, ZRSTR* text) = 0;

  /// Clear forgets all lines, and gives back the strings and the values that were made of them.
  virtual void Clear() = 0;

  /// Handles tells how many UUIDs, REFs and blobs the module's values hold at this moment, those of all its objects.
  virtual uint32_t Handles() = 0;

 protected:
  ~IBodyTable() = default;
};

#endif
