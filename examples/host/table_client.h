// The client: it knows the name of a class and the interface of its objects. It doesn't know which module creates them.

#ifndef EXAMPLES_HOST_TABLE_CLIENT_H
#define EXAMPLES_HOST_TABLE_CLIENT_H

#include <cstdint>
#include <string>
#include <vector>

#include "body_table.h"
#include "host/csv_file.h"
#include "owners.h"

/// ColumnValues contains the two arrays that IBodyTable::Column returns.
struct ColumnValues {
  CVariantOwner values;
  CVariantOwner codes;
};

/// CTableClient creates one object of a class and uses it. Call Find, then Open, then the other functions. AddTable,
/// Columns and Summary must not be called before Open: they would dereference a null pointer. A failure throws
/// std::runtime_error with a message for the user.
class CTableClient {
 public:
  CTableClient() = default;
  CTableClient(const CTableClient&) = delete;
  CTableClient& operator=(const CTableClient&) = delete;
  ~CTableClient() { (void)Close(); }

  /// Find looks up the class identifier of a name, and the name of that identifier.
  void Find(ZRSTR className);

  /// Open creates an object of the class that Find looked up. Call it only once: a second object would leak the first.
  void Open();

  /// AddTable passes the columns to the object one by one, each as an array of texts.
  void AddTable(const CsvTable& table);

  /// Columns returns the values of all columns.
  std::vector<ColumnValues> Columns();

  /// Summary returns an array of variants; see IBodyTable::Summary.
  CVariantOwner Summary();

  /// Close releases the object, if there is one, and returns the number of references that remain.
  uint32_t Close();

  const ZRUUID& ClassId() const { return classId_; }
  const std::string& ClassName() const { return className_; }  // the name that the library returned, in UTF-8

 private:
  ZRUUID classId_ = {};
  uint32_t columnCount_ = 0;
  std::string className_;
  IBodyTable* table_ = nullptr;
};

#endif
