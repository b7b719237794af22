#include "convert/FieldPacker.h"

#include <algorithm>
#include <bit>

#include "bitmap/RowProvider.h"

namespace vxkrn {
namespace {

constexpr uint32_t kMost = 255;

}  // namespace

FieldPacker::Channel::Channel(uint32_t mask) noexcept {
  const int shift = std::countr_zero(mask);
  const uint32_t most = mask >> shift;
  for (uint32_t level = 0; level <= kMost; ++level) {
    const uint32_t narrow = (level * most + kMost / 2) / kMost;
    stored[level] = narrow << shift;
    isKept[level] = most == 1 || (narrow * kMost + most / 2) / most == level;
  }
}

FieldPacker::FieldPacker(const bmp::FieldMasks& masks, int bitsPerPixel) noexcept
    : red_(masks.color.red),
      green_(masks.color.green),
      blue_(masks.color.blue),
      alpha_(masks.alpha),
      pixelBytes_(static_cast<std::size_t>(bitsPerPixel) / 8) {}

void FieldPacker::Pack(std::span<const Rgba> pixels, uint8_t* row) const noexcept {
  for (const Rgba pixel : pixels) {
    uint32_t packed = red_.stored[pixel.red] | green_.stored[pixel.green] | blue_.stored[pixel.blue] |
                      alpha_.stored[pixel.alpha];
    for (std::size_t i = 0; i < pixelBytes_; ++i, packed >>= 8) *row++ = static_cast<uint8_t>(packed);
  }
}

bool FieldPacker::Keeps(std::span<const Rgba> pixels) const noexcept {
  return std::all_of(pixels.begin(), pixels.end(), [this](Rgba pixel) {
    return red_.isKept[pixel.red] && green_.isKept[pixel.green] && blue_.isKept[pixel.blue] &&
           alpha_.isKept[pixel.alpha];
  });
}

bool KeepsColors(const _BITMAPHANDLE& bitmap, const FieldPacker& packer) {
  PrepareForAnotherPass(bitmap);
  ColorRows rows(bitmap);
  for (int row = 0; row < bitmap.Height; ++row) {
    if (!packer.Keeps(rows.Read(row))) return false;
  }
  return true;
}

}  // namespace vxkrn
