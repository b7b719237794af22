// The program as the filter's kernel, with one file in memory, and the clock.
#pragma once

#include <dlfcn.h>
#include <vxkrn.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <span>

struct tagHANDLE {
  std::span<uint8_t> data;
  size_t position = 0;
};

namespace bench {

inline int rounds = 9;
/// What VX_RedirectedOpen opens, whatever the name.
inline tagHANDLE theFile;

/// Seconds of the fastest of `rounds` rounds.
template <class Work>
double BestTime(Work work) {
  double best = 1e9;
  for (int i = 0; i < rounds; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

/// A function of the filter; null, said on standard error, when it has none of that name.
template <class Function>
Function SymbolOf(void* filter, const char* name) {
  void* symbol = dlsym(filter, name);
  if (symbol == nullptr) std::fprintf(stderr, "vxbench: the filter has no %s\n", name);
  return reinterpret_cast<Function>(symbol);
}

}  // namespace bench
