// Pixel data as files hold it: padded rows of indices or colours, run-length codes, AND masks.
#pragma once

#include <string_view>

#include "samples/Bytes.h"
#include "samples/Indexed.h"
#include "samples/Picture.h"

namespace samples {

enum class RowOrder { BottomUp, TopDown };

/// 1, 2, 4 or 8 bits a pixel.
Bytes IndexRows(const Indexed& indexed, int bits, RowOrder order = RowOrder::BottomUp);

/// The place of a channel in a 16-bit pixel.
struct Channel16 {
  int shift;
  int width;
};

/// A layout of 16-bit pixels.
struct Layout16 {
  Channel16 red;
  Channel16 green;
  Channel16 blue;
};

constexpr Layout16 kLayout555{{10, 5}, {5, 5}, {0, 5}};
constexpr Layout16 kLayout565{{11, 5}, {5, 6}, {0, 5}};
constexpr Layout16 kLayout444{{8, 4}, {4, 4}, {0, 4}};

/// @return the bits that hold the channel.
constexpr uint32_t Mask(Channel16 channel) {
  return ((1U << static_cast<unsigned>(channel.width)) - 1) << static_cast<unsigned>(channel.shift);
}

Bytes Rows16(const Picture& picture, const Layout16& layout, RowOrder order = RowOrder::BottomUp);
/// What is left of the picture after Rows16. With `asFilter` 4-bit channels are widened to 5 bits by a zero
/// bit below, as the filter does.
Picture As16(const Picture& picture, const Layout16& layout, bool asFilter = false);

Bytes Rows24(const Picture& picture, RowOrder order = RowOrder::BottomUp);
/// The fourth byte is the pixel's alpha where `withAlpha`, else 0.
Bytes Rows32(const Picture& picture, bool withAlpha, RowOrder order = RowOrder::BottomUp);

/// One bit a pixel, set where the picture is transparent; bottom row first.
Bytes AndMask(const Picture& picture);

enum class Skipping {
  None,     ///< every pixel is coded
  ByDeltas  ///< pixels of index 0 are jumped over where that is possible
};

/// Run-length codes of 8 or 4 bits a pixel, bottom row first, with the end-of-bitmap code.
Bytes RunLength(const Indexed& indexed, int bits, Skipping skipping = Skipping::None);

/// The one-dimensional code of fax machines for two colours, rows of up to 255 pixels, bottom row first.
Bytes HuffmanCodes(const Indexed& indexed, bool lowBitFirst, bool withLineEnds);

}  // namespace samples
