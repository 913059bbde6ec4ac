// Reads arbitrary bytes as FLI and FLC animations; see image_fuzz_support.h.
#include "fuzz/image_fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return vl::fuzz::ReadAs(vl::ImageFilterId("FLI "), data, size);
}
