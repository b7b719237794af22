// Follows run-length codes without decoding pixels, to tell how many rows of a file that was cut short are
// there.
#pragma once

#include "files/Source.h"
#include "format/BitmapLayout.h"

namespace vxkrn {

/// Rows, in stored order, that the codes of an RLE8 or RLE4 image reach; all of them where an end-of-bitmap
/// code says that the rest is blank.
[[nodiscard]] int RowsCoded(const vx_source& source, const bmp::BitmapLayout& layout) noexcept;

/// Rows from the first one on in which some code may put a pixel: the others are blank, millions of them
/// where a few bytes say that they are so high. All of them unless the picture is much higher than its data
/// is long.
[[nodiscard]] int RowsTouched(const vx_source& source, const bmp::BitmapLayout& layout) noexcept;

}  // namespace vxkrn
