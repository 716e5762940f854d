// The order of assembly keys. Function pointers have no order in C++, so they are compared as integers.

#include "components/assembly_key.h"

#include <array>
#include <cstdint>

bool CAssemblyKeyLess::operator()(const CAssemblyKey& left, const CAssemblyKey& right) const noexcept {
  if (!left.path.empty() || !right.path.empty()) return left.path < right.path;
  // createInstance, exit, init: exit before init, although the record has them the other way round.
  const auto functions = [](const ZrModuleEntryPoints& points) {
    return std::array{reinterpret_cast<std::uintptr_t>(points.createInstance),
                      reinterpret_cast<std::uintptr_t>(points.exit), reinterpret_cast<std::uintptr_t>(points.init)};
  };
  return functions(left.entryPoints) < functions(right.entryPoints);
}

CModulePath ModulePathFrom(ZRSTR path) { return path != nullptr ? CModulePath(path) : CModulePath(); }
