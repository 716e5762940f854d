// The host's configuration: a list of names with values, which clients and the library itself can query.

#ifndef EXAMPLES_HOST_SETTINGS_H
#define EXAMPLES_HOST_SETTINGS_H

#include <zrcore/zrcore.h>

#include <cstddef>
#include <vector>

#include "code_units.h"
#include "owners.h"

/// CCounted implements reference counting. The object starts with one reference, which belongs to its creator; the last
/// Release deletes it. It must be created with new.
template <class... Interfaces>
class CCounted : public Interfaces... {
 public:
  CCounted() = default;
  CCounted(const CCounted&) = delete;
  CCounted& operator=(const CCounted&) = delete;

  uint32_t AddRef() override { return ZrInterlockedIncrementU32(&references_); }
  uint32_t Release() override {
    const uint32_t left = ZrInterlockedDecrementU32(&references_);
    if (left == 0) delete this;
    return left;
  }
  ZRRESULT QueryInterface(const ZRUUID*, void** object) override {
    if (object != nullptr) *object = nullptr;
    return ZR_R_NO_INTERFACE;
  }

 protected:
  virtual ~CCounted() = default;

 private:
  uint32_t references_ = 1;
};

/// CSettings is a configuration and its only section. Add has no lock: calling it after other threads may query the
/// settings is a data race.
class CSettings final : public CCounted<IZrConfiguration, IZrConfigurationSection> {
 public:
  /// Add adds a value. Values of all types are texts: whoever reads one converts it to the type it needs.
  void Add(WideView name, WideView text);

  /// ValuesRead returns how many values have been queried so far.
  std::size_t ValuesRead() const { return valuesRead_; }

  ZRRESULT QuerySection(IZrConfigurationSection** section) override;
  ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) override;

 private:
  struct Entry {
    StringOwner name;
    StringOwner text;
  };
  std::vector<Entry> entries_;
  std::size_t valuesRead_ = 0;
};

#endif
