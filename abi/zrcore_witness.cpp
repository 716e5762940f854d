// The witness library: code that depends on the layout of everything that crosses the library's boundary.
//
// A description of libzrcore.so alone doesn't contain the layout of the interfaces that callers implement, nor of every
// record. The witness has an object of every interface and a function with every record by value, so its debug
// information describes them all. tools/check-abi compares the description with the one of the last frozen version,
// abi/zrcore.xml. It fails if a record or an interface of abi/zrcore.txt isn't in the description: whoever adds one to
// the headers adds it here, too.
//
// The witness is compiled and described. It is never linked with the library or run.

#include "zrcore/zrcore.h"

// ---- An implementation of every interface ---------------------------------------------------------------------------

template <class Interface>
struct Counted : Interface {
  uint32_t AddRef() override { return 2; }
  uint32_t Release() override { return 1; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }
};

struct Discovery final : Counted<IZrComponentDiscovery> {
  ZRRESULT QueryComponent(const ZRUUID*, ZRSTR*, ZrModuleEntryPoints*) override { return ZR_R_FAILED; }
  ZRRESULT QueryConfiguration(const ZRUUID*, ZRSTR, IZrConfiguration**) override { return ZR_R_FAILED; }
  ZRRESULT QueryClassId(ZRSTR, ZRUUID*) override { return ZR_R_FAILED; }
  ZRRESULT QueryClassName(const ZRUUID*, ZRSTR*) override { return ZR_R_FAILED; }
};

struct Configuration final : Counted<IZrConfiguration> {
  ZRRESULT QuerySection(IZrConfigurationSection**) override { return ZR_R_FAILED; }
};

struct Section final : Counted<IZrConfigurationSection> {
  ZRRESULT QueryValue(ZRSTR, IZrConfigurationValue**) override { return ZR_R_FAILED; }
};

struct Value final : Counted<IZrConfigurationValue> {
  ZRRESULT Read(const ZRVARIANT*, uint16_t, ZRVARIANT*) override { return ZR_R_FAILED; }
};

Counted<IZrUnknown> g_unknown;
Counted<IZrDispatch> g_dispatch;
Discovery g_discovery;
Configuration g_configuration;
Section g_section;
Value g_value;

// ---- Every record by value ------------------------------------------------------------------------------------------

#define USE_BY_VALUE(Record) \
  Record Pass##Record(Record record) { return record; }

USE_BY_VALUE(CZrException)
USE_BY_VALUE(ZRDATETIMESTRUCT)
USE_BY_VALUE(ZRREF)
USE_BY_VALUE(ZRSREF)
USE_BY_VALUE(ZRUUID)
USE_BY_VALUE(ZRVARIANT)
USE_BY_VALUE(ZRVARIANTVALUE)
USE_BY_VALUE(ZrModuleEntryPoints)
USE_BY_VALUE(ZrSafeArrayBound)
