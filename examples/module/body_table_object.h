// The object behind IBodyTable. It keeps the lines as it got them, shared with the caller, and where their fields lie.

#ifndef EXAMPLES_MODULE_BODY_TABLE_OBJECT_H
#define EXAMPLES_MODULE_BODY_TABLE_OBJECT_H

#include <string>
#include <vector>

#include "body_table.h"
#include "code_units.h"
#include "module/csv_line.h"
#include "module/table_layout.h"
#include "module/value.h"
#include "string_owner.h"

class CBodyTable final : public IBodyTable {
 public:
  CBodyTable() noexcept = default;
  CBodyTable(const CBodyTable&) = delete;
  CBodyTable& operator=(const CBodyTable&) = delete;

  uint32_t AddRef() override;
  uint32_t Release() override;
  ZRRESULT QueryInterface(const ZRUUID* interfaceId, void** object) override;

  ZRRESULT AddLine(ZRSTR line) override;
  ZRRESULT Explain(ZRSTR* text) override;
  ZRRESULT Render(uint32_t width, ZRSTR* text) override;
  void Clear() override { rows_.clear(); }
  uint32_t Handles() override;

 private:
  struct Row {
    StringOwner line;
    std::vector<CsvField> fields;  // places in `line`
    std::vector<Value> values;     // of the fields

    WideText Text(std::size_t column) const { return FieldText(Units(line.get()), fields[column]); }
  };

  ~CBodyTable() = default;  // by the last Release only

  WideText RenderTable(std::size_t width) const;
  WideText RenderValues(std::size_t width) const;

  uint32_t references_ = 1;
  std::vector<Row> rows_;         // the titles are row 0; all have as many fields
  std::vector<ValueKind> kinds_;  // of the columns
  std::string rejection_;         // why a line was rejected most recently, in ASCII
};

#endif
