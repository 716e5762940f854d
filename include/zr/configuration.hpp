// ConfigurationTable is a ready configuration: a list of named values (zrcore/configuration.h).
//
//     auto settings = zr::MakeObject<zr::ConfigurationTable>(zr::ConfigurationTable::Rows{
//         {u"EnableAllocator", true}, {u"ZR_VT_REF", 256u}});
//     discovery->SetConfiguration(settings);        // TableDiscovery, in discovery.hpp
//
// The rows never change, so any number of threads may read them.

#ifndef ZR_CONFIGURATION_HPP
#define ZR_CONFIGURATION_HPP

#include <cstdint>
#include <utility>

#include "zr/object.hpp"
#include "zr/string.hpp"
#include "zr/variant.hpp"
#include "zrcore/atomic.h"
#include "zrcore/configuration.h"

namespace zr {

/// ConfigurationTable is a configuration with one section of fixed values. zr::MakeObject makes it.
class ConfigurationTable final : public Object<IZrConfiguration> {
 public:
  /// Row is one value and its name.
  struct Row {
    String name;    ///< case-sensitive
    Variant value;  ///< not an array
  };
  using Rows = zr::Rows<Row>;

  /// Takes the rows. If two have one name, the first counts.
  explicit ConfigurationTable(Rows rows) : rows_(std::move(rows)) {}

  /// TakeReads returns how many values have been found by name since the last call. A host can check with it that its
  /// settings are read: a misspelt name is not an error.
  uint32_t TakeReads() noexcept {
    const uint32_t zero = 0;
    return ZrInterlockedExchangeU32(&reads_, &zero);
  }

  /// QuerySection gives the one section, which contains all rows. ZR_R_NO_MEMORY when out of memory.
  ZRRESULT QuerySection(IZrConfigurationSection** section) override {
    return Guard([&] { *section = MakeObject<Section>(Ptr<ConfigurationTable>::Share(this)).Detach(); });
  }

 private:
  class Section final : public Object<IZrConfigurationSection> {
   public:
    explicit Section(Ptr<ConfigurationTable> table) : table_(std::move(table)) {}

    /// ZR_R_NOT_EXISTING if there is no row with this name.
    ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) override {
      return Guard([&]() -> ZRRESULT {
        const String wanted = String::Share(name);
        for (const Row& row : table_->rows_) {
          if (row.name == wanted) {
            *value = MakeObject<Value>(row.value).Detach();
            (void)ZrInterlockedIncrementU32(&table_->reads_);
            return ZR_R_OK;
          }
        }
        return ZR_R_NOT_EXISTING;
      });
    }

   private:
    Ptr<ConfigurationTable> table_;
  };

  class Value final : public Object<IZrConfigurationValue> {
   public:
    explicit Value(Variant value) : value_(std::move(value)) {}

    /// Stores the value, converted to `type`. If it does not convert, the result is that of the conversion.
    ZRRESULT Read(const ZRVARIANT* /*defaultValue*/, uint16_t type, ZRVARIANT* value) override {
      return Guard([&]() -> ZRRESULT {
        Variant copy = value_;
        if (copy.Type() != type) {
          if (const Result<void> changed = copy.ChangeType(type); !changed) return changed.Code();
        }
        *value = copy.Detach();
        return ZR_R_OK;
      });
    }

   private:
    Variant value_;
  };

  Rows rows_;
  uint32_t reads_ = 0;
};

}  // namespace zr

#endif
