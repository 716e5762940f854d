// The object behind IBodyTable: columns of one type each, and rows of cells.

#ifndef EXAMPLES_MODULE_BODY_TABLE_OBJECT_H
#define EXAMPLES_MODULE_BODY_TABLE_OBJECT_H

#include <string>
#include <vector>

#include "body_table.h"
#include "module/cell.h"
#include "owners.h"

class CBodyTable final : public IBodyTable {
 public:
  CBodyTable() noexcept = default;
  CBodyTable(const CBodyTable&) = delete;
  CBodyTable& operator=(const CBodyTable&) = delete;

  uint32_t AddRef() override;
  uint32_t Release() override;
  ZRRESULT QueryInterface(const ZRUUID* interfaceId, void** object) override;

  ZRRESULT AddColumn(ZRSTR title, uint16_t type) override;
  ZRRESULT AddRow(uint32_t count, const ZRVARIANT* cells) override;
  ZRRESULT Cell(uint32_t row, uint32_t column, ZRVARIANT* value, ZRRESULT* conversion) override;
  ZRRESULT Render(uint32_t width, ZRSTR* text) override;

 private:
  struct Column {
    StringOwner title;
    uint16_t type;
  };
  using Row = std::vector<TableCell>;  // as many as there are columns

  ~CBodyTable() = default;  // by the last Release only

  std::u16string RenderTable(std::size_t width) const;

  uint32_t references_ = 1;
  std::vector<Column> columns_;
  std::vector<Row> rows_;
};

#endif
