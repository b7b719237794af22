// Measures the filter's hot loops against tight loops over the same data. The program plays the kernel, so
// that nothing else is timed.
#include <cstdio>

#include "MemoryKernel.h"
#include "Rows.h"

int main(int argc, char** argv) {
  bench::Options options;
  if (!bench::ReadOptions(argc, argv, options)) return 2;
  void* filter = dlopen(VXBMP_FILTER, RTLD_LAZY);
  if (filter == nullptr) {
    std::fprintf(stderr, "vxbench-filter: cannot use the filter: %s\n", dlerror());
    return 1;
  }
  std::vector<bench::RowMaker> rows;
  bench::AddDecoderRows(filter, rows);
  bench::AddEncoderRows(filter, rows);
  return bench::Run(rows, options) ? 0 : 1;
}
