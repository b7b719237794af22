// Measures the filter's hot loops against tight loops over the same data, and prints ratios: below 1 the
// filter is faster. The program plays the kernel, with the data in memory, so nothing else is timed.
#include <cstdlib>

#include "MemoryKernel.h"
#include "RowsBench.h"

int main(int argc, char** argv) {
  if (argc > 1) bench::rounds = static_cast<int>(std::max(std::strtol(argv[1], nullptr, 10), 1L));
  void* filter = dlopen(VXBMP_FILTER, RTLD_LAZY);
  if (filter == nullptr) {
    std::fprintf(stderr, "vxbench: cannot use the filter: %s\n", dlerror());
    return 1;
  }
  std::printf("best of %d rounds\n", bench::rounds);
  const bool decodes = bench::MeasureDecoders(filter);
  const bool encodes = bench::MeasureEncoders(filter);
  return decodes && encodes ? 0 : 1;
}
