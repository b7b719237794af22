// The contract as the kernel includes it: whatever it declares and the kernel defines is exported. Adds the
// few spellings of the contract's values that C++ code needs. Knows no service.
#pragma once

#pragma GCC visibility push(default)
#include "vxkrn.h"
#pragma GCC visibility pop

#include <cstdint>

namespace vxkrn {

/// VX_INVALID_HANDLE, typed. (Not a bit_cast: clang-tidy's analyzer crashes on pointers that come from one.)
inline HANDLE InvalidHandle() noexcept {
  return VX_INVALID_HANDLE;
}

/// Whether bitmaps of this depth exist.
constexpr bool IsDepth(int bitsPerPixel) noexcept {
  switch (bitsPerPixel) {
    case 1:
    case 4:
    case 8:
    case 16:
    case 24:
    case 32: return true;
    default: return false;
  }
}

/// The longest side of a picture. Up to here a row of 32-bit pixels, and that row padded or widened a little,
/// is counted in bytes without leaving an int, on either side of the contract.
constexpr int kMaxSide = (1 << 28) - 1;

}  // namespace vxkrn
