// The resizer counts in int and tabulates whole sides, so it is never given a side as long as files may have.
#include "commands/Resize.h"

#include <stb/stb_image_resize.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace cli {
namespace {

/// The largest page has 256 pixels, so eight pixels, and never fewer than four, make one of it: nobody sees
/// that the picture was made smaller once before.
constexpr int kLongestSide = 2048;

}  // namespace

Resizable::Resizable(const vx::Bitmap& picture)
    : width_(picture.Describe().width),
      height_(picture.Describe().height),
      pixels_(picture.Shrink(kLongestSide)) {}

vx::Bitmap Resizable::FitInto(int side) const {
  const int64_t longest = std::max(width_, height_);
  const auto scaled = [&](int length) {
    return std::max(static_cast<int>((int64_t{length} * side + longest / 2) / longest), 1);
  };
  const int width = scaled(width_);
  const int height = scaled(height_);
  constexpr int kChannels = 4;
  constexpr int kAlpha = 3;
  const auto rowBytes = static_cast<size_t>(side) * kChannels;
  std::vector<uint8_t> fitted(rowBytes * static_cast<size_t>(side));
  const size_t left = static_cast<size_t>((side - width) / 2) * kChannels;
  const size_t top = static_cast<size_t>((side - height) / 2) * rowBytes;
  const vx_bitmap_info info = pixels_.Describe();
  const int isDone =
      stbir_resize_uint8_srgb(pixels_.Row(0).data(), info.width, info.height, 0, fitted.data() + top + left,
                              width, height, static_cast<int>(rowBytes), kChannels, kAlpha, 0);
  if (isDone == 0) throw std::bad_alloc();
  // The resizer treats colours alike, and has them as bitmaps do: blue first.
  for (size_t i = 0; i < fitted.size(); i += kChannels) std::swap(fitted[i], fitted[i + 2]);
  return vx::Bitmap::FromRgba(side, side, fitted.data());
}

}  // namespace cli
