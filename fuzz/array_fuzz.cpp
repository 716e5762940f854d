// Any sequence of operations on arrays: the same as on the plain model.

#include "fuzz/fuzz_support.h"
#include "tests/support/array_sequence.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzRequire(CArraySequence::Run(data, size));
  return 0;
}
