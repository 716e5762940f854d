// TableDiscovery is a ready discovery: a list of classes, with their names and modules (zrcore/component.h).
//
//     auto discovery = zr::MakeObject<zr::TableDiscovery>(zr::TableDiscovery::Rows{
//         {kMarsClass, u"Planets.Mars", u"./planets.so"}});
//     zr::Registration registration(*discovery);
//
// The path of a module needs a slash: without one, the system's loader searches its own folders for the file. The rows
// never change. Set configurations before the discovery is registered: to do it later is a data race.
//
// The library remembers the names of classes until the process ends, and keeps a reference on each name that it has
// returned.

#ifndef ZR_DISCOVERY_HPP
#define ZR_DISCOVERY_HPP

#include <utility>

#include "zr/configuration.hpp"
#include "zr/object.hpp"
#include "zr/string.hpp"
#include "zr/uuid.hpp"
#include "zrcore/component.h"

namespace zr {

/// TableDiscovery is a discovery of a fixed list of classes. zr::MakeObject makes it.
class TableDiscovery final : public Object<IZrComponentDiscovery> {
 public:
  /// Row is one class: in a module file, or in the program itself.
  struct Row {
    Uuid classId;                              ///< identifies the class
    String name;                               ///< for ZrCLSIDFromClassName; case-sensitive
    String modulePath;                         ///< the module file; empty if the program itself contains the class
    ZrModuleEntryPoints functions = {};        ///< then, the functions of the class; createInstance must not be null
    Ptr<IZrConfiguration> configuration = {};  ///< of the class, under every name; may be null
  };
  using Rows = zr::Rows<Row>;

  /// Takes the rows. If two have one identifier or name, the first counts.
  explicit TableDiscovery(Rows rows) : rows_(std::move(rows)) {}

  /// SetConfiguration sets what the library reads as its own configuration, "ZrCore".
  void SetConfiguration(Ptr<IZrConfiguration> configuration) { ownConfiguration_ = std::move(configuration); }

  // The operations of the discovery, which the library calls.

  /// QueryComponent reports where a class is. ZR_R_UNKNOWN_IDENTIFIER for a class without a row.
  ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints* entryPoints) override {
    const Row* row = Find(*classId);
    if (row == nullptr) return ZR_R_UNKNOWN_IDENTIFIER;
    if (row->modulePath.IsEmpty()) {
      *entryPoints = row->functions;
    } else {
      *modulePath = String(row->modulePath).Detach();
    }
    return ZR_R_OK;
  }

  /// QueryConfiguration gives the configuration of a row or, for the nil class, the configuration of SetConfiguration.
  /// ZR_R_NOT_EXISTING without a configuration.
  ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR /*name*/, IZrConfiguration** configuration) override {
    const Row* row = Find(*classId);
    const Ptr<IZrConfiguration>& found = row != nullptr ? row->configuration : ownConfiguration_;
    if (!found || (row == nullptr && !Uuid(*classId).IsNil())) return ZR_R_NOT_EXISTING;
    *configuration = Ptr<IZrConfiguration>(found).Detach();
    return ZR_R_OK;
  }

  /// QueryClassId finds a class by its name. ZR_R_NOT_EXISTING for a name without a row.
  ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) override {
    const String wanted = String::Share(className);
    for (const Row& row : rows_) {
      if (row.name == wanted) {
        *classId = row.classId;
        return ZR_R_OK;
      }
    }
    return ZR_R_NOT_EXISTING;
  }

  /// QueryClassName gives the name of a class. ZR_R_NOT_EXISTING for a class without a row.
  ZRRESULT QueryClassName(const ZRUUID* classId, ZRSTR* className) override {
    const Row* row = Find(*classId);
    if (row == nullptr) return ZR_R_NOT_EXISTING;
    *className = String(row->name).Detach();
    return ZR_R_OK;
  }

 private:
  [[nodiscard]] const Row* Find(const ZRUUID& classId) const noexcept {
    for (const Row& row : rows_) {
      if (row.classId == Uuid(classId)) return &row;
    }
    return nullptr;
  }

  Rows rows_;
  Ptr<IZrConfiguration> ownConfiguration_;
};

}  // namespace zr

#endif
