// The interfaces of the classes that the tests of the C++ layer create.

#pragma once

#include "zr/zr.hpp"

struct IPlanet : IZrUnknown {
  static constexpr zr::Uuid kId{"F9651424-8D32-4CCF-9A21-343643169DF0"};
  virtual ZRRESULT CountMoons(ZRVARIANT* count) = 0;

 protected:
  ~IPlanet() = default;
};

struct IMoon : IZrUnknown {
  static constexpr zr::Uuid kId{"3E1B63F4-53A1-4D4C-8A3C-0A6F2D4B7C11"};
  virtual uint64_t Arguments() = 0;

 protected:
  ~IMoon() = default;
};

// The classes of the module "layer". kBroken has a constructor that throws.
inline constexpr zr::Uuid kMars("31AD0869-8AC8-4D25-A11C-A887BE515257");
inline constexpr zr::Uuid kBroken("9D3C2A60-6D5E-4A3B-8B0E-6C1A5B0F7E22");
