// The class that implements IBodyTable: a list of columns, each with its own type.

#ifndef EXAMPLES_MODULE_BODY_TABLE_OBJECT_H
#define EXAMPLES_MODULE_BODY_TABLE_OBJECT_H

#include <vector>

#include "body_table.h"
#include "module/column.h"

class CBodyTable final : public IBodyTable {
 public:
  CBodyTable() noexcept = default;
  CBodyTable(const CBodyTable&) = delete;
  CBodyTable& operator=(const CBodyTable&) = delete;

  uint32_t AddRef() override;
  uint32_t Release() override;
  ZRRESULT QueryInterface(const ZRUUID* interfaceId, void** object) override;

  ZRRESULT AddColumn(ZRSTR title, uint16_t type, const ZRVARIANT* texts) override;
  ZRRESULT Column(uint32_t column, ZRVARIANT* values, ZRVARIANT* codes) override;
  ZRRESULT Summary(ZRVARIANT* summary) override;

 private:
  ~CBodyTable() = default;  // private: only the last Release may delete the object

  uint32_t references_ = 1;
  uint32_t rowCount_ = 0;  // the number of elements in each column; meaningless while there are no columns
  std::vector<struct TableColumn> columns_;
};

#endif
