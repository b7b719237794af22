// The headers in front of pixel data: bitmap files and arrays, image headers of every length, palettes.
#pragma once

#include "samples/Bytes.h"
#include "samples/Indexed.h"
#include "samples/Rows.h"

namespace samples {

enum class Compression : uint32_t { None = 0, Rle8 = 1, Rle4 = 2, BitFields = 3, AlphaFields = 6 };

/// Channel masks.
struct Masks {
  uint32_t red = 0;
  uint32_t green = 0;
  uint32_t blue = 0;
  uint32_t alpha = 0;  ///< 0: none
};

constexpr Masks MasksOf(const Layout16& layout) {
  return {Mask(layout.red), Mask(layout.green), Mask(layout.blue), 0};
}
constexpr Masks kMasks888{0x00FF0000, 0x0000FF00, 0x000000FF, 0};

struct ImageHeader {
  uint32_t size = 40;  ///< 12, or 16 and more
  int width = 0;
  int height = 0;  ///< negative: top-down
  int bits = 0;
  Compression compression = Compression::None;
  uint32_t imageSize = 0;
  int dpi = 96;
  uint32_t colorsUsed = 0;
  Masks masks{};  ///< stored at header offset 40, where the header is long enough
};

/// @return the `size` bytes of the header.
Bytes Encode(const ImageHeader& header);
/// @return the masks as they follow a header of 40 bytes: three, or four where there is one for alpha.
Bytes Encode(const Masks& masks);

/// @return `count` entries of `entrySize` (3 or 4) bytes: the palette's colours, then black.
Bytes EncodePalette(const std::vector<Color>& palette, size_t count, size_t entrySize);

/// @return a 'BM' file of the parts, which follow each other without gaps; `shift` is added to its offsets.
Bytes BitmapFile(const Bytes& imageHeader, const Bytes& paletteOrMasks, const Bytes& pixels,
                 uint32_t shift = 0);

}  // namespace samples
