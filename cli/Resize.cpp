#include "Resize.h"

#include <stb/stb_image_resize.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

namespace cli {

vx::Bitmap FitInto(const vx::Bitmap& picture, int side) {
  const vx_bitmap_info info = picture.Describe();
  const int longest = std::max(info.width, info.height);
  const auto scaled = [&](int length) {
    const int64_t exact = (int64_t{length} * side + longest / 2) / longest;
    return std::max(static_cast<int>(exact), 1);
  };
  const int width = scaled(info.width);
  const int height = scaled(info.height);
  constexpr int kChannels = 4;
  constexpr int kAlpha = 3;
  const auto rowBytes = static_cast<size_t>(side) * kChannels;
  std::vector<uint8_t> fitted(rowBytes * static_cast<size_t>(side));
  const size_t left = static_cast<size_t>((side - width) / 2) * kChannels;
  const size_t top = static_cast<size_t>((side - height) / 2) * rowBytes;
  const std::vector<uint8_t> pixels = picture.Rgba();
  const int isDone =
      stbir_resize_uint8_srgb(pixels.data(), info.width, info.height, 0, fitted.data() + top + left, width,
                              height, static_cast<int>(rowBytes), kChannels, kAlpha, 0);
  if (isDone == 0) throw std::bad_alloc();
  return vx::Bitmap::FromRgba(side, side, fitted.data());
}

}  // namespace cli
