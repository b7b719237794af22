// Pixels of one row, from one layout to another. The hot loops of taking pictures out live here.
#pragma once

#include <array>
#include <cstring>
#include <span>

#include "bitmap/Bitmap.h"

namespace vxkrn {

struct Rgba {
  uint8_t red, green, blue, alpha;
};
/// The colours of a palette; black beyond its end.
using ColorTable = std::array<Rgba, 256>;
[[nodiscard]] ColorTable ColorsOf(const _BITMAPHANDLE& bitmap) noexcept;

/// Writes a stored row as red, green, blue, alpha: 4 x width bytes. `colors` is the bitmap's; alpha comes
/// from the bitmap's alpha channel, else from its region. Throws what its provider does, if it has one.
void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow, uint8_t* rgba);

/// The same for `count` pixels of the row from pixel `first` on, a multiple of 8.
void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow, int first, int count,
              uint8_t* rgba);

/// 32-bit pixels, all of them or-ed together: the highest byte is that of the fourth bytes.
[[nodiscard]] inline uint32_t PixelBits(const uint8_t* row, std::size_t pixels) noexcept {
  uint32_t bits = 0;
  for (std::size_t i = 0; i < pixels; ++i) {
    uint32_t pixel;
    std::memcpy(&pixel, row + 4 * i, sizeof pixel);
    bits |= pixel;
  }
  return bits;
}
/// Whether some fourth byte of such pixels is not 0.
[[nodiscard]] constexpr bool UseFourthByte(uint32_t pixelBits) noexcept {
  return pixelBits >> 24 != 0;
}

/// Takes the indices of 1, 4 or 8 bits out of a row, one a byte.
void UnpackIndices(const uint8_t* row, int bitsPerPixel, std::span<uint8_t> indices) noexcept;

// Rows from colours or indices, without padding. The bits behind the last index of a byte are 0.
void PackIndices(std::span<const uint8_t> indices, int bitsPerPixel, uint8_t* row) noexcept;
void Pack16(std::span<const Rgba> pixels, bool is565, uint8_t* row) noexcept;
void Pack24(std::span<const Rgba> pixels, uint8_t* row) noexcept;
/// The fourth byte is alpha, or 0.
void Pack32(std::span<const Rgba> pixels, bool hasAlpha, uint8_t* row) noexcept;

/// The pixel of 16 bits that is nearest to a colour, and the colour that a pixel of 16 bits shows.
[[nodiscard]] unsigned int Pixel16(Rgba color, bool is565) noexcept;
[[nodiscard]] Rgba ColorOfPixel16(unsigned int pixel, bool is565) noexcept;

/// Rewrites a row of 16-bit pixels: to 5-6-5 when order is ORDER_565, else from 5-6-5 to 5-5-5.
void ConvertRow16(unsigned char* row, int width, int order) noexcept;

}  // namespace vxkrn
