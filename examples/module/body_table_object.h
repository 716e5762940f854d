// The object behind IBodyTable: columns of one type each.

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
  ~CBodyTable() = default;  // by the last Release only

  uint32_t references_ = 1;
  uint32_t rowCount_ = 0;  // of each column, once there is any
  std::vector<struct TableColumn> columns_;
};

#endif
