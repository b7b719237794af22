// Regions from the kernel's inside. A region is a plane of one bit a pixel, rows in the bitmap's stored
// order, a set bit inside; the bits that pad a row are 0.
#pragma once

#include "base/Contract.h"

namespace vxkrn {

/// Gives `band` the part of `whole`'s region that its rows cover: stored rows from `firstRow` on. A bitmap
/// without a region gives none. @return STATUS_OK or STATUS_NO_MEMORY.
[[nodiscard]] int CopyRegionRows(const _BITMAPHANDLE& whole, int firstRow, _BITMAPHANDLE* band) noexcept;

/// Makes the pixels of half opacity and more the region of a bitmap with an alpha channel, and all others
/// black, which is how icons have them. The channel is then no longer alpha. @return STATUS_OK or
/// STATUS_NO_MEMORY.
[[nodiscard]] int SetRegionFromAlpha(_BITMAPHANDLE* bitmap) noexcept;

/// Whether some pixel is outside the bitmap's region.
[[nodiscard]] bool HasOutside(const _BITMAPHANDLE& bitmap) noexcept;

}  // namespace vxkrn
