// The key of an assembly: the path of a module file or, without a path, the functions that a discovery handed over.
//
//     "a.so", f, g, h   equals    "a.so", null, null, null      with a path, the functions are ignored
//     "a.so"            differs from   "./a.so" and "A.so"      paths are compared unit by unit, not as files
//     "", f, g, h       equals    "", f, g, h
//     "", ...           is less than   every key with a path

#pragma once

#include <string>

#include "zrcore/component.h"

using CModulePath = std::basic_string<WCHAR>;

struct CAssemblyKey {
  CModulePath path;                   // empty if there is no module file
  ZrModuleEntryPoints entryPoints{};  // part of the comparison only if both paths are empty
};

// An empty path comes before every other path. Paths are compared by code unit. Without paths the addresses of the
// functions are compared as unsigned numbers, in the order createInstance, exit, init.
//
// The contract fixes this order. It is not the order of the fields, which is createInstance, init, exit.
struct CAssemblyKeyLess {
  bool operator()(const CAssemblyKey& left, const CAssemblyKey& right) const noexcept;
};

// Returns the path that a discovery reported, up to its first zero unit. Null returns an empty path.
[[nodiscard]] CModulePath ModulePathFrom(ZRSTR path);
