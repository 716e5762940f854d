// ZrCore: configuration: named values that a discovery gives access to, of classes and of the library itself.
//
//     IZrComponentDiscovery --QueryConfiguration--> IZrConfiguration --QuerySection--> IZrConfigurationSection
//                                                   --QueryValue--> IZrConfigurationValue --Read--> ZRVARIANT
//
// A host implements the three interfaces; where the values come from is its own affair. Clients get the configuration
// of a class from ZrQueryComponentConfiguration. The library is a client too: ZrAddComponentDiscovery asks the new
// discovery for the configuration "ZrCore" of the nil class, and takes the settings of its item caches from it, which
// keep the records of released REFs and SREFs for the next ones:
//
//     value name         type         absent  meaning
//     "EnableAllocator"  ZR_VT_BOOL   false   turns the caches on
//     "ZR_VT_REF"        ZR_VT_UI4    0       how many REF records are kept; 0 stands for 1024
//     "ZR_VT_SREF"       ZR_VT_UI4    0       how many SREF records are kept; 0 stands for 1024
//
// A value of another type is converted as by ZrVariantChangeType, so the text "ZR_TRUE" will do; one that doesn't
// convert counts as absent. Of a boolean exactly 1 is true. Don't answer an array: its handle would be taken for the
// number.
//
// The first discovery decides, also if it has no configuration: the settings stand, whatever later ones answer, until
// as many discoveries have been removed as were added. Then the caches are off again and empty, but for those that
// never had a limit of their own. Discoveries that the last ZrUninitialize cleared don't count as removed, nor those
// whose removal answered a failure.
//
// A limit is lowered without regard to threads that make or destroy REFs and SREFs at that moment: remove the last
// discovery when there are none, and when no other discovery is being added or removed.
//
// In short, a host's section and value:
//
//     ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) override {
//       int32_t order = 1;
//       (void)ZrCompareStringW(name, u"EnableAllocator", &order);
//       if (order != 0) return ZR_R_NOT_EXISTING;   // *value stays null: the default holds
//       enableAllocator_.AddRef();
//       *value = &enableAllocator_;
//       return ZR_R_OK;
//     }
//
//     ZRRESULT Read(const ZRVARIANT*, uint16_t, ZRVARIANT* value) override {
//       value->Type = ZR_VT_BOOL;
//       value->Value.boolean = 1;
//       return ZR_R_OK;
//     }

#ifndef ZRCORE_CONFIGURATION_H
#define ZRCORE_CONFIGURATION_H

#include "zrcore/base.h"
#include "zrcore/component.h"
#include "zrcore/string.h"
#include "zrcore/uuid.h"
#include "zrcore/variant.h"

typedef struct IZrConfigurationSection IZrConfigurationSection;
typedef struct IZrConfigurationValue IZrConfigurationValue;

// ---- What a host provides ------------------------------------------------------------------------------------------
//
// Tables of operations, as in component.h: the place in the table is the contract. The reserved places are never called
// by the library. In C++ they have an answer (ZR_R_NOT_IMPLEMENTED) and needn't be overridden; in C they may be null.
// Operations of a host's own belong behind the last one, in an interface that derives from these.
//
// While ZrAddComponentDiscovery reads "ZrCore", it calls the operations without holding any lock of the library. The
// operations must not throw: an exception passes through ZrAddComponentDiscovery to its caller (see "Exceptions" in
// base.h). Each object that was given has been released by then.

#ifdef __cplusplus

/// IZrConfiguration is a named set of values.
struct IZrConfiguration : IZrUnknown {
  virtual ZRRESULT Reserved4() { return ZR_R_NOT_IMPLEMENTED; }
  virtual ZRRESULT Reserved5() { return ZR_R_NOT_IMPLEMENTED; }

  /// QuerySection gives the section that holds the values.
  ///
  /// @param section  null on entry; receives an object with one reference for the caller. Null means no values.
  /// @return not read by the library; by custom negative if there is no section.
  virtual ZRRESULT QuerySection(IZrConfigurationSection** section) = 0;

 protected:
  ~IZrConfiguration() = default;
};

/// IZrConfigurationSection finds values by name.
struct IZrConfigurationSection : IZrUnknown {
  virtual ZRRESULT Reserved4() { return ZR_R_NOT_IMPLEMENTED; }
  virtual ZRRESULT Reserved5() { return ZR_R_NOT_IMPLEMENTED; }

