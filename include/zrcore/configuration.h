// ZrCore: configuration. A discovery offers named values for its classes and for the library itself.
//
//     IZrComponentDiscovery --QueryConfiguration--> IZrConfiguration --QuerySection--> IZrConfigurationSection
//                                                   --QueryValue--> IZrConfigurationValue --Read--> ZRVARIANT
//
// A host implements the three interfaces and decides where the values come from. A client gets the configuration of a
// class with ZrQueryComponentConfiguration and releases each object with its Release. The function returns
// ZR_R_INVALID_ARGUMENTS for a null result pointer.
//
// The library is a client too. ZrAddComponentDiscovery asks the new discovery for the configuration "ZrCore" of the nil
// class and reads the settings of the item caches from it. The item caches keep the records of destroyed REFs and SREFs
// for reuse:
//
//     value name         type         absent  meaning
//     "EnableAllocator"  ZR_VT_BOOL   false   turns the caches on
//     "ZR_VT_REF"        ZR_VT_UI4    0       the largest number of REF records to keep; 0 means 1024
//     "ZR_VT_SREF"       ZR_VT_UI4    0       the largest number of SREF records to keep; 0 means 1024
//
// A value of another type is converted as by ZrVariantChangeType, so the text "ZR_TRUE" is valid. A value that can't be
// converted counts as absent. Only the value 1 of a boolean is true. A host must not return an array: the library reads
// the bytes of its handle as the number. If there is no memory for the name of a value, the value counts as absent.
//
// The first discovery that is added decides the settings, even if it has no configuration. They stay in force, whatever
// later discoveries return, until as many discoveries have been removed as were added. Then the caches are switched off
// and emptied. A cache whose setting was 0 is only switched off and keeps its records. A discovery that the last
// ZrUninitialize removed doesn't count as removed, nor does one whose removal failed.
//
// Data race: emptying a cache corrupts it if another thread makes or destroys REFs or SREFs at that moment. Remove the
// last discovery when no thread does so, and while no other discovery is being added or removed.
//
// An example of a host's section and value:
//
//     ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) override {
//       int32_t order = 1;
//       (void)ZrCompareStringW(name, u"EnableAllocator", &order);
//       if (order != 0) return ZR_R_NOT_EXISTING;   // *value stays null: the default is used
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
// These are tables of operations as in component.h; the position in the table is part of the binary interface. The
// library never calls the reserved operations. In C++ they return ZR_R_NOT_IMPLEMENTED and need not be overridden; in C
// they may be null. A host must add operations of its own after the last one, in an interface that derives from these.
//
// While ZrAddComponentDiscovery reads "ZrCore", it calls the operations without holding any lock of the library. The
// operations must not throw: the exception passes through ZrAddComponentDiscovery to its caller (see "Exceptions" in
// base.h). When the caller receives the exception, the library has released each object that it received.

#ifdef __cplusplus

/// IZrConfiguration is a named set of values.
struct IZrConfiguration : IZrUnknown {
  virtual ZRRESULT Reserved4() { return ZR_R_NOT_IMPLEMENTED; }
  virtual ZRRESULT Reserved5() { return ZR_R_NOT_IMPLEMENTED; }

  /// QuerySection gives the section that contains the values.
  ///
  /// @param section  null on entry; gives the caller an object with one reference. Null means that there are no values.
  /// @return ignored by the library; by custom negative if there is no section.
  virtual ZRRESULT QuerySection(IZrConfigurationSection** section) = 0;

 protected:
  ~IZrConfiguration() = default;
};

/// IZrConfigurationSection finds values by name.
struct IZrConfigurationSection : IZrUnknown {
  virtual ZRRESULT Reserved4() { return ZR_R_NOT_IMPLEMENTED; }
  virtual ZRRESULT Reserved5() { return ZR_R_NOT_IMPLEMENTED; }

  /// QueryValue gives the value with a name.
  ///
  /// @param name   lends the name for the call.
  /// @param value  null on entry; gives the caller an object with one reference. Null means that the value is absent.
  /// @return ignored by the library; by custom negative if there is no such value.
  virtual ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) = 0;

 protected:
  ~IZrConfigurationSection() = default;
};

/// IZrConfigurationValue is one value.
struct IZrConfigurationValue : IZrUnknown {
  virtual ZRRESULT Reserved4() { return ZR_R_NOT_IMPLEMENTED; }

  /// Read stores the value in a variant.
  ///
  /// @param defaultValue  lends, for the call, the value that the caller uses if Read fails.
  /// @param type          the type that the caller prefers (ZR_VT_...), without flags.
  /// @param value         initialised; receives a value of any type, which the caller clears. If the value has the flag
  ///                      ZR_VT_BYREF, the variable that it points to must not be part of this object: the library
  ///                      reads the variable after it has released this object. It still has a reference on the section
  ///                      then.
  /// @return negative if there is no value: the caller clears `*value` and uses the default.
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
/// It looks up the class like ZrCreateInstance but doesn't load the module. It asks no other discovery for the
/// configuration. The configuration is not remembered: each call asks the discovery again.
///
/// @param classId        must not be null.
/// @param name           lends the name of the configuration to the discovery. It is passed unchanged, even null.
/// @param configuration  gives an object with one reference. It is set to null before anything else is checked, so it
///                       is null after a failure, unless a discovery stored something and failed nevertheless.
/// @return the discovery's own result, which may be positive; or the first of these that applies:
///   - ZR_R_NO_INIT               ZrInitialize is not in force.
///   - ZR_R_INVALID_ARGUMENTS     `configuration` is null.
///   - ZR_R_CLASS_NOT_REGISTERED  no discovery knows the class.
///   - ZR_R_UNEXPECTED            the discovery that reported the class has been removed.
///   - ZR_R_FAILED                an exception, or out of memory.
///
/// Any thread, any time. The discovery is called under the management lock. The lock is not held when the caller uses
/// the object.
ZR_API ZRRESULT ZrQueryComponentConfiguration(const ZRUUID* classId, ZRSTR name,
                                              IZrConfiguration** configuration) ZR_NOEXCEPT;

#endif
