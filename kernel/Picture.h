// The application's bitmap: a bitmap record with what turns its pixels into colours. Rows count from the top
// outside and in stored order inside.
#pragma once

#include "Bitmap.h"
#include "HotSpot.h"
#include "Rows.h"
#include "vx/vx.h"

struct vx_bitmap {
  vxkrn::OwnedBitmap record;
  vxkrn::ColorTable colors = {};  ///< of the palette
  vxkrn::HotSpot hotSpot = {};

  /// The stored row that is `row` from the top.
  [[nodiscard]] int Stored(int row) const noexcept {
    return vxkrn::FlipRow(row, record.Height, record.Orientation);
  }
  /// Fills colors from the record's palette.
  void TakeColors() noexcept { colors = vxkrn::ColorsOf(record); }
  /// Rewrites 16-bit pixels from the layout they have to `order`; does nothing for other depths.
  void ConvertOrder(int order) noexcept;
};
