// The settings of the item allocators, which are the library's whole configuration. They are read from the objects of
// a discovery; zrcore/configuration.h documents the values. The first discovery decides them; they stay in force until
// as many discoveries have been removed as were added. Then they are the defaults again.
//
//     call                                    count   settings in force
//     (loaded)                                0       defaults: caches off
//     discovery A is added, with settings a   1       a
//     discovery B is added, with settings b   2       a; the settings b are read and dropped
//     A is removed                            1       a, although A is gone
//     B is removed                            0       defaults
//
// The count is unsigned and wraps around. Another thread may remove a discovery while its configuration is still being
// read; the removal is then counted first: 0 -> 0xFFFFFFFF -> 0. The addition sees a count that is not 0, so the
// settings of a removed discovery never come into force.
//
// Two cases make the count differ from the number of registered discoveries. The public headers document both:
//   - The last ZrUninitialize removes all discoveries without counting them.
//   - A discovery whose configuration throws is not counted as added. Its removal is counted.

#pragma once

#include <cstdint>

#include "runtime/lock.h"
#include "zrcore/component.h"

// The values with their defaults.
struct CoreConfiguration {
  bool enableAllocator = false;
  uint32_t refCap = 0;  // cap of the cache of REF records; 0 means the default cap
  uint32_t srefCap = 0;

  bool operator==(const CoreConfiguration&) const = default;
};

// Reads the configuration "ZrCore" of the discovery. A value that is missing or can't be converted leaves the default.
//
// An exception of the objects passes to the caller; every reference has been released then. Out of memory for a string
// leaves the default; out of memory for the conversion throws std::bad_alloc. Foreign code runs, so the caller must not
// hold a lock.
[[nodiscard]] CoreConfiguration ReadCoreConfiguration(IZrComponentDiscovery& discovery);

class CAllocatorSettings {
 public:
  CAllocatorSettings() = default;
  CAllocatorSettings(const CAllocatorSettings&) = delete;
  CAllocatorSettings& operator=(const CAllocatorSettings&) = delete;

  // Must be called after a discovery was added to or removed from the registry, without any lock: DiscoveryAdded calls
  // the discovery. An exception of the discovery's objects passes to the caller, and nothing has changed then.
  //
  // Two calls that overlap may set the allocators in either order, so the older settings may remain.
  void DiscoveryAdded(IZrComponentDiscovery& discovery);
  void DiscoveryRemoved();

 private:
  static void Apply(const CoreConfiguration& configuration) noexcept;

  CMutex mutex_;  // guards the members only; it is not held while a discovery is called or the allocators are set
  uint32_t discoveries_ ZR_GUARDED_BY(mutex_) = 0;
  CoreConfiguration stored_ ZR_GUARDED_BY(mutex_);
};

// The only settings. src/runtime/library_state.cpp defines them; the component exports update them.
CAllocatorSettings& AllocatorSettings() noexcept;
