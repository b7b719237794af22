#include "beyond/FieldRows.h"

#include <algorithm>

namespace vxkrn {

FieldRows::FieldRows(const SavePlan& plan)
    : rows_(plan.shown),
      packer_(plan.masks, plan.outcome.bits_per_pixel),
      pixelBytes_(static_cast<std::size_t>(Stride(plan.shown.Width, plan.outcome.bits_per_pixel))),
      maskBytes_(static_cast<std::size_t>(Stride(plan.shown.Width, 1))),
      row_(std::max(pixelBytes_, maskBytes_)) {}

std::span<Rgba> FieldRows::Read(int row) noexcept {
  const _BITMAPHANDLE& bitmap = rows_.Bitmap();
  return rows_.Read(bitmap.Orientation == ORIENT_BOTTOM_UP ? row : bitmap.Height - 1 - row);
}

std::span<const uint8_t> FieldRows::Pixels(int row) noexcept {
  packer_.Pack(Read(row), row_.data());
  return {row_.data(), pixelBytes_};
}

std::span<const uint8_t> FieldRows::Mask(int row) noexcept {
  std::fill_n(row_.begin(), maskBytes_, uint8_t{0});
  const std::span<const Rgba> pixels = Read(row);
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    if (!IsOpaque(pixels[x])) row_[x / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
  }
  return {row_.data(), maskBytes_};
}

}  // namespace vxkrn
