// Reads the library's configuration through three interfaces of the host, one value at a time:
//
//     discovery --QueryConfiguration--> configuration --QuerySection--> section --QueryValue--> value --Read--> variant
//
// The results of the three queries are ignored; only the pointer counts. A null pointer means that there is nothing to
// read, whatever the result was. An object that came with a failure is used and released like any other.
//
// All objects are foreign code and may throw, also from Release. On the normal path each object is released explicitly,
// so that its exception passes to the caller. Destructors release only while another exception is passing, and must
// ignore a second one, which would terminate the process.

#include "components/allocator_settings.h"

#include <cstring>
#include <utility>

#include "identifiers/reference_records.h"
#include "text/code_units.h"
#include "text/counted_string.h"
#include "variants/variant_record.h"
#include "zrcore/configuration.h"

// Runs an action and ignores its exceptions. Only for destructors: see above.
template <class Action>
static void IgnoreExceptions(Action action) noexcept {
  try {
    action();
  } catch (...) {
  }
}

// Owns one reference on an object of the host. An exception of the object passes through Release. The pointer is
// cleared before the call, so the destructor does not release it a second time.
template <class Interface>
class CObjectHolder {
 public:
  CObjectHolder() = default;
  CObjectHolder(const CObjectHolder&) = delete;
  CObjectHolder& operator=(const CObjectHolder&) = delete;
  ~CObjectHolder() {
    IgnoreExceptions([this] { Release(); });
  }

  explicit operator bool() const noexcept { return object_ != nullptr; }
  Interface* operator->() const noexcept { return object_; }
  Interface** Receive() noexcept { return &object_; }  // for an out-parameter; only while the holder is empty

  void Release() {
    if (Interface* object = std::exchange(object_, nullptr)) object->Release();
  }

 private:
  Interface* object_ = nullptr;
};

// Owns a variant that the host has filled. It may contain an object of the host, whose exception passes through Clear.
struct CHostRecord {
  CHostRecord() = default;
  CHostRecord(const CHostRecord&) = delete;
  CHostRecord& operator=(const CHostRecord&) = delete;
  ~CHostRecord() {
    IgnoreExceptions([this] { Clear(); });
  }

  void Clear() { ResetVariant(variant); }

  ZRVARIANT variant = kResetVariant;
};

// ---- One value -----------------------------------------------------------------------------------------------------

// Returns the number in a record, by value or by reference. Another type is converted; 0 if that fails.
//
//     type ZR_VT_UI4:   UI4 7 -> 7      UI4|BYREF to 7 -> 7      STR "7" -> 7      STR "x" -> 0
//
// Only the type bits are compared, so the flag of an array is not noticed: for an array with this element type, or one
// that is converted to it, the first bytes of its handle are returned. Hosts must not return arrays.
template <class Number>
static Number NumberIn(const ZRVARIANT& record, uint16_t type) {
  Number number = 0;
  if ((record.Type & ZR_VT_TYPEMASK) == type) {
    const void* address = HasFlag(record.Type, ZR_VT_BYREF) ? record.Value.address : &record.Value;
    if (address != nullptr) std::memcpy(&number, address, sizeof number);
    return number;
  }
  CHostRecord converted;
  (void)ZrVariantCopyInd(&converted.variant, &record);  // after a failure, the conversion fails too
  if (ZrVariantChangeType(&converted.variant, &converted.variant, 0, type) == ZR_R_OK) {
    std::memcpy(&number, &converted.variant.Value, sizeof number);
  }
  converted.Clear();
  return number;
}

// Returns the value with a name as a number of the type; 0, the default of every value, if it is absent.
//
// The value object is released before its result is converted. So a by-reference result must point to something that
// outlives the object; zrcore/configuration.h requires it.
template <class Number>
static Number ReadNumber(CObjectHolder<IZrConfigurationSection>& section, const WCHAR* name, uint16_t type) {
  const CStringHolder lentName = CStringHolder::Adopt(ZrCreateString(name));
  if (lentName.Get() == nullptr) return 0;  // out of memory: a query needs a name
  CObjectHolder<IZrConfigurationValue> value;
  (void)section->QueryValue(lentName.Get(), value.Receive());
  if (!value) return 0;

  ZRVARIANT lentDefault = kResetVariant;
  lentDefault.Type = type;
  CHostRecord received;
  const ZRRESULT result = value->Read(&lentDefault, type, &received.variant);
  if (result < 0) received.Clear();
  value.Release();
  const Number number = result >= 0 ? NumberIn<Number>(received.variant, type) : Number{0};
  received.Clear();
  return number;
}

// ---- The whole configuration ---------------------------------------------------------------------------------------

CoreConfiguration ReadCoreConfiguration(IZrComponentDiscovery& discovery) {
  CoreConfiguration read;
  CObjectHolder<IZrConfiguration> configuration;
  {
    const CStringHolder name = CStringHolder::Adopt(ZrCreateString(WideLiteral("ZrCore").data()));
    if (name.Get() == nullptr) return read;  // out of memory, as above
    const ZRUUID nil{};
    (void)discovery.QueryConfiguration(&nil, name.Get(), configuration.Receive());
  }
  if (!configuration) return read;
  CObjectHolder<IZrConfigurationSection> section;
  (void)configuration->QuerySection(section.Receive());
  if (section) {
    // A boolean may contain any byte. Only 1 turns the caches on, so a test for nonzero would be wrong.
    read.enableAllocator = ReadNumber<uint8_t>(section, WideLiteral("EnableAllocator").data(), ZR_VT_BOOL) == 1;
    read.refCap = ReadNumber<uint32_t>(section, WideLiteral("ZR_VT_REF").data(), ZR_VT_UI4);
    read.srefCap = ReadNumber<uint32_t>(section, WideLiteral("ZR_VT_SREF").data(), ZR_VT_UI4);
    section.Release();
  }
  configuration.Release();
  return read;
}

// ---- The settings in force -----------------------------------------------------------------------------------------
//
// Both functions change the members under the mutex, copy the settings in force, and apply the copy without the mutex.
// The mutex is a leaf: nothing is called while it is held.

void CAllocatorSettings::DiscoveryAdded(IZrComponentDiscovery& discovery) {
  // Only the settings of the first discovery are used, but every discovery is called: which one is the first is known
  // only under the mutex, and foreign code must not run under it.
  const CoreConfiguration read = ReadCoreConfiguration(discovery);
  CoreConfiguration inForce;
  {
    const CLockGuard hold(mutex_);
    if (discoveries_++ == 0) stored_ = read;
    inForce = stored_;
  }
  Apply(inForce);
}

void CAllocatorSettings::DiscoveryRemoved() {
  CoreConfiguration inForce;
  {
    const CLockGuard hold(mutex_);
    if (--discoveries_ == 0) stored_ = {};
    inForce = stored_;
  }
  Apply(inForce);
}

// The switch must be set first. If the caches are switched off, new calls no longer use them when SetCap frees their
// items without a hold. The default cap 0 then frees all items, except if the old cap was 0 too.
void CAllocatorSettings::Apply(const CoreConfiguration& configuration) noexcept {
  CItemAllocator::SetEnabled(configuration.enableAllocator);
  g_refAllocator.SetCap(configuration.refCap);
  g_srefAllocator.SetCap(configuration.srefCap);
}
