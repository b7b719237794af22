// The program as the filter's kernel, with one file: an open one of the system's, or bytes in memory.
#pragma once

#include <dlfcn.h>
#include <vxkrn.h>

#include <cstdint>
#include <cstdio>
#include <span>

struct tagHANDLE {
  std::span<uint8_t> data;  ///< the file in memory; empty where it is the system's
  size_t position = 0;
  int descriptor = -1;
};

namespace bench {

/// What VX_RedirectedOpen opens, whatever the name.
inline tagHANDLE theFile;

/// A function of the filter; null, said on standard error, when it has none of that name.
template <class Function>
Function SymbolOf(void* filter, const char* name) {
  void* symbol = dlsym(filter, name);
  if (symbol == nullptr) std::fprintf(stderr, "vxbench-filter: the filter has no %s\n", name);
  return reinterpret_cast<Function>(symbol);
}

}  // namespace bench
