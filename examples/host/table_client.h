// The client: it knows the name of a class and what its objects can do. Where they come from it never learns.

#ifndef EXAMPLES_HOST_TABLE_CLIENT_H
#define EXAMPLES_HOST_TABLE_CLIENT_H

#include <cstdint>
#include <string>
#include <vector>

#include "body_table.h"
#include "host/csv_file.h"
#include "owners.h"

/// ColumnValues is what IBodyTable tells about a column, in arrays.
struct ColumnValues {
  CVariantOwner values;
  CVariantOwner codes;
};

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

  /// AddTable hands over the columns, one by one, each as an array of texts.
  void AddTable(const CsvTable& table);

  /// Columns gives the values of all columns.
  std::vector<ColumnValues> Columns();

  /// Summary gives an array of variants, as IBodyTable describes it.
  CVariantOwner Summary();

  /// Close releases the object, if there is one, and answers how many references that left.
  uint32_t Close();

  const ZRUUID& ClassId() const { return classId_; }
  const std::string& ClassName() const { return className_; }  // as it came back, in UTF-8

 private:
  ZRUUID classId_ = {};
  uint32_t columnCount_ = 0;
  std::string className_;
  IBodyTable* table_ = nullptr;
};

#endif
