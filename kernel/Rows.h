// Pixels of one row, from one layout to another. The hot loops of taking pictures out live here.
#pragma once

#include "Picture.h"

namespace vxkrn {

/// Writes the row that is `row` from the top as red, green, blue, alpha: 4 x width bytes.
void ReadRgba(const vx_bitmap& bitmap, int row, std::uint8_t* rgba) noexcept;

/// Rewrites a row of 16-bit pixels: to 5-6-5 when order is ORDER_565, else from 5-6-5 to 5-5-5.
void ConvertRow16(unsigned char* row, int width, int order) noexcept;

}  // namespace vxkrn
