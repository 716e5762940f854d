// Both functions change the members under the mutex, copy the settings in force, and apply the copy without the mutex.
// The mutex is a leaf: nothing is called while it is held.

#include "components/allocator_settings.h"

#include "identifiers/reference_records.h"

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
