// The colours of a picture: its rows as colours. Knows no other depth than its own.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Memory.h"
#include "bitmap/ReadRgba.h"

namespace vxkrn {

/// A colour as 0xRRGGBB.
using Color = uint32_t;

constexpr Color ColorOf(Rgba pixel) noexcept {
  return Color{pixel.red} << 16 | Color{pixel.green} << 8 | pixel.blue;
}
constexpr Color ColorOf(const RGBQUAD& entry) noexcept {
  return Color{entry.Red} << 16 | Color{entry.Green} << 8 | entry.Blue;
}
constexpr RGBQUAD QuadOf(Color color) noexcept {
  return {static_cast<unsigned char>(color), static_cast<unsigned char>(color >> 8),
          static_cast<unsigned char>(color >> 16), 0};
}

/// Whether a pixel shows where pixels can only be there or not.
constexpr bool IsOpaque(Rgba pixel) noexcept {
  return pixel.alpha >= kLeastOpaque;
}

/// Reads a bitmap's stored rows as colours. The bitmap must outlive it. Throws std::bad_alloc.
class ColorRows {
 public:
  explicit ColorRows(const _BITMAPHANDLE& bitmap);

  [[nodiscard]] const _BITMAPHANDLE& Bitmap() const noexcept { return bitmap_; }
  /// @return the row's Width pixels, valid until the next call; they may be changed. Throws what its provider
  /// does, if it has one.
  [[nodiscard]] std::span<Rgba> Read(int storedRow);

 private:
  const _BITMAPHANDLE& bitmap_;
  ColorTable table_;
  memory::Bytes row_;
};

/// Which pixels of a picture count.
enum class Pixels : uint8_t { kAll, kOpaque };

}  // namespace vxkrn
