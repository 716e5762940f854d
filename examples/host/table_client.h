// The client: it knows the name of a class and what its objects can do. Where they come from it never learns.

#ifndef EXAMPLES_HOST_TABLE_CLIENT_H
#define EXAMPLES_HOST_TABLE_CLIENT_H

#include <cstdint>
#include <string>
#include <vector>

#include "body_table.h"
#include "host/csv_file.h"
#include "string_owner.h"

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

  void AddLines(const std::vector<CsvFileLine>& lines, const std::string& fileName);

  /// Render gives the table of the lines that were added; the name is for the case that there were none.
  StringOwner Render(uint32_t width, const std::string& fileName);

  /// Close releases the object, if there is one, and answers how many references that left.
  uint32_t Close();

  /// HandlesHeld is how many handles of the library the module held while the table was rendered, and HandlesLeft those
  /// that it still held when the table was closed.
  uint32_t HandlesHeld() const { return handlesHeld_; }
  uint32_t HandlesLeft() const { return handlesLeft_; }

  const ZRUUID& ClassId() const { return classId_; }
  const std::string& ClassName() const { return className_; }  // as it came back, in UTF-8

 private:
  ZRUUID classId_ = {};
  std::string className_;
  IBodyTable* table_ = nullptr;
  uint32_t handlesHeld_ = 0;
  uint32_t handlesLeft_ = 0;
};

#endif
