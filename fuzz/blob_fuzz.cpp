// Performs any sequence of operations on blobs that share bytes and compares each step with the model.

#include "fuzz/fuzz_support.h"
#include "tests/support/blob_model.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzRequire(CBlobSequence::Run(data, size));
  return 0;
}
