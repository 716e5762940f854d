// Three interfaces deep, one value at a time. Results are not looked at on the way: an object came or it didn't.

#include "components/configuration_reader.h"

#include <cstring>
#include <utility>

#include "text/code_units.h"
#include "text/counted_string.h"
#include "variants/variant_record.h"
#include "zrcore/configuration.h"

// For destructors, which have something to do only while an exception passes: it must not meet a second one.
template <class Action>
static void Quietly(Action action) noexcept {
  try {
    action();
  } catch (...) {
  }
}

// One reference on an object of the host's. What the object throws passes through Release.
template <class Interface>
class CObjectHolder {
 public:
  CObjectHolder() = default;
  CObjectHolder(const CObjectHolder&) = delete;
  CObjectHolder& operator=(const CObjectHolder&) = delete;
  ~CObjectHolder() {
    Quietly([this] { Release(); });
  }

  explicit operator bool() const noexcept { return object_ != nullptr; }
  Interface* operator->() const noexcept { return object_; }
  Interface** Receive() noexcept { return &object_; }  // once, for an out-parameter

  void Release() {
    if (Interface* object = std::exchange(object_, nullptr)) object->Release();
  }

 private:
  Interface* object_ = nullptr;
};

// A record with a value of the host's. What an object in it throws passes through Clear.
struct CHostRecord {
  CHostRecord() = default;
  CHostRecord(const CHostRecord&) = delete;
  CHostRecord& operator=(const CHostRecord&) = delete;
  ~CHostRecord() {
    Quietly([this] { Clear(); });
  }

  void Clear() { ResetVariant(variant); }

  ZRVARIANT variant = kResetVariant;
};

// ---- One value -----------------------------------------------------------------------------------------------------

// The number in a record, held or pointed at, converted if need be; 0 if there is none. An array isn't told from a
// number: of one that has the tag, or converts to it, the first bytes of the handle are taken.
template <class Number>
static Number NumberIn(const ZRVARIANT& record, uint16_t type) {
  Number number = 0;
  if ((record.Type & ZR_VT_TYPEMASK) == type) {
    const void* address = HasFlag(record.Type, ZR_VT_BYREF) ? record.Value.address : &record.Value;
    if (address != nullptr) std::memcpy(&number, address, sizeof number);
    return number;
  }
  CHostRecord converted;
  (void)ZrVariantCopyInd(&converted.variant, &record);  // what can't be copied doesn't convert either
  if (ZrVariantChangeType(&converted.variant, &converted.variant, 0, type) == ZR_R_OK) {
    std::memcpy(&number, &converted.variant.Value, sizeof number);
  }
  converted.Clear();
  return number;
}

// The value of that name as a number of the type, or 0, which is the default of all.
template <class Number>
static Number ReadNumber(CObjectHolder<IZrConfigurationSection>& section, const WCHAR* name, uint16_t type) {
  const CStringHolder lentName = CStringHolder::Adopt(ZrCreateString(name));
  if (lentName.Get() == nullptr) return 0;  // exhausted memory; nobody can be asked without a name
  CObjectHolder<IZrConfigurationValue> value;
  (void)section->QueryValue(lentName.Get(), value.Receive());
  if (!value) return 0;

  ZRVARIANT lentDefault = kResetVariant;
  lentDefault.Type = type;
  CHostRecord answer;
  const ZRRESULT result = value->Read(&lentDefault, type, &answer.variant);
  if (result < 0) answer.Clear();
  value.Release();  // before its answer is looked at, so what that points at must outlive the value object
  const Number number = result >= 0 ? NumberIn<Number>(answer.variant, type) : Number{0};
  answer.Clear();
  return number;
}

// ---- All of them ---------------------------------------------------------------------------------------------------

CoreConfiguration ReadCoreConfiguration(IZrComponentDiscovery& discovery) {
  CoreConfiguration read;
  CObjectHolder<IZrConfiguration> configuration;
  {
    const CStringHolder name = CStringHolder::Adopt(ZrCreateString(WideLiteral("ZrCore").data()));
    if (name.Get() == nullptr) return read;  // as above
    const ZRUUID nil{};
    (void)discovery.QueryConfiguration(&nil, name.Get(), configuration.Receive());
  }
  if (!configuration) return read;
  CObjectHolder<IZrConfigurationSection> section;
  (void)configuration->QuerySection(section.Receive());
  if (section) {
    // Exactly 1: a boolean may hold any byte, and no other one turns the caches on.
    read.enableAllocator = ReadNumber<uint8_t>(section, WideLiteral("EnableAllocator").data(), ZR_VT_BOOL) == 1;
    read.refCap = ReadNumber<uint32_t>(section, WideLiteral("ZR_VT_REF").data(), ZR_VT_UI4);
    read.srefCap = ReadNumber<uint32_t>(section, WideLiteral("ZR_VT_SREF").data(), ZR_VT_UI4);
    section.Release();
  }
  configuration.Release();
  return read;
}
