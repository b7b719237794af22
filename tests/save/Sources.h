// Pictures to save, and who saves them.
#pragma once

#include <functional>
#include <vx/image.hpp>

#include "../common/Folder.h"

namespace saving {

using Bytes = std::vector<uint8_t>;

/// Loads headerless rows of pseudo-random pixels; at 16 bits `is565` tells the layout. Palettes are the fixed
/// ones.
vx::Bitmap Noise(int width, int height, int bitsPerPixel, int orientation = VX_BOTTOM_UP, bool is565 = false);

struct Pixel {
  uint8_t red, green, blue, alpha;
};
/// A 32-bit picture with an alpha channel.
vx::Bitmap WithAlpha(int width, int height, const std::function<Pixel(int x, int y)>& pixelAt);
/// One whose alpha rises from left to right.
vx::Bitmap Soft(int side);

/// Its pixels as 24-bit ones without transparency, of at most `colors` different colours.
vx::Bitmap Colors24(int width, int height, int colors);

vx::Bitmap LoadFrom(std::span<const uint8_t> file, int page = 1);

/// Runs `act` as a user whom modes stop, who owns the folder: in a process of its own where the tests run as
/// root. What it expects counts here.
void AsOrdinaryUser(const Folder& folder, const std::function<void()>& act);

}  // namespace saving
