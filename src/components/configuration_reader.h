// The library's own configuration, read from the objects of a discovery. zrcore/configuration.h documents the values.

#pragma once

#include <cstdint>

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
