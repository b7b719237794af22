// Pixels of one row, from one layout to another. The hot loops of taking pictures out live here.
#pragma once

#include <array>

#include "Bitmap.h"

namespace vxkrn {

struct Rgba {
  std::uint8_t red, green, blue, alpha;
};
/// The colours of a palette; black beyond its end.
using ColorTable = std::array<Rgba, 256>;
[[nodiscard]] ColorTable ColorsOf(const _BITMAPHANDLE& bitmap) noexcept;

/// Writes a stored row as red, green, blue, alpha: 4 x width bytes. `colors` is the bitmap's; alpha comes
/// from the bitmap's alpha channel, else from its region.
void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow,
              std::uint8_t* rgba) noexcept;

/// Rewrites a row of 16-bit pixels: to 5-6-5 when order is ORDER_565, else from 5-6-5 to 5-5-5.
void ConvertRow16(unsigned char* row, int width, int order) noexcept;

}  // namespace vxkrn
