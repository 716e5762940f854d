// The settings of the item allocators: those of the first discovery, for as long as there are any.
//
// Discoveries are counted as they are added and removed, and the count wraps: so a removal that overtakes the reading
// of its own discovery on another thread cancels out. Those that the last ZrUninitialize clears stay in the count, and
// one whose configuration threw was never in it.

#pragma once

#include <cstdint>

#include "components/configuration_reader.h"
#include "runtime/lock.h"

class CAllocatorSettings {
 public:
  CAllocatorSettings() = default;
  CAllocatorSettings(const CAllocatorSettings&) = delete;
  CAllocatorSettings& operator=(const CAllocatorSettings&) = delete;

  // After a discovery was added and after one was removed; under no lock. Two that run at once may set the allocators
  // in either order. What the discovery's objects throw passes through, and then nothing has changed.
  void DiscoveryAdded(IZrComponentDiscovery& discovery);
  void DiscoveryRemoved();

 private:
  static void Apply(const CoreConfiguration& configuration) noexcept;

  CMutex mutex_;  // held for the members only: not while a discovery is asked, nor while allocators are set
  uint32_t discoveries_ ZR_GUARDED_BY(mutex_) = 0;
  CoreConfiguration stored_ ZR_GUARDED_BY(mutex_);
};

// The only settings, which the component exports keep.
CAllocatorSettings& AllocatorSettings() noexcept;
