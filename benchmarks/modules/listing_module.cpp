// A module that lists its classes itself, as in a plug-in system without manifests. The benchmark makes copies of the
// file and numbers them, so that each copy has classes of its own.

#include "modules/listing_module.h"

#include <cstdio>

extern "C" ZR_EXPORT void ListClasses(uint32_t module, uint32_t count, ReportClass report, void* context) {
  for (uint32_t index = 0; index < count; ++index) {
    char name[40];
    std::snprintf(name, sizeof name, "Benchmark.Module%u.Class%u", module, index);
    const ZRUUID id = ListedClass(module, index);
    report(context, &id, name);
  }
}
