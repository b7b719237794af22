// The application's bitmap: a bitmap record with what turns its pixels into colours. Rows count from the top
// outside and in stored order inside.
#pragma once

#include <span>

#include "base/Memory.h"
#include "bitmap/Bitmap.h"
#include "bitmap/ColorSpace.h"
#include "bitmap/HotSpot.h"
#include "bitmap/ReadRgba.h"
#include "bitmap/RowProvider.h"
#include "vx/vx.h"

struct vx_bitmap {
  vxkrn::OwnedBitmap record;
  vxkrn::memory::Owned<vxkrn::RowProvider> provider = {};  ///< of rows that are not in memory; null: all are
  vxkrn::ColorTable colors = {};                           ///< of the palette
  vxkrn::HotSpot hotSpot = {};
  int rowsPresent = 0;  ///< rows that the file had; all of them unless something said otherwise
  vxkrn::ColorSpace colorSpace = {};

  /// The stored row that is `row` from the top.
  [[nodiscard]] int Stored(int row) const noexcept {
    return vxkrn::FlipRow(row, record.Height, record.Orientation);
  }
  /// Fills colors from the record's palette.
  void TakeColors() noexcept { colors = vxkrn::ColorsOf(record); }
  /// Rewrites 16-bit pixels from the layout they have to `order`; does nothing for other depths.
  void ConvertOrder(int order) noexcept;
  /// Sets pixels of row `row` from the top, from pixel `first` on, of a picture that MakePicture made.
  void PutColors(int row, int first, std::span<const vxkrn::Rgba> pixels) noexcept;
};

namespace vxkrn {

/// Gives an empty picture pixels, bottom-up. @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int AllocatePixels(int width, int height, int bitsPerPixel, vx_bitmap* picture,
                                 FreshPixels fresh = FreshPixels::kBlank);

/// Makes a picture of 32 bits from the top down, without alpha until a pixel is put that is not opaque.
/// @return STATUS_OK, or STATUS_NO_MEMORY with its detail set
[[nodiscard]] int MakePicture(int width, int height, memory::Owned<vx_bitmap>* picture);

}  // namespace vxkrn
