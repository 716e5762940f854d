// Any sequence of operations on arrays: the same as on the plain model.

#include "fuzz/fuzz_support.h"
#include "tests/support/array_sequence.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string difference = CArraySequence::Run(data, size);
  if (!difference.empty()) std::fprintf(stderr, "differs: %s\n", difference.c_str());
  FUZZ_CLAIM(difference.empty());
  return 0;
}
