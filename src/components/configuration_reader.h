// The library's own configuration, as a discovery's objects tell it.

#pragma once

#include <cstdint>

#include "zrcore/component.h"

struct CoreConfiguration {
  bool enableAllocator = false;
  uint32_t refCap = 0;  // of the cache of REF records; 0 stands for the default cap
  uint32_t srefCap = 0;

  bool operator==(const CoreConfiguration&) const = default;
};

// Asks the discovery for "ZrCore". What is missing or doesn't convert leaves its default; what the objects throw passes
// through, with every reference given up. Foreign code runs: under no lock.
[[nodiscard]] CoreConfiguration ReadCoreConfiguration(IZrComponentDiscovery& discovery);
