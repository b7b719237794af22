// The application's bitmap: a bitmap record with what turns its pixels into colours. Rows count from the top
// outside and in stored order inside.
#pragma once

#include <array>

#include "Bitmap.h"
#include "vx/vx.h"

namespace vxkrn {

struct Rgba {
  std::uint8_t red, green, blue, alpha;
};

}  // namespace vxkrn

struct vx_bitmap {
  vxkrn::OwnedBitmap record;
  bool hasAlpha = false;                     ///< the fourth byte of 32-bit pixels is alpha
  std::array<vxkrn::Rgba, 256> colors = {};  ///< of the palette, up to 8 bits; black beyond its end

  /// The stored row that is `row` from the top.
  [[nodiscard]] int Stored(int row) const noexcept {
    return vxkrn::FlipRow(row, record.Height, record.Orientation);
  }
  /// Fills colors from the record's palette.
  void TakeColors() noexcept;
  /// Rewrites 16-bit pixels from the layout they have to `order`; does nothing for other depths.
  void ConvertOrder(int order) noexcept;
};
