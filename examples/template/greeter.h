// The contract between the module and its hosts: one class and one interface.

#ifndef GREETER_H
#define GREETER_H

#include <zr/zr.hpp>

inline constexpr zr::Uuid kGreeterClass("4376CE9C-E46F-4DFD-B7D1-B256919F3592");

struct IGreeter : IZrUnknown {
  static constexpr zr::Uuid kId{"1D1612EA-CB6C-4F42-91CC-E282300461D0"};

  /// Greet gives a greeting, which the caller owns. `*greeting` is overwritten.
  ///
  /// @param name  reads a string.
  /// @return ZR_R_INVALID_ARGUMENTS if `name` is empty or `greeting` is null; ZR_R_NO_MEMORY when out of memory.
  virtual ZRRESULT Greet(ZRSTR name, ZRSTR* greeting) = 0;

 protected:
  ~IGreeter() = default;
};

#endif
