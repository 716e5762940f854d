// A configuration as a list of texts. Each query creates a value object with one reference for the caller.

#include "host/settings.h"

#include "code_units.h"

/// CTextValue is one value. It owns a reference to its text.
class CTextValue final : public CCounted<IZrConfigurationValue> {
 public:
  explicit CTextValue(ZRSTR text) : text_(ZrCopyString(text)) {}

  ZRRESULT Read(const ZRVARIANT*, uint16_t, ZRVARIANT* value) override {
    value->Type = ZR_VT_STR;
    value->Value.string = ZrCopyString(text_.get());
    return ZR_R_OK;
  }

 private:
  StringOwner text_;
};

void CSettings::Add(WideView name, WideView text) {
  entries_.push_back(Entry{StringOwner(MakeString(name)), StringOwner(MakeString(text))});
}

ZRRESULT CSettings::QuerySection(IZrConfigurationSection** section) {
  AddRef();
  *section = this;
  return ZR_R_OK;
}

ZRRESULT CSettings::QueryValue(ZRSTR name, IZrConfigurationValue** value) {
  for (const Entry& entry : entries_) {
    if (Units(entry.name.get()) != Units(name)) continue;
    *value = new CTextValue(entry.text.get());
    ++valuesRead_;
    return ZR_R_OK;
  }
  return ZR_R_NOT_EXISTING;
}
