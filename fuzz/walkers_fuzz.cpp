// Runs arbitrary text by the plain walk and from prepared instructions; what they leave behind must be the same.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/walkers/run_compared.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  for (char& c : text) {
    if (c == 0) c = ' ';
  }
  const std::string difference = vl::CompareRuns(text);
  if (difference.empty()) return 0;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}
