// What the host configures: a list of names with values, as clients and the library itself ask for it.

#ifndef EXAMPLES_HOST_SETTINGS_H
#define EXAMPLES_HOST_SETTINGS_H

#include <zrcore/zrcore.h>

#include <cstddef>
#include <vector>

#include "code_units.h"
#include "owners.h"

/// CCounted counts the references of an object that is made with one and frees itself with the last.
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

/// CSettings is a configuration and its only section. Fill it before anybody asks: Add has no lock.
class CSettings final : public CCounted<IZrConfiguration, IZrConfigurationSection> {
 public:
  /// Add lists a value. A text will do for any type: who asks converts it to what is wanted.
  void Add(WideView name, WideView text);

  /// Asked tells how many values have been given so far.
  std::size_t Asked() const { return asked_; }

  ZRRESULT QuerySection(IZrConfigurationSection** section) override;
  ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) override;

 private:
  struct Entry {
    StringOwner name;
    StringOwner text;
  };
  std::vector<Entry> entries_;
  std::size_t asked_ = 0;
};

#endif
