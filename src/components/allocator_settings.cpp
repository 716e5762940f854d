#include "components/allocator_settings.h"

#include "identifiers/reference_records.h"

void CAllocatorSettings::DiscoveryAdded(IZrComponentDiscovery& discovery) {
  // Every discovery is asked, though only the first one's answers count: which one that is, is known under the mutex.
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

// The switch first: caches that go off are no longer used when their caps empty them.
void CAllocatorSettings::Apply(const CoreConfiguration& configuration) noexcept {
  CItemAllocator::SetEnabled(configuration.enableAllocator);
  g_refAllocator.SetCap(configuration.refCap);
  g_srefAllocator.SetCap(configuration.srefCap);
}
