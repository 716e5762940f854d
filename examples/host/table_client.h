// The client: it knows the name of a class and what its objects can do. Where they come from it never learns.

#ifndef EXAMPLES_HOST_TABLE_CLIENT_H
#define EXAMPLES_HOST_TABLE_CLIENT_H

#include <cstdint>
#include <string>
#include <vector>

#include "body_table.h"
#include "host/csv_file.h"
#include "owners.h"

/// Every operation that fails throws std::runtime_error with one sentence for the user. None may be called before Open.
class CTableClient {
 public:
  CTableClient() = default;
  CTableClient(const CTableClient&) = delete;
  CTableClient& operator=(const CTableClient&) = delete;
  ~CTableClient() { (void)Close(); }

  /// Find turns the name into the class identifier, and that back into a name.
  void Find(ZRSTR className);

  /// Open makes the object of the class that was found.
  void Open();

  /// AddTable hands over the columns, then the rows, as variants.
  void AddTable(const CsvTable& table);

  /// Render gives the table of what was added.
  StringOwner Render(uint32_t width);

  /// Unconverted gives a line for each cell that has no value of its column's type: where it is, and why.
  std::vector<std::string> Unconverted(const CsvTable& table);

  /// Close releases the object, if there is one, and answers how many references that left.
  uint32_t Close();

  const ZRUUID& ClassId() const { return classId_; }
  const std::string& ClassName() const { return className_; }  // as it came back, in UTF-8

 private:
  ZRUUID classId_ = {};
  std::string className_;
  IBodyTable* table_ = nullptr;
};

#endif
