// Performs any sequence of operations on arrays and compares each step with the model.

#include "fuzz/fuzz_support.h"
#include "tests/support/array_sequence.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzRequire(CArraySequence::Run(data, size));
  return 0;
}
