#include "beyond/FieldRows.h"

#include <algorithm>
#include <bit>

#include "bitmap/RowProvider.h"

namespace vxkrn {

FieldRows::FieldRows(const SavePlan& plan)
    : rows_(plan.shown),
      packer_(plan.masks, plan.outcome.bits_per_pixel),
      pixelBytes_(static_cast<std::size_t>(Stride(plan.shown.Width, plan.outcome.bits_per_pixel))),
      maskBytes_(static_cast<std::size_t>(Stride(plan.shown.Width, 1))),
      row_(std::max(pixelBytes_, maskBytes_)),
      isHidden_(IsAllHidden(plan.masks.alpha)) {}

/// Whether every pixel's alpha is 0 in the bits that the mask has for it.
bool FieldRows::IsAllHidden(uint32_t alphaMask) {
  const unsigned int last = (1U << std::min(std::popcount(alphaMask), 8)) - 1;
  if (last == 0) return false;
  const unsigned int leastSeen = (255 + 2 * last - 1) / (2 * last);  // what rounds to 1 and more
  PrepareForAnotherPass(rows_.Bitmap());
  for (int row = 0; row < Count(); ++row) {
    const std::span<const Rgba> pixels = Read(row);
    const bool isSeen = std::any_of(pixels.begin(), pixels.end(),
                                    [leastSeen](const Rgba& pixel) { return pixel.alpha >= leastSeen; });
    if (isSeen) return false;
  }
  return true;
}

std::span<Rgba> FieldRows::Read(int row) {
  const _BITMAPHANDLE& bitmap = rows_.Bitmap();
  return rows_.Read(bitmap.Orientation == ORIENT_BOTTOM_UP ? row : bitmap.Height - 1 - row);
}

std::span<const uint8_t> FieldRows::Pixels(int row) {
  if (isHidden_) {
    std::fill_n(row_.begin(), pixelBytes_, uint8_t{0});
  } else {
    packer_.Pack(Read(row), row_.data());
  }
  return {row_.data(), pixelBytes_};
}

std::span<const uint8_t> FieldRows::Mask(int row) {
  std::fill_n(row_.begin(), maskBytes_, uint8_t{0});
  const std::span<const Rgba> pixels = Read(row);
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    if (!IsOpaque(pixels[x])) row_[x / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
  }
  return {row_.data(), maskBytes_};
}

}  // namespace vxkrn
