// Pictures with a palette, and the way from true colours to them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "samples/Picture.h"

namespace samples {

struct Indexed {
  int width = 0;
  int height = 0;
  std::vector<Color> palette;
  std::vector<uint8_t> indices;  // top row first

  uint8_t At(int x, int y) const {
    return indices[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
  }
};

/**
 * Reduces a picture to at most `count` colours, chosen by halving boxes of colours; exact when it has no
 * more than that. `dither` is how far, in steps of 255, an ordered pattern may push a colour before the
 * nearest entry is taken. In pictures with transparent pixels entry 0 is black and is theirs; so it is
 * where `blackFirst` asks for it.
 */
Indexed Reduce(const Picture& picture, int count, int dither = 0, bool blackFirst = false);

/// @return the colours of the palette in the places of the indices, opaque.
Picture ToPicture(const Indexed& indexed);

}  // namespace samples
