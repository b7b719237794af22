// The pixels of a PNG stream compressed in one go, which takes a third of the time and both the filtered rows
// and what becomes of them in memory. Knows nothing of chunks.
#pragma once

#include "png/Png.h"

namespace vxkrn {

/// What the chunks of pixels hold, a zlib stream; none: the picture goes row by row.
struct PngPixels {
  memory::Bytes bytes;
  std::size_t size = 0;
};

/// Compresses what is worth it: pictures that are not tiny and not large, where memory is not short. Throws
/// what the picture's rows throw. Without libdeflate there is nothing that it compresses.
[[nodiscard]] PngPixels CompressWhole(const PngPicture& picture);

}  // namespace vxkrn