  /// QueryValue gives the value of a name.
  ///
  /// @param name   lent for the call.
  /// @param value  null on entry; receives an object with one reference for the caller. Null means no such value.
  /// @return not read by the library; by custom negative if there is no such value.
  virtual ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) = 0;

 protected:
  ~IZrConfigurationSection() = default;
};

/// IZrConfigurationValue is one value.
struct IZrConfigurationValue : IZrUnknown {
  virtual ZRRESULT Reserved4() { return ZR_R_NOT_IMPLEMENTED; }

  /// Read gives the value.
  ///
  /// @param defaultValue  what the caller takes if this fails, as a copy for this call.
  /// @param type          the tag that the caller would like best (ZR_VT_...), without flags.
  /// @param value         initialised; receives the value, of any type, which the caller clears. What a by-reference
  ///                      value points at must outlive this object: the library releases the object and only then
  ///                      reads the number, while it still holds the section.
  /// @return negative for none: the caller clears `value` and takes the default.
  virtual ZRRESULT Read(const ZRVARIANT* defaultValue, uint16_t type, ZRVARIANT* value) = 0;

 protected:
  ~IZrConfigurationValue() = default;
};

#else

// clang-format off
typedef struct IZrConfigurationTable {
  uint32_t (*AddRef)(IZrConfiguration* self);
  uint32_t (*Release)(IZrConfiguration* self);
  ZRRESULT (*QueryInterface)(IZrConfiguration* self, const ZRUUID* interfaceId, void** object);
  ZRRESULT (*Reserved4)(IZrConfiguration* self);
  ZRRESULT (*Reserved5)(IZrConfiguration* self);
  ZRRESULT (*QuerySection)(IZrConfiguration* self, IZrConfigurationSection** section);
} IZrConfigurationTable;

typedef struct IZrConfigurationSectionTable {
  uint32_t (*AddRef)(IZrConfigurationSection* self);
  uint32_t (*Release)(IZrConfigurationSection* self);
  ZRRESULT (*QueryInterface)(IZrConfigurationSection* self, const ZRUUID* interfaceId, void** object);
  ZRRESULT (*Reserved4)(IZrConfigurationSection* self);
  ZRRESULT (*Reserved5)(IZrConfigurationSection* self);
  ZRRESULT (*QueryValue)(IZrConfigurationSection* self, ZRSTR name, IZrConfigurationValue** value);
} IZrConfigurationSectionTable;

typedef struct IZrConfigurationValueTable {
  uint32_t (*AddRef)(IZrConfigurationValue* self);
  uint32_t (*Release)(IZrConfigurationValue* self);
  ZRRESULT (*QueryInterface)(IZrConfigurationValue* self, const ZRUUID* interfaceId, void** object);
  ZRRESULT (*Reserved4)(IZrConfigurationValue* self);
  ZRRESULT (*Read)(IZrConfigurationValue* self, const ZRVARIANT* defaultValue, uint16_t type, ZRVARIANT* value);
} IZrConfigurationValueTable;
// clang-format on

struct IZrConfiguration {
  const IZrConfigurationTable* table;
};

struct IZrConfigurationSection {
  const IZrConfigurationSectionTable* table;
};

struct IZrConfigurationValue {
  const IZrConfigurationValueTable* table;
};

#endif

// ---- What a client asks --------------------------------------------------------------------------------------------

/// ZrQueryComponentConfiguration gives a configuration of a class, from the discovery that reported the class.
///
/// The class is looked up as by ZrCreateInstance, but its module is not loaded. No other discovery is asked for the
/// configuration, and nothing of the answer is remembered.
///
/// @param classId        must not be null.
/// @param name           name of the configuration; lent to the discovery as it is, null included.
/// @param configuration  set to null at once, before anything else is looked at; receives what the discovery gives, an
///                       object with one reference for the caller. After a failure it is null, unless a discovery
///                       stores something and fails nevertheless.
/// @return the discovery's own result, positive ones included; or, looked for in this order: ZR_R_NO_INIT,
///         ZR_R_INVALID_ARGUMENTS if `configuration` is null, ZR_R_CLASS_NOT_REGISTERED, ZR_R_UNEXPECTED if the
///         discovery that reported the class is gone. Anything thrown is ZR_R_FAILED.
///
/// Any thread, any time. The discovery is called under the management lock; the object that it gives is not.
ZR_API ZRRESULT ZrQueryComponentConfiguration(const ZRUUID* classId, ZRSTR name,
                                              IZrConfiguration** configuration) ZR_NOEXCEPT;

#endif
