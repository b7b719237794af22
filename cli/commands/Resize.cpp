// The resizer counts in int and tabulates whole sides, so it is never given a side as long as files may have.
#include "commands/Resize.h"

#include <stb/stb_image_resize.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace cli {
namespace {

/// The largest page has 256 pixels, so eight pixels, and never fewer than four, make one of it: nobody sees
/// that the picture was made smaller once before. Of the largest thumbnail, 1024, one or two do.
constexpr int kLongestSide = 2048;
constexpr int kChannels = 4;
constexpr int kAlpha = 3;

}  // namespace

Resizable::Resizable(const vx::Bitmap& picture)
    : width_(picture.Describe().width),
      height_(picture.Describe().height),
      pixels_(picture.Shrink(kLongestSide)) {}

Resizable::Size Resizable::Scaled(int side) const {
  const int64_t longest = std::max(width_, height_);
  const auto scaled = [&](int length) {
    return std::max(static_cast<int>((int64_t{length} * side + longest / 2) / longest), 1);
  };
  return {scaled(width_), scaled(height_)};
}

void Resizable::ScaleInto(uint8_t* rows, const Size& size, int rowBytes) const {
  const vx_bitmap_info info = pixels_.Describe();
  const int isDone = stbir_resize_uint8_srgb(pixels_.Row(0).data(), info.width, info.height, 0, rows,
                                             size.width, size.height, rowBytes, kChannels, kAlpha, 0);
  if (isDone == 0) throw std::bad_alloc();
  // The resizer treats colours alike, and has them as bitmaps do: blue first.
  for (int y = 0; y < size.height; ++y) {
    uint8_t* const row = rows + static_cast<ptrdiff_t>(y) * rowBytes;
    for (int x = 0; x < size.width; ++x) std::swap(row[x * kChannels], row[x * kChannels + 2]);
  }
}

vx::Bitmap Resizable::FitInto(int side) const {
  const Size size = Scaled(side);
  const auto rowBytes = static_cast<size_t>(side) * kChannels;
  std::vector<uint8_t> fitted(rowBytes * static_cast<size_t>(side));
  const size_t left = static_cast<size_t>((side - size.width) / 2) * kChannels;
  const size_t top = static_cast<size_t>((side - size.height) / 2) * rowBytes;
  ScaleInto(fitted.data() + top + left, size, static_cast<int>(rowBytes));
  return vx::Bitmap::FromRgba(side, side, fitted.data());
}

vx::Bitmap Resizable::ScaleTo(int side) const {
  const Size size = Scaled(side);
  const int rowBytes = size.width * kChannels;
  std::vector<uint8_t> scaled(static_cast<size_t>(rowBytes) * static_cast<size_t>(size.height));
  ScaleInto(scaled.data(), size, rowBytes);
  return vx::Bitmap::FromRgba(size.width, size.height, scaled.data());
}

}  // namespace cli
