// The contract as the kernel includes it: whatever it declares and the kernel defines is exported. Adds the
// few spellings of the contract's values that C++ code needs. Knows no service.
#pragma once

#pragma GCC visibility push(default)
#include "vxkrn.h"
#pragma GCC visibility pop

#include <cstdint>

#include "format/Geometry.h"

namespace vxkrn {

/// VX_INVALID_HANDLE, typed. (Not a bit_cast: clang-tidy's analyzer crashes on pointers that come from one.)
inline HANDLE InvalidHandle() noexcept {
  return VX_INVALID_HANDLE;
}

using bmp::IsDepth;
using bmp::kLongestSide;

}  // namespace vxkrn
