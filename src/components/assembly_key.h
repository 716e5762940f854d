// What tells assemblies apart: the path of a module file or, without one, the functions that a discovery handed over.

#pragma once

#include <string>

#include "zrcore/component.h"

using CModulePath = std::basic_string<WCHAR>;

struct CAssemblyKey {
  CModulePath path;                   // empty for none
  ZrModuleEntryPoints entryPoints{};  // tells keys apart only where there is no path
};

// No path comes before any path. Two paths compare by code unit, exactly. Without paths the functions compare as
// unsigned numbers, in the order create, exit, init: not that of the record's fields, and meant so.
struct CAssemblyKeyLess {
  bool operator()(const CAssemblyKey& left, const CAssemblyKey& right) const noexcept;
};

// The path as a discovery reported it, up to its first zero unit; null is no path.
[[nodiscard]] CModulePath ModulePathFrom(ZRSTR path);
